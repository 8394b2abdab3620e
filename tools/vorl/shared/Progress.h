#ifndef VORL_TOOL_SHARED_PROGRESS_H
#define VORL_TOOL_SHARED_PROGRESS_H

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

namespace vorl::tool {

/// A line on a terminal's standard error that says what is going on and for how long, until the object goes,
/// and the line with it. Where standard error is no terminal, there is nothing to see.
class Progress {
public:
    explicit Progress(std::string what);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

private:
    void show();

    const std::string what_;
    std::mutex mutex_;
    std::condition_variable changed_;
    bool isOver_ = false;
    std::thread shower_;
};

}  // namespace vorl::tool

#endif
