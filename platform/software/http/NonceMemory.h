#ifndef TARVIK_SOFTWARE_NONCEMEMORY_H
#define TARVIK_SOFTWARE_NONCEMEMORY_H

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <unordered_map>

namespace tarvik::http {

/// The nonces of signatures that were accepted, for as long as such a signature could be accepted again.
class NonceMemory {
public:
    /// `most` nonces at a time. While there are as many, no further one is taken: to forget one early would
    /// let its message pass a second time.
    explicit NonceMemory(std::size_t most) : most_(most) {}

    /// Whether the nonce is new at that time, in seconds. It is then kept until after `until`, when the next
    /// one comes. After the clock has gone back, one that may be among the forgotten is not new.
    bool take(const std::string& nonce, std::int64_t now, std::int64_t until);

private:
    static constexpr std::int64_t NEVER = std::numeric_limits<std::int64_t>::max();

    void forget(std::int64_t now);

    const std::size_t most_;
    std::unordered_map<std::string, std::int64_t> until_;
    // No nonce that is kept lapses before.
    std::int64_t firstLapse_ = NEVER;
    // None that is forgotten lapsed after.
    std::int64_t forgotten_ = std::numeric_limits<std::int64_t>::min();
};

}  // namespace tarvik::http

#endif
