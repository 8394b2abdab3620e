#include "vorl/DigestAlgo.h"

#include "digest_algos.h"

#include <openssl/evp.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>

namespace vorl::test {
namespace {

static_assert(!std::is_polymorphic_v<DigestAlgo>);
static_assert(std::is_same_v<decltype(DigestAlgo::name), const std::string>);
static_assert(std::is_same_v<decltype(DigestAlgo::nid), const int>);
static_assert(std::is_same_v<decltype(DigestAlgo::md), const EVP_MD* const>);
static_assert(std::is_same_v<decltype(DigestAlgo::SHA1()), std::shared_ptr<const DigestAlgo>>);

class DigestAlgoFactory : public ::testing::TestWithParam<DigestAlgoCase> {};

TEST_P(DigestAlgoFactory, GivesNameNumberAndMethod) {
    const std::shared_ptr<const DigestAlgo> algo = GetParam().factory();

    EXPECT_EQ(algo->name, GetParam().name);
    EXPECT_EQ(algo->nid, GetParam().nid);
    EXPECT_EQ(algo->md, GetParam().md());
}

TEST_P(DigestAlgoFactory, NamesTheMethodThatOpenSSLKnowsByThatNumber) {
    const std::shared_ptr<const DigestAlgo> algo = GetParam().factory();

    EXPECT_EQ(EVP_MD_type(algo->md), algo->nid);
    EXPECT_EQ(EVP_MD_size(algo->md), static_cast<int>(GetParam().digestBytes));
}

TEST_P(DigestAlgoFactory, MakesAnObjectOfItsOwnForEachCall) {
    const std::shared_ptr<const DigestAlgo> first = GetParam().factory();
    const std::shared_ptr<const DigestAlgo> second = GetParam().factory();

    EXPECT_NE(first, second);
    EXPECT_EQ(first.use_count(), 1);
    EXPECT_EQ(second.use_count(), 1);
    EXPECT_EQ(first->name, second->name);
    EXPECT_EQ(first->nid, second->nid);
    EXPECT_EQ(first->md, second->md);
}

INSTANTIATE_TEST_SUITE_P(All, DigestAlgoFactory, ::testing::ValuesIn(DIGEST_ALGOS),
                         [](const auto& test) { return test.param.name; });

TEST(DigestAlgo, OfAnApplicationKeepsWhatItIsMadeOf) {
    const DigestAlgo algo("MD5", NID_md5, EVP_md5());
    EXPECT_EQ(algo.name, "MD5");
    EXPECT_EQ(algo.nid, NID_md5);
    EXPECT_EQ(algo.md, EVP_md5());

    const DigestAlgo none("", 0, nullptr);
    EXPECT_EQ(none.name, "");
    EXPECT_EQ(none.nid, 0);
    EXPECT_EQ(none.md, nullptr);
}

}  // namespace
}  // namespace vorl::test
