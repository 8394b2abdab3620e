#include "vorl/Util.h"

#include "FakeClock.h"
#include "SlowIo.h"
#include "TempFolder.h"
#include "messageOf.h"
#include "octets.h"

#include "vorl/VORLException.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace vorl::test {
namespace {

using ::testing::StartsWith;

namespace fs = std::filesystem;

// Whole files by another way than the library's. A stream reads on to the end whatever size is announced.
bytes contentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return bytes(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

void write(const std::string& path, const bytes& data) {
    std::ofstream(path, std::ios::binary) << toText(data);
    ASSERT_EQ(contentOf(path), data);
}

class UtilFiles : public ::testing::Test {
protected:
    const TempFolder folder_;
    const std::string path_ = folder_ / "file";
};

class Descriptor {
public:
    Descriptor(const std::string& path, int flags) : fd_(::open(path.c_str(), flags)) {}
    ~Descriptor() { ::close(fd_); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int fd() const { return fd_; }

private:
    int fd_;
};

// Loading.

TEST_F(UtilFiles, LoadGivesAllOfAFile) {
    bytes all = octets(70000);
    all[10] = 0x00;
    all[11] = '\r';
    all[12] = '\n';
    all[13] = 0x1a;
    write(path_, all);

    EXPECT_EQ(Util::load(path_), all);
    EXPECT_EQ(contentOf(path_), all) << "loading leaves the file alone";
}

TEST_F(UtilFiles, LoadOfOneByte) {
    write(path_, {0x00});
    EXPECT_EQ(Util::load(path_), bytes{0x00});
}

TEST_F(UtilFiles, LoadOfAnEmptyFileIsEmpty) {
    write(path_, {});
    EXPECT_EQ(Util::load(path_), bytes());
}

TEST_F(UtilFiles, LoadFollowsALink) {
    write(path_, octets(10));
    fs::create_symlink("file", folder_ / "link");
    EXPECT_EQ(Util::load(folder_ / "link"), octets(10));
}

TEST_F(UtilFiles, LoadOfWhatCannotBeOpenedIsEmpty) {
    write(path_, octets(10));
    fs::create_symlink("loop", folder_ / "loop");
    fs::create_symlink("nowhere", folder_ / "dangling");

    EXPECT_EQ(Util::load(folder_ / "missing"), bytes());
    EXPECT_EQ(Util::load(folder_ / "missing/file"), bytes());
    EXPECT_EQ(Util::load(path_ + "/file"), bytes());
    EXPECT_EQ(Util::load(folder_ / "loop"), bytes());
    EXPECT_EQ(Util::load(folder_ / "dangling"), bytes());
    EXPECT_EQ(Util::load(""), bytes());
    EXPECT_FALSE(fs::exists(folder_ / "missing"));
    EXPECT_FALSE(fs::exists(folder_ / "nowhere"));
}

TEST_F(UtilFiles, LoadOfADirectoryIsEmpty) {
    EXPECT_EQ(Util::load(folder_.path()), bytes());
    EXPECT_EQ(Util::load("/"), bytes());
}

TEST_F(UtilFiles, LoadOfWhatHasNoSizeIsEmpty) {
    EXPECT_EQ(Util::load("/dev/null"), bytes());
    EXPECT_EQ(Util::load("/dev/zero"), bytes());
}

TEST_F(UtilFiles, LoadDoesNotWaitForTheWriterOfAPipe) {
    ASSERT_EQ(::mkfifo(path_.c_str(), 0600), 0);
    EXPECT_EQ(Util::load(path_), bytes());
}

TEST_F(UtilFiles, LoadTakesNothingOutOfAPipe) {
    ASSERT_EQ(::mkfifo(path_.c_str(), 0600), 0);
    const Descriptor pipe(path_, O_RDWR);
    ASSERT_EQ(::write(pipe.fd(), "abc", 3), 3);

    EXPECT_EQ(Util::load(path_), bytes());
    char left[4] = {};
    EXPECT_EQ(::read(pipe.fd(), left, 3), 3);
    EXPECT_STREQ(left, "abc");
}

TEST_F(UtilFiles, LoadOfAKernelFileWithoutASizeIsEmpty) {
    // Not /proc/self/cmdline, which an emulator replaces by a file that has a size.
    for (const char* path : {"/proc/version", "/proc/self/status"}) {
        if (!fs::exists(path)) {
            GTEST_SKIP() << "no " << path;
        }
        ASSERT_EQ(fs::file_size(path), 0U);
        ASSERT_NE(contentOf(path), bytes());
        EXPECT_EQ(Util::load(path), bytes());
    }
}

TEST_F(UtilFiles, LoadOfAKernelFileShorterThanAnnouncedIsWhatCanBeRead) {
    const std::string path = "/sys/devices/system/cpu/online";
    if (!fs::exists(path)) {
        GTEST_SKIP() << "no " << path;
    }
    const bytes content = contentOf(path);
    ASSERT_NE(content, bytes());
    ASSERT_LT(content.size(), fs::file_size(path));

    EXPECT_EQ(Util::load(path), content);
}

TEST_F(UtilFiles, LoadAndSaveCloseTheFile) {
    write(path_, octets(10));
    const int before = Descriptor(path_, O_RDONLY).fd();
    Util::load(path_);
    Util::load(folder_.path());
    Util::save(path_, octets(5));
    EXPECT_EQ(Descriptor(path_, O_RDONLY).fd(), before) << "a descriptor stayed open";
}

TEST_F(UtilFiles, LoadGoesOnAfterASignalAndAPartialRead) {
    write(path_, octets(300));
    bytes loaded;
    {
        const SlowIo slow(7);
        loaded = Util::load(path_);
        EXPECT_GT(slow.interruptions(), 40);
    }
    EXPECT_EQ(loaded, octets(300));
}

// Saving.

TEST_F(UtilFiles, SaveCreatesAFile) {
    bytes all = octets(70000);
    all[10] = 0x00;
    all[11] = '\n';
    Util::save(path_, all);

    EXPECT_EQ(contentOf(path_), all);
}

TEST_F(UtilFiles, SaveReplacesWhatAFileHolds) {
    write(path_, octets(100));
    Util::save(path_, bytes{1, 2, 3});
    EXPECT_EQ(contentOf(path_), (bytes{1, 2, 3}));

    Util::save(path_, octets(200));
    EXPECT_EQ(contentOf(path_), octets(200));
}

TEST_F(UtilFiles, SaveOfNothingLeavesAnEmptyFile) {
    Util::save(path_, bytes());
    EXPECT_TRUE(fs::exists(path_));
    EXPECT_EQ(contentOf(path_), bytes());

    write(path_, octets(100));
    Util::save(path_, bytes());
    EXPECT_EQ(contentOf(path_), bytes());
}

TEST_F(UtilFiles, SaveSaysNothingWhereItCannotCreate) {
    EXPECT_NO_THROW(Util::save(folder_ / "missing/file", octets(10)));
    EXPECT_NO_THROW(Util::save(folder_.path(), octets(10)));
    EXPECT_NO_THROW(Util::save("", octets(10)));

    EXPECT_TRUE(fs::is_empty(folder_.path()));
}

TEST_F(UtilFiles, SaveSaysNothingWhereItCannotWrite) {
    if (!fs::exists("/dev/full")) {
        GTEST_SKIP() << "no /dev/full";
    }
    EXPECT_NO_THROW(Util::save("/dev/full", octets(10)));
}

TEST_F(UtilFiles, SaveGoesOnAfterASignalAndAPartialWrite) {
    {
        const SlowIo slow(7);
        Util::save(path_, octets(300));
        EXPECT_GT(slow.interruptions(), 40);
    }
    EXPECT_EQ(contentOf(path_), octets(300));
}

// Removing.

TEST_F(UtilFiles, RemoveFileUnlinksAFile) {
    write(path_, octets(10));
    Util::removeFile(path_);
    EXPECT_FALSE(fs::exists(path_));
}

TEST_F(UtilFiles, RemoveFileUnlinksALinkAndNotItsTarget) {
    write(path_, octets(10));
    fs::create_symlink("file", folder_ / "link");
    Util::removeFile(folder_ / "link");

    EXPECT_FALSE(fs::is_symlink(folder_ / "link"));
    EXPECT_EQ(contentOf(path_), octets(10));
}

TEST_F(UtilFiles, RemoveFileRefusesWhatCannotBeUnlinked) {
    const std::string missing = folder_ / "missing";
    EXPECT_EQ(messageOf<VORLException>([&] { Util::removeFile(missing); }),
              "Unable to unlink file '" + missing + "'");
    EXPECT_EQ(messageOf<VORLException>([] { Util::removeFile(""); }), "Unable to unlink file ''");

    fs::create_directory(path_);
    EXPECT_EQ(messageOf<VORLException>([&] { Util::removeFile(path_); }),
              "Unable to unlink file '" + path_ + "'");
    EXPECT_TRUE(fs::is_directory(path_));
}

// Instrumentation files, which all lie in /tmp.

class InstrumentationFile : public ::testing::Test {
protected:
    void SetUp() override { removeAll(); }
    void TearDown() override {
        ::umask(umask_);
        removeAll();
    }

    // The files under our root, without the folder.
    std::vector<std::string> files() const {
        std::vector<std::string> found;
        for (const auto& entry :
             fs::directory_iterator("/tmp", fs::directory_options::skip_permission_denied)) {
            const std::string name = entry.path().filename().string();
            if (name.compare(0, root_.size() + 1, root_ + ".") == 0) {
                found.push_back(name);
            }
        }
        return found;
    }

    // The name that the file gets for a count in the second of the clock.
    std::string nameOf(int count) const {
        return root_ + "." + std::to_string(clock_.now()) + "." + std::to_string(count);
    }

    const std::string root_ = "vorl_test_" + std::to_string(::getpid());
    const mode_t umask_ = ::umask(022);
    FakeClock clock_;

private:
    void removeAll() const {
        for (const std::string& name : files()) {
            fs::remove("/tmp/" + name);
        }
    }
};

TEST_F(InstrumentationFile, IsNamedAfterItsRootAndTheTime) {
    const std::string path = Util::saveInstrumentationFile(root_, octets(100));
    EXPECT_EQ(path, "/tmp//" + nameOf(0));
    EXPECT_EQ(contentOf(path), octets(100));

    EXPECT_EQ(Util::saveInstrumentationFile(root_, octets(200)), "/tmp//" + nameOf(1));
    clock_.advance(1);
    EXPECT_EQ(Util::saveInstrumentationFile(root_, octets(300)), "/tmp//" + nameOf(0));
    EXPECT_EQ(contentOf("/tmp/" + nameOf(0)), octets(300));
    EXPECT_EQ(contentOf(path), octets(100));
    EXPECT_EQ(files().size(), 3U);
}

TEST_F(InstrumentationFile, IsWrittenWholeInSpiteOfSignals) {
    std::string path;
    {
        const SlowIo slow(7);
        path = Util::saveInstrumentationFile(root_, octets(300));
    }
    EXPECT_EQ(contentOf(path), octets(300));
}

TEST_F(InstrumentationFile, OfNoDataIsEmpty) {
    const std::string path = Util::saveInstrumentationFile(root_, bytes());
    EXPECT_TRUE(fs::is_regular_file(path));
    EXPECT_EQ(contentOf(path), bytes());
}

TEST_F(InstrumentationFile, WithoutARootIsRefusedAndNothingIsWritten) {
    EXPECT_EQ(messageOf<VORLException>([] { Util::saveInstrumentationFile("", octets(10)); }),
              "Cannot save instrumentation file without a filename root");
    EXPECT_FALSE(fs::exists("/tmp/." + std::to_string(clock_.now()) + ".0"));
    EXPECT_EQ(Util::uniqueTime(), std::to_string(clock_.now()) + ".0") << "no name was taken";
}

TEST_F(InstrumentationFile, SaysNothingWhereItCannotBeWritten) {
    const std::string path = Util::saveInstrumentationFile(root_ + "/missing", octets(10));
    EXPECT_EQ(path, "/tmp//" + root_ + "/missing." + std::to_string(clock_.now()) + ".0");
    EXPECT_FALSE(fs::exists(path));
}

struct UmaskCase {
    const char* name;
    mode_t umask;
};

const UmaskCase UMASKS[] = {
    {"Nothing", 0}, {"OthersWrite", 022}, {"Others", 077}, {"Execution", 0111}, {"Everything", 0777},
};

class InstrumentationFileMode : public InstrumentationFile,
                                public ::testing::WithParamInterface<UmaskCase> {};

TEST_P(InstrumentationFileMode, IsForItsOwnerAloneWhateverTheUmask) {
    ::umask(GetParam().umask);
    const std::string path = Util::saveInstrumentationFile(root_, octets(10));

    struct stat status {};
    ASSERT_EQ(::stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, static_cast<mode_t>(0600));
    EXPECT_EQ(contentOf(path), octets(10));
}

INSTANTIATE_TEST_SUITE_P(Umasks, InstrumentationFileMode, ::testing::ValuesIn(UMASKS),
                         [](const auto& test) { return test.param.name; });

TEST_F(InstrumentationFile, TakesTheNextNameWhereAFileIsInTheWay) {
    write("/tmp/" + nameOf(0), octets(50));
    write("/tmp/" + nameOf(1), bytes());
    fs::create_directory("/tmp/" + nameOf(2));

    EXPECT_EQ(Util::saveInstrumentationFile(root_, octets(10)), "/tmp//" + nameOf(3));
    EXPECT_EQ(contentOf("/tmp/" + nameOf(0)), octets(50));
    EXPECT_EQ(contentOf("/tmp/" + nameOf(1)), bytes());
    EXPECT_EQ(contentOf("/tmp/" + nameOf(3)), octets(10));
}

TEST_F(InstrumentationFile, DoesNotFollowALinkThatIsInTheWay) {
    const TempFolder folder;
    write(folder / "victim", octets(50));
    fs::create_symlink(folder / "victim", "/tmp/" + nameOf(0));
    fs::create_symlink(folder / "nowhere", "/tmp/" + nameOf(1));

    EXPECT_EQ(Util::saveInstrumentationFile(root_, octets(10)), "/tmp//" + nameOf(2));
    EXPECT_EQ(contentOf(folder / "victim"), octets(50));
    EXPECT_FALSE(fs::exists(folder / "nowhere"));
    EXPECT_TRUE(fs::is_symlink("/tmp/" + nameOf(0)));
    EXPECT_TRUE(fs::is_symlink("/tmp/" + nameOf(1)));
    EXPECT_TRUE(fs::is_regular_file(fs::symlink_status("/tmp/" + nameOf(2))));
}

TEST_F(InstrumentationFile, IsGivenUpRatherThanWrittenThroughALink) {
    const TempFolder folder;
    write(folder / "victim", octets(50));
    const int links = 100;
    for (int count = 0; count < links; ++count) {
        fs::create_symlink(folder / "victim", "/tmp/" + nameOf(count));
    }

    EXPECT_THAT(Util::saveInstrumentationFile(root_, octets(10)), StartsWith("/tmp//" + root_ + "."));
    EXPECT_EQ(contentOf(folder / "victim"), octets(50));
    EXPECT_EQ(files().size(), static_cast<std::size_t>(links));
}

}  // namespace
}  // namespace vorl::test
