#include "shared/failures.h"

#include "shared/ToolError.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>

namespace {

using vorl::tool::ExitStatus;
using vorl::tool::tellFailure;
using vorl::tool::ToolError;

const char DOCTOR_HINT[] = "vorl: hint: 'vorl doctor' checks what the tool depends on\n";

// What a failure ends with, and what standard error gets to hear of it.
struct Told {
    ExitStatus status;
    std::string text;
};

template <class Failure>
Told tell(const Failure& failure) {
    testing::internal::CaptureStderr();
    ExitStatus status = ExitStatus::SUCCESS;
    try {
        throw failure;
    } catch (...) {
        status = tellFailure();
    }
    return {status, testing::internal::GetCapturedStderr()};
}

TEST(Failures, AWholeThatTheFormatsCannotHoldIsBadInput) {
    const Told told = tell(std::length_error("envelope"));
    EXPECT_EQ(told.status, ExitStatus::BAD_INPUT);
    EXPECT_EQ(told.text,
              "vorl: error: the input is too large: what becomes of it is more than the formats can hold\n");
}

TEST(Failures, AnInputThatDoesNotFitInMemoryIsBadInput) {
    const Told told = tell(std::bad_alloc());
    EXPECT_EQ(told.status, ExitStatus::BAD_INPUT);
    EXPECT_EQ(told.text, "vorl: error: the input, and what becomes of it, does not fit in memory\n");
}

TEST(Failures, AFailureOfTheToolHasTheStatusAndTheHintThatItCarries) {
    const Told told = tell(ToolError(ExitStatus::USAGE, "what", "how"));
    EXPECT_EQ(told.status, ExitStatus::USAGE);
    EXPECT_EQ(told.text, "vorl: error: what\nvorl: hint: how\n");
}

TEST(Failures, AnythingElseIsAFaultForTheDoctor) {
    const Told told = tell(std::logic_error("what"));
    EXPECT_EQ(told.status, ExitStatus::FAULT);
    EXPECT_EQ(told.text, std::string("vorl: error: what\n") + DOCTOR_HINT);
}

}  // namespace
