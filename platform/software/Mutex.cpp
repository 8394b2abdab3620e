#include "brisclient/Mutex.h"

#include <mutex>
#include <variant>

namespace Tarvik::BrisClient {

class Mutex::Impl {
public:
    explicit Impl(bool recursive) {
        if (recursive) {
            mutex_.emplace<std::recursive_mutex>();
        }
    }
    void lock() {
        std::visit([](auto& mutex) { mutex.lock(); }, mutex_);
    }
    void unlock() {
        std::visit([](auto& mutex) { mutex.unlock(); }, mutex_);
    }

private:
    std::variant<std::mutex, std::recursive_mutex> mutex_;
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
