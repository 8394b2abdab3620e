// Sends many messages to a service from several devices at once, and says how long they took.
//
//     load URL CERT.pem MESSAGES CONNECTIONS [PROCESS]
//
// Each receipt is checked; one that is missing or wrong ends it. PROCESS is the service's, whose memory is to
// be looked at too. Each connection is one session: its signers keep 65536 nonces at a time, each for as long
// as all of this may take, so that they refuse what is sent beyond that.

#include "DeviceSession.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <fstream>
#include <future>
#include <initializer_list>
#include <iomanip>
#include <iostream>

namespace example {

namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

const std::size_t MOST_CONNECTIONS = 32;
const std::size_t MOST_MESSAGES_EACH = 65536;
const std::chrono::minutes MOST_TIME(5);
const std::size_t MESSAGE_BYTES = 1024;

std::size_t numberOf(const std::string& text, std::size_t most) {
    std::size_t number = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
    if (read.ec != std::errc() || read.ptr != text.data() + text.size() || number < 1 || number > most) {
        refuse("not a number from 1 to " + std::to_string(most) + ": " + text);
    }
    return number;
}

struct Plan {
    std::size_t messages;
    std::size_t connections;
};

Plan planOf(const std::string& messages, const std::string& connections) {
    const Plan plan = {numberOf(messages, MOST_MESSAGES_EACH * MOST_CONNECTIONS),
                       numberOf(connections, MOST_CONNECTIONS)};
    if (plan.messages > plan.connections * MOST_MESSAGES_EACH) {
        refuse("more than " + std::to_string(MOST_MESSAGES_EACH) +
               " messages on one connection: its session takes no more within five minutes");
    }
    return plan;
}

// What one device does: the time of each of its messages.
std::vector<Milliseconds> sendAll(const std::string& url, const std::string& certificate,
                                  std::size_t messages, Clock::time_point deadline) {
    std::vector<Milliseconds> times;
    times.reserve(messages);
    DeviceSession session(url, certificate);
    session.agree();
    while (times.size() < messages) {
        const vorl::bytes message = vorl::Random::next(MESSAGE_BYTES);
        const auto start = Clock::now();
        session.send(message);
        const auto end = Clock::now();
        if (end > deadline) {
            refuse("it takes too long");
        }
        times.emplace_back(end - start);
    }
    return times;
}

// The line of a process's status that says how much memory it has in use.
std::string memoryOf(const std::string& process) {
    std::ifstream status("/proc/" + process + "/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind("VmRSS:", 0) == 0) {
            const std::string value = line.substr(sizeof "VmRSS:" - 1);
            return value.substr(value.find_first_not_of(" \t"));
        }
    }
    refuse("the memory of process " + process + " is not to be seen");
}

void report(std::vector<Milliseconds> times, std::chrono::duration<double> whole) {
    std::sort(times.begin(), times.end());
    std::cout << std::fixed << std::setprecision(2) << times.size() << " messages of " << MESSAGE_BYTES
              << " bytes in " << whole.count() << " s, each with its receipt\n"
              << static_cast<double>(times.size()) / whole.count() << " requests per second\n";
    for (const std::size_t percent : std::initializer_list<std::size_t>{50, 90, 99, 100}) {
        const std::size_t rank = (times.size() * percent + 99) / 100;
        std::cout << percent << " % within " << times.at(rank - 1).count() << " ms\n";
    }
}

void run(const std::vector<std::string>& arguments, const Plan& plan) {
    startLibrary();
    const bool seesMemory = arguments.size() == 5;
    if (seesMemory) {
        std::cout << "memory of the service before: " << memoryOf(arguments[4]) << std::endl;
    }
    const auto start = Clock::now();
    std::vector<std::future<std::vector<Milliseconds>>> devices;
    for (std::size_t device = 0; device < plan.connections; ++device) {
        const std::size_t share =
            plan.messages / plan.connections + (device < plan.messages % plan.connections ? 1 : 0);
        devices.push_back(
            std::async(std::launch::async, sendAll, arguments[0], arguments[1], share, start + MOST_TIME));
    }
    std::vector<Milliseconds> times;
    for (auto& device : devices) {
        const std::vector<Milliseconds> some = device.get();
        times.insert(times.end(), some.begin(), some.end());
    }
    report(times, Clock::now() - start);
    if (seesMemory) {
        std::cout << "memory of the service after: " << memoryOf(arguments[4]) << std::endl;
    }
}

}  // namespace

}  // namespace example

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.size() != 4 && arguments.size() != 5) {
        std::cerr << "usage: load URL CERT.pem MESSAGES CONNECTIONS [PROCESS]\n";
        return 2;
    }
    int status = 2;
    try {
        const example::Plan plan = example::planOf(arguments[2], arguments[3]);
        status = 1;
        example::run(arguments, plan);
        return 0;
    } catch (const std::exception& fault) {
        std::cerr << "load: " << fault.what() << '\n';
        return status;
    }
}
