#include "vorl/PKAlgo.h"

#include <gtest/gtest.h>

#include <memory>
#include <type_traits>

namespace vorl::test {
namespace {

static_assert(!std::is_polymorphic_v<PKAlgo>);

TEST(PKAlgo, RsaIsOneObjectForTheWholeProcess) {
    const std::shared_ptr<const PKAlgo> first = PKAlgo::RSA();

    EXPECT_EQ(first->name, "RSA");
    EXPECT_EQ(PKAlgo::RSA(), first);
}

TEST(PKAlgo, RsaOutlivesItsHolders) {
    const PKAlgo* const address = PKAlgo::RSA().get();

    EXPECT_EQ(PKAlgo::RSA().get(), address);
    EXPECT_GT(PKAlgo::RSA().use_count(), 1) << "only the caller holds it";
}

TEST(PKAlgo, AnotherOfTheSameNameIsAnotherAlgorithm) {
    const auto another = std::make_shared<const PKAlgo>("RSA");

    EXPECT_EQ(another->name, "RSA");
    EXPECT_NE(another, PKAlgo::RSA());
}

}  // namespace
}  // namespace vorl::test
