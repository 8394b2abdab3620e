#include "softtoken.h"

#include "platform_under_test.h"

#include <map>
#include <mutex>
#include <typeinfo>

// What libvorl's own tests have to know of this platform, as VORL_PLATFORM_TEST_SOURCE.

namespace vorl::test {

bytes keyFor(const bytes& value) {
    static std::mutex mutex;
    // Never destroyed, and so are the sessions that hold the keys: the module ends with the process.
    static auto& keys = *new std::map<bytes, tarvik::softtoken::Key>();
    const std::lock_guard<std::mutex> lock(mutex);
    auto key = keys.find(value);
    if (key == keys.end()) {
        key = keys.emplace(value, tarvik::softtoken::Key::import(value)).first;
    }
    return key->second.handle();
}

bool isPlatformFault(const std::exception& fault) {
    return typeid(fault) == typeid(tarvik::softtoken::Fault);
}

}  // namespace vorl::test
