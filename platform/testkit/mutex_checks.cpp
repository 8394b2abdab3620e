#include "checks.h"
#include "expectations.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

// What is asked of Mutex. A mutex that is wrong may keep a thread for ever, so the work is done by threads
// that are not waited for beyond the platform's patience, and that share all they touch.

namespace vorl::testkit {

namespace {

const int THREADS = 4;
const int ROUNDS = 50;

struct Crew {
    std::mutex mutex;
    std::condition_variable changed;
    int atWork = 0;
    std::string fault;
};

void work(Crew& crew, const std::string& subject, const std::function<void()>& task) {
    std::string fault;
    try {
        doing(subject, task);
    } catch (const Failure& failure) {
        fault = failure.what();
    }
    const std::lock_guard<std::mutex> lock(crew.mutex);
    --crew.atWork;
    if (crew.fault.empty()) {
        crew.fault = fault;
    }
    crew.changed.notify_all();
}

// Lets a thread do `task`; also one of the crew may.
void start(const std::shared_ptr<Crew>& crew, const std::string& subject, const std::function<void()>& task) {
    {
        const std::lock_guard<std::mutex> lock(crew->mutex);
        ++crew->atWork;
    }
    std::thread([crew, subject, task] { work(*crew, subject, task); }).detach();
}

// Throws Failure for the first that fails, or if not all of them come back.
void await(const Platform& platform, Crew& crew, const std::string& subject) {
    std::unique_lock<std::mutex> lock(crew.mutex);
    const bool isOver = crew.changed.wait_for(lock, platform.patience,
                                              [&] { return crew.atWork == 0 || !crew.fault.empty(); });
    require(crew.fault.empty(), crew.fault);
    require(isOver, subject + " waits for ever");
}

// Lets `threads` threads do `task`.
void inThreads(const Platform& platform, int threads, const std::string& subject,
               const std::function<void()>& task) {
    const auto crew = std::make_shared<Crew>();
    for (int i = 0; i < threads; ++i) {
        start(crew, subject, task);
    }
    await(platform, *crew, subject);
}

Mutex mutexOf(const Platform& platform, bool recursive) {
    const std::string subject = std::string("Making a ") + (recursive ? "recursive" : "plain") + " mutex";
    return doing(subject, [&] { return platform.makeMutex(recursive); });
}

struct Section {
    std::atomic<int> arrived{0};
    std::atomic<bool> isTaken{false};
    std::atomic<bool> isShared{false};
};

// Between the first lock and the last unlock, a thread must be alone, also when it has given back all but one
// of its locks.
void enter(const Mutex& mutex, int locks, Section& section) {
    for (int i = 0; i < locks; ++i) {
        mutex.lock();
    }
    if (section.isTaken.exchange(true)) {
        section.isShared = true;
    }
    for (int i = 1; i < locks; ++i) {
        mutex.unlock();
    }
    std::this_thread::yield();
    section.isTaken = false;
    mutex.unlock();
}

void excludes(const Platform& platform, bool recursive, int locks, const std::string& subject) {
    const Mutex mutex = mutexOf(platform, recursive);
    const auto section = std::make_shared<Section>();
    inThreads(platform, THREADS, subject, [mutex, section, locks] {
        ++section->arrived;
        while (section->arrived < THREADS) {
            std::this_thread::yield();
        }
        for (int round = 0; round < ROUNDS; ++round) {
            enter(mutex, locks, *section);
        }
    });
    require(!section->isShared, subject + " leaves two threads in the section that it guards");
}

void plainMutexExcludes(const Platform& platform) {
    excludes(platform, false, 1, "A plain mutex");
}

void recursiveMutexExcludes(const Platform& platform) {
    excludes(platform, true, 1, "A recursive mutex");
}

void recursiveMutexCountsItsLocks(const Platform& platform) {
    excludes(platform, true, 3, "A recursive mutex that was locked three times and unlocked twice");
}

void recursiveMutexMayBeLockedAgain(const Platform& platform) {
    const Mutex mutex = mutexOf(platform, true);
    inThreads(platform, 1, "Locking a recursive mutex again in the thread that holds it", [mutex] {
        for (int i = 0; i < 3; ++i) {
            mutex.lock();
        }
        for (int i = 0; i < 3; ++i) {
            mutex.unlock();
        }
    });
}

void mutexIsFreeAfterUnlock(const Platform& platform) {
    for (const bool recursive : {false, true}) {
        const Mutex mutex = mutexOf(platform, recursive);
        for (int thread = 0; thread < 2; ++thread) {
            inThreads(platform, 1, "Locking a mutex that is free", [mutex] {
                mutex.lock();
                mutex.unlock();
            });
        }
    }
}

void mutexesAreIndependent(const Platform& platform) {
    for (const bool recursive : {false, true}) {
        const Mutex one = mutexOf(platform, recursive);
        const Mutex other = mutexOf(platform, recursive);
        inThreads(platform, 1, "Locking a mutex while another is held", [one, other] {
            one.lock();
            other.lock();
            one.unlock();
            other.unlock();
        });
    }
}

struct Visit {
    std::atomic<bool> isAsking{false};
    std::atomic<bool> isIn{false};
    std::atomic<bool> isTooEarly{false};
};

// Longer than anybody would hold it, so that one that gives up has time to. One that waits cannot fail here,
// however slow the machine is.
void hold(const Mutex& mutex, Visit& visit, const std::function<void()>& letAnotherAsk) {
    mutex.lock();
    letAnotherAsk();
    while (!visit.isAsking) {
        std::this_thread::yield();
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    visit.isTooEarly = visit.isIn.load();
    mutex.unlock();
}

void lockWaitsUntilTheMutexIsFree(const Platform& platform) {
    const std::string subject = "Waiting for a mutex that is held for long";
    for (const bool recursive : {false, true}) {
        const Mutex mutex = mutexOf(platform, recursive);
        const auto crew = std::make_shared<Crew>();
        const auto visit = std::make_shared<Visit>();
        const auto ask = [mutex, visit] {
            visit->isAsking = true;
            mutex.lock();
            visit->isIn = true;
            mutex.unlock();
        };
        start(crew, subject, [mutex, visit, crew, subject, ask] {
            hold(mutex, *visit, [&] { start(crew, subject, ask); });
        });
        await(platform, *crew, subject);
        require(!visit->isTooEarly, subject + " ends before it is free");
    }
}

}  // namespace

std::vector<Check> mutexChecks() {
    return {
        {"plain-mutex-excludes", "A plain mutex lets one thread in at a time", plainMutexExcludes},
        {"recursive-mutex-excludes", "A recursive mutex lets one thread in at a time",
         recursiveMutexExcludes},
        {"recursive-mutex-may-be-locked-again", "A recursive mutex may be locked again by its holder",
         recursiveMutexMayBeLockedAgain},
        {"recursive-mutex-counts-its-locks", "A recursive mutex is free after as many unlocks as locks",
         recursiveMutexCountsItsLocks},
        {"mutex-is-free-after-unlock", "A mutex that was unlocked can be locked, by any thread",
         mutexIsFreeAfterUnlock},
        {"lock-waits-until-the-mutex-is-free",
         "lock() does not return while another thread holds the mutex, however long",
         lockWaitsUntilTheMutexIsFree},
        {"mutexes-are-independent", "A mutex may be locked while another is held", mutexesAreIndependent},
    };
}

}  // namespace vorl::testkit
