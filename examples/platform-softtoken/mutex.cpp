#include <brisclient/Mutex.h>

#include <pthread.h>

#include <system_error>

namespace Tarvik::BrisClient {

class Mutex::Impl {
public:
    explicit Impl(bool recursive) {
        pthread_mutexattr_t attributes;
        check(pthread_mutexattr_init(&attributes));
        pthread_mutexattr_settype(&attributes, recursive ? PTHREAD_MUTEX_RECURSIVE : PTHREAD_MUTEX_NORMAL);
        const int result = pthread_mutex_init(&mutex_, &attributes);
        pthread_mutexattr_destroy(&attributes);
        check(result);
    }
    ~Impl() { pthread_mutex_destroy(&mutex_); }
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;

    void lock() { check(pthread_mutex_lock(&mutex_)); }
    void unlock() { check(pthread_mutex_unlock(&mutex_)); }

private:
    static void check(int result) {
        if (result != 0) {
            throw std::system_error(result, std::generic_category());
        }
    }

    pthread_mutex_t mutex_;
};

Mutex::Mutex(bool recursive) : impl_(std::make_unique<Impl>(recursive)) {}

Mutex::~Mutex() = default;

void Mutex::lock() {
    impl_->lock();
}

void Mutex::unlock() {
    impl_->unlock();
}

}  // namespace Tarvik::BrisClient
