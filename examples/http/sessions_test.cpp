// Whether sessions end when they should: a test, which says what time it is.

#include "Sessions.h"

#include "../checks.h"

namespace example {

namespace {

using Clock = Session::Clock;

const Clock::time_point START = Clock::time_point() + std::chrono::hours(1);
const std::chrono::seconds A_MOMENT(1);

std::shared_ptr<Session> sessionAt(Clock::time_point now) {
    return std::make_shared<Session>(vorl::bytes(16, 0x11), now);
}

void checkIdle() {
    Sessions sessions;
    const auto session = sessionAt(START);
    sessions.keep("used", session, START);
    sessions.keep("unused", sessionAt(START), START);
    const auto last = START + Sessions::MOST_IDLE;
    check(sessions.find("used", last) == session, "it is found for as long as it may be idle");
    session->lastUse = last;
    check(sessions.find("used", last + A_MOMENT) == session, "to be used keeps it");
    check(refusalOf([&] { sessions.find("unused", last + A_MOMENT); }) == "there is no such session",
          "to be asked for does not");
    check(refusalOf([&] { sessions.find("unused", START); }) == "there is no such session",
          "one that was idle for too long is gone");
    check(refusalOf([&] { sessions.find("other", START); }) == "there is no such session",
          "one that was never kept is refused");
}

void checkMost() {
    Sessions sessions;
    for (std::size_t count = 0; count < Sessions::MOST; ++count) {
        sessions.keep(std::to_string(count), sessionAt(START), START);
    }
    const auto last = START + Sessions::MOST_IDLE;
    check(refusalOf([&] { sessions.keep("more", sessionAt(last), last); }) ==
              "there are as many sessions as there may be",
          "there are not more than there may be");
    check(sessions.find("0", last) != nullptr, "a refusal puts none out");
    sessions.keep("more", sessionAt(last), last + A_MOMENT);
    check(sessions.find("more", last + A_MOMENT) != nullptr, "those that are idle make way");
}

}  // namespace

}  // namespace example

int main() {
    return example::statusOf([] {
        example::startLibrary();
        example::checkIdle();
        example::checkMost();
    });
}
