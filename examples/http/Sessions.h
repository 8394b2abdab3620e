#ifndef EXAMPLES_HTTP_SESSIONS_H
#define EXAMPLES_HTTP_SESSIONS_H

#include "protocol.h"

#include <tarvik/crypto/HttpRequestSigner.h>

#include <atomic>
#include <chrono>
#include <map>
#include <memory>
#include <mutex>
#include <string>

namespace example {

/// What one device shares with the service. A request holds the mutex while it uses context and signer.
struct Session {
    using Clock = std::chrono::steady_clock;

    Session(const vorl::bytes& key, Clock::time_point now)
        : context(key),
          signer(Secret(tarvik::crypto::HttpRequestSigner::keyOfContext(key)).octets()),
          lastUse(now) {}

    std::mutex mutex;
    vorl::VorlContext context;
    tarvik::crypto::HttpRequestSigner signer;
    std::atomic<Clock::time_point> lastUse;
};

/// The sessions of a service by their names, for all of its threads. Whoever asks says what time it is.
class Sessions {
public:
    static constexpr std::size_t MOST = 64;
    static constexpr std::chrono::minutes MOST_IDLE{10};

    /// Refuses where there are as many as there may be: anybody may agree on keys, and who is at work is not
    /// put out for that.
    void keep(const std::string& name, const std::shared_ptr<Session>& session,
              Session::Clock::time_point now);
    /// Refuses a name that is not known, and one that was not used for too long.
    std::shared_ptr<Session> find(const std::string& name, Session::Clock::time_point now);

private:
    void dropIdle(Session::Clock::time_point now);

    std::mutex mutex_;
    std::map<std::string, std::shared_ptr<Session>> sessions_;
};

}  // namespace example

#endif
