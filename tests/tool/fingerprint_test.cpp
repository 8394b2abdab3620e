#include "shared/fingerprint.h"

#include <gtest/gtest.h>

using vorl::bytes;
using vorl::tool::fingerprint;
using vorl::tool::Secrets;
using vorl::tool::secretText;

// FIPS 180-4 gives the digest of "abc", which begins ba7816bf; that of nothing begins e3b0c442.

TEST(Fingerprint, IsTheBeginningOfTheDigestAndTheSize) {
    EXPECT_EQ(fingerprint(bytes{'a', 'b', 'c'}), "sha256:ba7816bf (3 bytes)");
}

TEST(Fingerprint, ExistsForNoBytesToo) {
    EXPECT_EQ(fingerprint(bytes{}), "sha256:e3b0c442 (0 bytes)");
}

TEST(SecretText, IsTheFingerprintWhereSecretsAreHidden) {
    EXPECT_EQ(secretText(bytes{'a', 'b', 'c'}, Secrets::HIDDEN), "sha256:ba7816bf (3 bytes)");
}

TEST(SecretText, IsTheSecretInHexWhereSecretsAreShown) {
    EXPECT_EQ(secretText(bytes{'a', 'b', 'c'}, Secrets::SHOWN), "616263");
}
