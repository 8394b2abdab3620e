#include "Sessions.h"

#include <iterator>

namespace example {

void Sessions::keep(const std::string& name, const std::shared_ptr<Session>& session,
                    Session::Clock::time_point now) {
    const std::lock_guard lock(mutex_);
    dropIdle(now);
    if (sessions_.size() >= MOST) {
        refuse("there are as many sessions as there may be");
    }
    sessions_.emplace(name, session);
}

std::shared_ptr<Session> Sessions::find(const std::string& name, Session::Clock::time_point now) {
    const std::lock_guard lock(mutex_);
    dropIdle(now);
    const auto found = sessions_.find(name);
    if (found == sessions_.end()) {
        refuse("there is no such session");
    }
    return found->second;
}

void Sessions::dropIdle(Session::Clock::time_point now) {
    for (auto at = sessions_.begin(); at != sessions_.end();) {
        at = now - at->second->lastUse.load() > MOST_IDLE ? sessions_.erase(at) : std::next(at);
    }
}

}  // namespace example
