#ifndef VORL_TESTS_LIBRARYSTATE_H
#define VORL_TESTS_LIBRARYSTATE_H

#include "vorl/CipherWrapper.h"
#include "vorl/EncryptionType.h"
#include "vorl/Random.h"
#include "vorl/VORLLib.h"

#include <gtest/gtest.h>

namespace vorl::test {

/// The process-wide state as after a complete start-up for each test, and as before any start-up (but for the
/// policy, which nothing empties) after it.
class StartedLibrary : public ::testing::Test {
protected:
    void SetUp() override {
        Random::init_ = true;
        VORLLib::init();
    }
    void TearDown() override {
        VORLLib::cleanup();
        VORLLib::type_.reset();
        Random::init_ = false;
    }
};

}  // namespace vorl::test

#endif
