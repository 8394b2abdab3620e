#include "linked_service.h"
#include "platform_under_test.h"

#include "vorl/Random.h"

#include <vorl/testkit/gtest.h>

// The kit, on the platform in the library.

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    vorl::Random::init_ = true;  // a platform that signs may draw nonces
    vorl::testkit::Platform platform = vorl::testkit::linkedPlatform();
    platform.provision = vorl::test::keyFor;
    platform.respond = vorl::testkit::linkedService();
    vorl::testkit::registerTests(platform);
    return RUN_ALL_TESTS();
}
