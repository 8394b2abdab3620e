#include "vorl/PKSignatureAlgo.h"

#include "vorl/DigestAlgo.h"
#include "vorl/PKAlgo.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>

// The name that toString() keeps for the whole process: PKSignatureAlgo_name_test.cpp.

namespace vorl::test {
namespace {

static_assert(!std::is_polymorphic_v<PKSignatureAlgo>);

TEST(PKSignatureAlgo, Sha1WithRsaIsOneObjectForTheWholeProcess) {
    const std::shared_ptr<const PKSignatureAlgo> first = PKSignatureAlgo::SHA1withRSA();

    EXPECT_EQ(PKSignatureAlgo::SHA1withRSA(), first);
    EXPECT_GT(first.use_count(), 1) << "only the caller holds it";
}

TEST(PKSignatureAlgo, Sha1WithRsaIsMadeOfThoseTwo) {
    const std::shared_ptr<const PKSignatureAlgo> algo = PKSignatureAlgo::SHA1withRSA();

    EXPECT_EQ(algo->digestAlgo()->name, "SHA1");
    EXPECT_EQ(algo->digestAlgo()->nid, 64);
    EXPECT_EQ(algo->pkAlgo(), PKAlgo::RSA());
    EXPECT_EQ(algo->initName(), "SHA1withRSA");
}

TEST(PKSignatureAlgo, KeepsWhatItWasMadeOf) {
    const std::shared_ptr<const DigestAlgo> digest = DigestAlgo::SHA256();
    const auto key = std::make_shared<const PKAlgo>("X");
    const PKSignatureAlgo algo(digest, key);

    EXPECT_EQ(algo.digestAlgo(), digest);
    EXPECT_EQ(algo.pkAlgo(), key);
}

TEST(PKSignatureAlgo, InitNameIsEachObjectsOwn) {
    EXPECT_EQ(PKSignatureAlgo(DigestAlgo::SHA512(), std::make_shared<const PKAlgo>("X")).initName(),
              "SHA512withX");
    EXPECT_EQ(PKSignatureAlgo(DigestAlgo::SHA224(), PKAlgo::RSA()).initName(), "SHA224withRSA");
    EXPECT_EQ(PKSignatureAlgo(DigestAlgo::SHA1(), std::make_shared<const PKAlgo>("")).initName(), "SHA1with");
}

}  // namespace
}  // namespace vorl::test
