#include "vorl/Env.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace vorl::test {
namespace {

static_assert(!std::is_polymorphic_v<Env>);
static_assert(!std::is_copy_constructible_v<Env>);
static_assert(!std::is_copy_assignable_v<Env>);

class EnvTest : public ::testing::Test {
protected:
    void TearDown() override { Env::setInstrumentation(DIFFIE_HELLMAN, false); }
};

TEST_F(EnvTest, HasOneInstance) {
    ASSERT_NE(Env::instance(), nullptr);
    EXPECT_EQ(Env::instance(), Env::instance());
}

TEST_F(EnvTest, HasTheFormattingDefaults) {
    const Env& env = *Env::instance();

    EXPECT_EQ(env.fmtSeparator(), ":");
    EXPECT_EQ(env.fmtLevel(), 1U);
    EXPECT_EQ(env.fmtIndentSize(), 4U);
    EXPECT_EQ(env.fmtWidth(), 80U);
}

TEST_F(EnvTest, KeepsTheNumberOfTheComponent) {
    EXPECT_EQ(static_cast<int>(DIFFIE_HELLMAN), 0);
}

TEST_F(EnvTest, HasInstrumentationOffUntilItIsSwitchedOn) {
    EXPECT_FALSE(Env::getInstrumentation(DIFFIE_HELLMAN));
    EXPECT_FALSE(Env::getInstrumentation(DIFFIE_HELLMAN)) << "asking has switched it on";

    Env::setInstrumentation(DIFFIE_HELLMAN, true);
    EXPECT_TRUE(Env::getInstrumentation(DIFFIE_HELLMAN));
    EXPECT_TRUE(Env::getInstrumentation(DIFFIE_HELLMAN)) << "asking has switched it off";
}

TEST_F(EnvTest, SwitchesInstrumentationOffAgain) {
    Env::setInstrumentation(DIFFIE_HELLMAN, true);
    Env::setInstrumentation(DIFFIE_HELLMAN, true);
    Env::setInstrumentation(DIFFIE_HELLMAN, false);
    EXPECT_FALSE(Env::getInstrumentation(DIFFIE_HELLMAN));
}

}  // namespace
}  // namespace vorl::test
