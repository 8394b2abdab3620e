#include "shared/TemporaryFile.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
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
class TemporaryFileTest : public testing::Test {
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
    std::string content() const {
        std::ifstream in(target(), std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }

    std::filesystem::path folder_;
};

TEST_F(TemporaryFileTest, TakesBackWhatReplacedAnotherFile) {
    std::ofstream(target()) << "before";
    std::filesystem::permissions(target(), std::filesystem::perms(0640));
    {
        TemporaryFile file(target());
        file.write(vorl::bytes{'n', 'e', 'w'});
        file.replaceTargetForNow();
        EXPECT_EQ(content(), "new");
        file.takeBack();
        EXPECT_EQ(content(), "before");
    }
    EXPECT_EQ(content(), "before");
    EXPECT_EQ(std::filesystem::status(target()).permissions(), std::filesystem::perms(0640));
    EXPECT_EQ(filesThere(), 1);
}

TEST_F(TemporaryFileTest, TakesBackWhatReplacedNothing) {
    {
        TemporaryFile file(target());
        file.write(vorl::bytes{'n', 'e', 'w'});
        file.replaceTargetForNow();
        EXPECT_EQ(content(), "new");
        file.takeBack();
    }
    EXPECT_EQ(filesThere(), 0);
}

TEST_F(TemporaryFileTest, StaysInPlaceUnlessItIsTakenBack) {
    std::ofstream(target()) << "before";
    {
        TemporaryFile file(target());
        file.write(vorl::bytes{'n', 'e', 'w'});
        file.replaceTargetForNow();
        EXPECT_EQ(filesThere(), 2);
    }
    EXPECT_EQ(content(), "new");
    EXPECT_EQ(filesThere(), 1);
}

class TemporaryFileSignals : public TemporaryFileTest, public testing::WithParamInterface<int> {};

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
