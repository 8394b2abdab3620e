#include "shared/TemporaryFile.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <string>

#include <sys/resource.h>

namespace {

using vorl::tool::TemporaryFile;

// Whoever runs the tests may have it ignored, and may keep what a process held in memory when it ended.
void raiseAsByDefault(int signal) {
    const rlimit none = {0, 0};
    setrlimit(RLIMIT_CORE, &none);
    std::signal(signal, SIG_DFL);
    raise(signal);
}

// An empty folder, removed with all that is in it.
class TemporaryFileSignals : public testing::TestWithParam<int> {
protected:
    void SetUp() override {
        std::string pattern = testing::TempDir() + "vorl-test-XXXXXX";
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        folder_ = pattern;
    }
    void TearDown() override { std::filesystem::remove_all(folder_); }

    std::string target() const { return folder_ / "out"; }
    std::ptrdiff_t filesThere() const {
        return std::distance(std::filesystem::directory_iterator(folder_),
                             std::filesystem::directory_iterator());
    }

    std::filesystem::path folder_;
};

TEST_P(TemporaryFileSignals, EndTheProcessOnlyWhenNothingIsLeftBehind) {
    EXPECT_EXIT(
        {
            TemporaryFile file(target());
            raiseAsByDefault(GetParam());
        },
        testing::KilledBySignal(GetParam()), "");
    EXPECT_EQ(filesThere(), 0);
}

TEST_P(TemporaryFileSignals, EndTheProcessOnlyWhenTheTargetIsWhole) {
    EXPECT_EXIT(
        {
            TemporaryFile file(target());
            raiseAsByDefault(GetParam());
            file.write(vorl::bytes(3));
            file.replaceTarget();
        },
        testing::KilledBySignal(GetParam()), "");
    EXPECT_EQ(filesThere(), 1);
    EXPECT_EQ(std::filesystem::file_size(target()), 3U);
}

INSTANTIATE_TEST_SUITE_P(Ending, TemporaryFileSignals,
                         testing::Values(SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGALRM, SIGUSR1, SIGUSR2, SIGXCPU,
                                         SIGVTALRM, SIGPROF, SIGIO),
                         [](const auto& test) { return "Signal" + std::to_string(test.param); });

}  // namespace
