#include "fetched_md.h"

#include "digest_algos.h"
#include "error_queue.h"
#include "octets.h"
#include "raw_digest.h"

#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/opensslv.h>

#include <gtest/gtest.h>

namespace vorl::test {
namespace {

// What older versions hand out is not fetched.
const bool IS_FETCHED = OPENSSL_VERSION_NUMBER >= 0x30000000L;

class FetchedMd : public ::testing::TestWithParam<DigestAlgoCase> {};

TEST_P(FetchedMd, IsTheSameDigestFetchedOnce) {
    const EVP_MD* const fetched = fetchedMd(GetParam().md());

    EXPECT_EQ(fetched != GetParam().md(), IS_FETCHED);
    EXPECT_EQ(fetchedMd(GetParam().md()), fetched);
    EXPECT_EQ(EVP_MD_type(fetched), GetParam().nid);
    EXPECT_EQ(rawDigest(fetched, octets(100)), rawDigest(GetParam().md(), octets(100)));
}

INSTANTIATE_TEST_SUITE_P(All, FetchedMd, ::testing::ValuesIn(DIGEST_ALGOS),
                         [](const auto& test) { return test.param.name; });

TEST(FetchedMdOfAnApplication, IsWhatItWas) {
    EXPECT_EQ(fetchedMd(EVP_md5()), EVP_md5());
    EXPECT_EQ(fetchedMd(EVP_sha3_256()), EVP_sha3_256());
    EXPECT_EQ(fetchedMd(EVP_sha512_256()), EVP_sha512_256());
    EXPECT_EQ(fetchedMd(nullptr), nullptr);
}

TEST(FetchedMdOfAnApplication, MayBeOneThatWasFetched) {
    const EVP_MD* const fetched = fetchedMd(EVP_sha256());
    EXPECT_EQ(fetchedMd(fetched), fetched);
}

TEST(FetchedMdOfAnApplication, LeavesTheErrorQueueAsItWas) {
    ERR_clear_error();
    const unsigned long left = leaveApplicationError();
    fetchedMd(EVP_sha384());
    fetchedMd(nullptr);
    EXPECT_EQ(takeErrorQueue(), ErrorCodes{left});
}

}  // namespace
}  // namespace vorl::test
