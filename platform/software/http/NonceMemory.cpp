#include "http/NonceMemory.h"

#include <algorithm>
#include <limits>

namespace tarvik::http {

bool NonceMemory::take(const std::string& nonce, std::int64_t now, std::int64_t until) {
    if (until_.size() >= most_) {
        forget(now);
    }
    // After the clock has gone back, it may be one of those that are forgotten.
    if (until < forgotten_) {
        return false;
    }
    if (until_.size() >= most_ && until_.count(nonce) == 0) {
        return false;
    }
    const auto [entry, isNew] = until_.try_emplace(nonce, until);
    if (!isNew && entry->second >= now) {
        return false;
    }
    entry->second = until;
    firstLapse_ = until_.size() == 1 ? until : std::min(firstLapse_, until);
    return true;
}

void NonceMemory::forget(std::int64_t now) {
    if (firstLapse_ >= now) {
        return;
    }
    forgotten_ = now;
    firstLapse_ = std::numeric_limits<std::int64_t>::max();
    for (auto entry = until_.begin(); entry != until_.end();) {
        if (entry->second < now) {
            entry = until_.erase(entry);
        } else {
            firstLapse_ = std::min(firstLapse_, entry->second);
            ++entry;
        }
    }
}

}  // namespace tarvik::http
