#include "SecretWatch.h"
#include "octets.h"
#include "vorl/DigestAlgo.h"
#include "vorl/HMAC.h"

#include <gtest/gtest.h>

// A key is gone from memory when it is given back.

namespace vorl::test {
namespace {

const bytes KEY = octets(20);
const bytes DATA(100, 0x61);

TEST(SecretWatch, SeesASecretThatIsLeftBehind) {
    const SecretWatch watch(KEY);
    { const bytes copy(KEY); }
    { const bytes around = bytes{0x55} + KEY + bytes{0x55}; }
    EXPECT_GE(watch.releasedWithSecret(), 2);
}

TEST(HMACMemory, HoldsNoKeyWhenItIsGivenBack) {
    const SecretWatch watch(KEY);
    {
        HMAC code(KEY);
        code.update(DATA);
        code.final();
        code.hmac(DATA);
        HMAC other(KEY, DigestAlgo::SHA1());
        other.init();
    }
    EXPECT_EQ(watch.releasedWithSecret(), 0);
}

}  // namespace
}  // namespace vorl::test
