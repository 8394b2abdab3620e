#ifndef BRISCLIENT_MUTEX_H
#define BRISCLIENT_MUTEX_H

#include "tarvik/export.h"

#include <memory>

namespace Tarvik::BrisClient {

/// Mutual exclusion between threads; fits std::lock_guard.
class TARVIK_API Mutex {
public:
    /// A recursive mutex may be locked again by the thread that holds it, and is free after as many unlocks.
    explicit Mutex(bool recursive);
    ~Mutex();

    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    void lock();
    /// By the thread that holds it.
    void unlock();

private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace Tarvik::BrisClient

#endif
