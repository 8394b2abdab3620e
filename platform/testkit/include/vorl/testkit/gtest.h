#ifndef VORL_TESTKIT_GTEST_H
#define VORL_TESTKIT_GTEST_H

#include "vorl/testkit/Conformance.h"

#include <gtest/gtest.h>

#include <cctype>
#include <string>
#include <utility>

// The checks as tests of GoogleTest, in a header, so that they are compiled against the GoogleTest at hand.

namespace vorl::testkit {

/// Makes one check of one platform.
class ConformanceTest : public ::testing::Test {
public:
    ConformanceTest(const Check& check, Platform platform) : check_(check), platform_(std::move(platform)) {}

    void TestBody() override {
        const Finding finding = run(check_, platform_);
        if (finding.outcome == Finding::LEFT_OUT) {
            GTEST_SKIP() << finding.sentence << ".";
        }
        EXPECT_EQ(finding.outcome, Finding::HOLDS)
            << finding.sentence << ".\nWhat must hold: " << check_.requirement << ".";
    }

private:
    const Check& check_;
    const Platform platform_;
};

/// "refuses-wrong-padding" as the name of a test: "RefusesWrongPadding".
inline std::string testName(const Check& check) {
    std::string name;
    bool isStart = true;
    for (const char c : std::string(check.name)) {
        if (c == '-') {
            isStart = true;
            continue;
        }
        name += isStart ? static_cast<char>(std::toupper(static_cast<unsigned char>(c))) : c;
        isStart = false;
    }
    return name;
}

/// Registers a test for each check. To be called before RUN_ALL_TESTS(). The platform's name becomes that of
/// the test suite: letters and digits.
inline void registerTests(const Platform& platform) {
    for (const Check& check : checks()) {
        ::testing::RegisterTest(
            platform.name.c_str(), testName(check).c_str(), nullptr, nullptr, __FILE__, __LINE__,
            [&check, platform]() -> ::testing::Test* { return new ConformanceTest(check, platform); });
    }
}

}  // namespace vorl::testkit

#endif
