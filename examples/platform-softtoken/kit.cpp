#include "softtoken.h"

#include <vorl/testkit/gtest.h>

#include <map>
#include <vector>

// The kit on this platform: ten lines, and where keys of known value come from.

namespace {

std::vector<unsigned char> provision(const std::vector<unsigned char>& value) {
    // Never destroyed, and so are the sessions that hold the keys: the module ends with the process.
    static auto& keys = *new std::map<std::vector<unsigned char>, tarvik::softtoken::Key>();
    auto key = keys.find(value);
    if (key == keys.end()) {
        key = keys.emplace(value, tarvik::softtoken::Key::import(value)).first;
    }
    return key->second.handle();
}

}  // namespace

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    vorl::testkit::Platform platform = vorl::testkit::linkedPlatform();
    platform.name = "SoftToken";
    platform.provision = provision;
    platform.signs = false;
    vorl::testkit::registerTests(platform);
    return RUN_ALL_TESTS();
}
