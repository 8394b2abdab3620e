#include "SecretWatch.h"
#include "octets.h"
#include "raw_base64.h"
#include "raw_digest.h"
#include "vorl/BigNum.h"
#include "vorl/ClientKeys.h"

#include <openssl/evp.h>

#include <gtest/gtest.h>

#include <string>

// Secrets are gone from memory when it is given back.

namespace vorl::test {
namespace {

const bytes SECRET = octets(128);
const bytes DIGEST = rawDigest(EVP_sha384(), SECRET);
const bytes KEYS[] = {slice(DIGEST, 0, 16), slice(DIGEST, 16, 32)};

TEST(ClientKeysMemory, HoldsNoKeyWhenItIsGivenBack) {
    const std::string id = toText(SECRET);
    for (const bytes& key : KEYS) {
        const SecretWatch watch(key);
        {
            ClientKeys keys(SECRET);
            const ClientKeys copy(keys);
            const ClientKeys ofId(id);
            const ClientKeys ofPointer(SECRET.data(), 128);
            keys.derive(SECRET);
            keys.derive(bytes(3, 0x61));
            keys = copy;
        }
        EXPECT_EQ(watch.releasedWithSecret(), 0);
    }
}

TEST(ClientKeysMemory, HoldsNoMaterialWhenItIsGivenBack) {
    const std::string id = toText(SECRET);
    const SecretWatch watch(SECRET);
    {
        const ClientKeys ofSecret(SECRET);
        const ClientKeys ofId(id);
        const ClientKeys ofPointer(SECRET.data(), 128);
    }
    EXPECT_EQ(watch.releasedWithSecret(), 0);
}

TEST(BigNumMemory, HoldsNoNumberWhenItIsGivenBack) {
    const bytes text = rawBase64(SECRET);
    const SecretWatch watch(SECRET);
    {
        const BigNum number(SECRET);
        BigNum copy(number);
        copy = BigNum::fromBase64(text);
        EXPECT_EQ(copy.toBase64(), text);
        copy.toFormatString("x");
        copy.toFormatString("x", 80, 1);
        copy.toFormatString("x", 80, 1, ":", 4);
    }
    EXPECT_EQ(watch.releasedWithSecret(), 0);
}

}  // namespace
}  // namespace vorl::test
