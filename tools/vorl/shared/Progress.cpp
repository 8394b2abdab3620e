#include "shared/Progress.h"

#include "shared/Descriptor.h"
#include "shared/terminal.h"

#include <chrono>
#include <system_error>
#include <utility>

#include <unistd.h>

namespace vorl::tool {

namespace {

const std::chrono::milliseconds STEP(200);

void writeLine(const std::string& text) {
    writeAll(STDERR_FILENO, text.data(), text.size());
}

}  // namespace

Progress::Progress(std::string what) : what_(std::move(what)) {
    if (!isTerminal(STDERR_FILENO)) {
        return;
    }
    try {
        shower_ = std::thread([this] { show(); });
    } catch (const std::system_error&) {
        // What is going on goes on unseen.
        return;
    }
}

Progress::~Progress() {
    if (shower_.joinable()) {
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            isOver_ = true;
        }
        changed_.notify_one();
        shower_.join();
    }
}

void Progress::show() {
    using Clock = std::chrono::steady_clock;
    const Clock::time_point begin = Clock::now();
    std::string line;
    std::unique_lock<std::mutex> lock(mutex_);
    do {
        const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(Clock::now() - begin).count();
        line = what_ + " ... " + std::to_string(seconds) + " s";
        writeLine("\r" + line);
    } while (!changed_.wait_for(lock, STEP, [this] { return isOver_; }));
    // Not every terminal has a sequence that clears the line.
    writeLine("\r" + std::string(line.size(), ' ') + "\r");
}

}  // namespace vorl::tool
