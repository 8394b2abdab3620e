#include "http/NonceMemory.h"

#include <algorithm>

namespace tarvik::http {

bool NonceMemory::take(const std::string& nonce, std::int64_t now, std::int64_t until) {
    forget(now);
    // After the clock has gone back, it may be one of those that are forgotten.
    if (until <= forgotten_ || until_.size() >= most_ || !until_.try_emplace(nonce, until).second) {
        return false;
    }
    firstLapse_ = std::min(firstLapse_, until);
    return true;
}

// Goes through all of them once a second at the most, since what is left lapses in a later one.
void NonceMemory::forget(std::int64_t now) {
    if (firstLapse_ >= now) {
        return;
    }
    firstLapse_ = NEVER;
    for (auto entry = until_.begin(); entry != until_.end();) {
        if (entry->second < now) {
            forgotten_ = std::max(forgotten_, entry->second);
            entry = until_.erase(entry);
        } else {
            firstLapse_ = std::min(firstLapse_, entry->second);
            ++entry;
        }
    }
}

}  // namespace tarvik::http
