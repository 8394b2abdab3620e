#include "FakeClock.h"
#include "OpenSSLMemory.h"
#include "OperatorNew.h"
#include "TempFolder.h"
#include "block_encoder.h"
#include "error_queue.h"
#include "messageOf.h"
#include "octets.h"

#include "vorl/ASN1Exception.h"
#include "vorl/Buffer.h"
#include "vorl/OctetString.h"
#include "vorl/OpenSSLException.h"
#include "vorl/Util.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <openssl/err.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <new>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

// What is left when there is no memory, and how much is asked for on the word of others.

namespace vorl::test {
namespace {

template <typename Action>
bool runsOutOfMemory(std::size_t refusedFrom, Action&& action) {
    const OperatorNew failing(refusedFrom);
    try {
        action();
    } catch (const std::bad_alloc&) {
        return true;
    }
    return false;
}

TEST(BufferWithoutMemory, KeepsItsContentWhereItCannotGrow) {
    Buffer b(octets(1024));
    b.skip(3);
    const bytes more = octets(5000);
    const OctetString field(more);

    EXPECT_TRUE(runsOutOfMemory(0, [&] { b.put(0x11); }));
    EXPECT_TRUE(runsOutOfMemory(0, [&] { b.put(more); }));
    EXPECT_TRUE(runsOutOfMemory(0, [&] { b.put(more.data(), 10, 20); }));
    EXPECT_TRUE(runsOutOfMemory(0, [&] { b.put(field); }));
    EXPECT_TRUE(runsOutOfMemory(0, [&] { b.resize(1); }));
    EXPECT_EQ(b.toString(), "Buffer[ridx_=3,widx_=1024,midx_=0,len=1024]");
    EXPECT_EQ(b.toByteArray(), octets(1024));

    b.put(0x11);
    EXPECT_EQ(b.toString(), "Buffer[ridx_=3,widx_=1025,midx_=0,len=2048]");
    EXPECT_EQ(b.toByteArray(), octets(1024) + bytes{0x11});
}

// Memory that runs out between the fragments of a block.
TEST(BufferWithoutMemory, TakesNoPartOfABlock) {
    Buffer b(octets(3));
    const OctetString field(octets(40000));

    EXPECT_TRUE(runsOutOfMemory(60000, [&] { b.put(field); }));
    EXPECT_EQ(b.widx(), 3U);
    EXPECT_EQ(b.toByteArray(), octets(3));
    b.put(field);
    EXPECT_TRUE(b.toByteArray() == octets(3) + block(octets(40000)));
}

TEST(UtilWithoutMemory, IndentIsCountedInMoreThan32Bits) {
    bool tooLong = false;
    const bool outOfMemory = runsOutOfMemory(0x10000000, [&] {
        try {
            Util::toFormatString("n", 80, 65536, 65536);
        } catch (const std::length_error&) {
            tooLong = true;  // where memory has 32-bit addresses
        }
    });

    EXPECT_TRUE(tooLong || outOfMemory);
}

// The lock is free again after a failure, so that another thread is not kept waiting for ever.
TEST(UtilWithoutMemory, UniqueTimeGivesItsLockBack) {
    const FakeClock clock;
    for (int i = 0; i < 10000; ++i) {
        Util::uniqueTime();  // until the text no longer fits in a string without memory
    }
    EXPECT_TRUE(runsOutOfMemory(0, [] { Util::uniqueTime(); }));
    std::thread([] { Util::uniqueTime(); }).join();
}

TEST(BufferWithoutMemory, NeedsNoneForWhatFits) {
    Buffer b(16);
    const bytes some = octets(16);

    EXPECT_FALSE(runsOutOfMemory(0, [&] { b.put(some); }));
    EXPECT_EQ(b.toByteArray(), some);
}

TEST(BufferWithoutMemory, KeepsItsContentWhereAStoreWouldBeTooLarge) {
    Buffer b(octets(1024));
    bool tooLong = false;
    const bool outOfMemory = runsOutOfMemory(0x10000000, [&] {
        try {
            b.resize(0xffffffff);
        } catch (const std::length_error&) {
            tooLong = true;  // where memory has 32-bit addresses
        }
    });

    EXPECT_TRUE(tooLong || outOfMemory);
    EXPECT_EQ(b.toString(), "Buffer[ridx_=0,widx_=1024,midx_=0,len=1024]");
    EXPECT_EQ(b.toByteArray(), octets(1024));
}

TEST(BufferWithoutMemory, IsMovedAsItIs) {
    Buffer b(octets(1024));
    bytes moved;

    EXPECT_FALSE(runsOutOfMemory(0, [&] {
        Buffer second(std::move(b));
        Buffer third;
        third = std::move(second);
        moved = std::move(third).toByteArray();
    }));
    EXPECT_EQ(moved, octets(1024));
}

TEST(OctetStringWithoutMemory, KeepsItsOldValue) {
    Buffer b(bytes{0x80, 0xc8} + octets(200));
    OctetString field(octets(3));
    const bytes other = octets(300);

    EXPECT_TRUE(runsOutOfMemory(100, [&] { field.decode(b); }));
    EXPECT_TRUE(runsOutOfMemory(100, [&] { field.setVal(other); }));
    EXPECT_EQ(field.toByteArray(), octets(3));
}

// A sender can announce much for a few bytes; that must not cost memory.
struct AnnouncementCase {
    const char* name;
    bytes input;
};

const AnnouncementCase ANNOUNCEMENTS[] = {
    {"LongestLength", {0xbf, 0xff, 0xaa}},
    {"LongestFragment", {0xc4, 0xaa}},
    {"LongestFragmentWithoutContent", {0xc4}},
};

class Announcement : public ::testing::TestWithParam<AnnouncementCase> {};

TEST_P(Announcement, IsBelievedAsFarAsThereAreBytes) {
    Buffer b(GetParam().input);
    OctetString field;
    std::size_t total = 0;
    bool refused = false;
    {
        const OperatorNew watch;
        try {
            field.decode(b);
        } catch (const ASN1Exception&) {
            refused = true;
        }
        total = watch.total();
    }
    EXPECT_TRUE(refused);
    EXPECT_LT(total, 1024U);
}

INSTANTIATE_TEST_SUITE_P(Lengths, Announcement, ::testing::ValuesIn(ANNOUNCEMENTS),
                         [](const auto& test) { return test.param.name; });

TEST(AnnouncementOfAFurtherFragment, IsBelievedAsFarAsThereAreBytes) {
    Buffer b(bytes{0xc1} + octets(16384) + bytes{0xc4, 0xaa});
    OctetString field;
    std::size_t largest = 0;
    bool refused = false;
    {
        const OperatorNew watch;
        try {
            field.decode(b);
        } catch (const ASN1Exception&) {
            refused = true;
        }
        largest = watch.largest();
    }
    EXPECT_TRUE(refused);
    EXPECT_LE(largest, 2 * b.widx());
}

TEST(OpenSSLExceptionWithoutMemory, IsThrownWithAnEmptyErrorStack) {
    ASSERT_TRUE(openssl_memory::isOurs());
    std::string context = "<no exception>";
    std::string stack = "<no exception>";
    leaveApplicationError();
    {
        const OpenSSLOutOfMemory exhausted;
        try {
            OpenSSLException::throw_message("BN_dup()", "BigNum", 37, "BigNum");
        } catch (const OpenSSLException& e) {
            context = e.what();
            stack = e.errorStack();
        }
    }

    EXPECT_EQ(context, "BN_dup()");
    EXPECT_EQ(stack, "");
    EXPECT_EQ(takeErrorQueue(), ErrorCodes());
}

TEST(OpenSSLException, GivesBackTheMemoryOfItsErrorStack) {
    ASSERT_TRUE(openssl_memory::isOurs());
    const auto raise = [] { OpenSSLException::throw_message("BN_dup()", "BigNum", 37, "BigNum"); };
    EXPECT_EQ(messageOf<OpenSSLException>(raise), "BN_dup()");
    const long before = openssl_memory::liveBlocks();
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(messageOf<OpenSSLException>(raise), "BN_dup()");
    }
    EXPECT_EQ(openssl_memory::liveBlocks(), before);
}

TEST(OpenSSLException, GivesBackTheMemoryOfItsErrorStackWhereItCannotBeShared) {
    ASSERT_TRUE(openssl_memory::isOurs());
    EXPECT_EQ(messageOf<OpenSSLException>(
                  [] { OpenSSLException::throw_message("BN_dup()", "BigNum", 37, "BigNum"); }),
              "BN_dup()");
    const long before = openssl_memory::liveBlocks();

    EXPECT_TRUE(
        runsOutOfMemory(0, [] { OpenSSLException::throw_message("BN_dup()", "BigNum", 37, "BigNum"); }));
    EXPECT_EQ(openssl_memory::liveBlocks(), before);
}

TEST(UtilLoadWithoutMemory, ThrowsAndClosesTheFile) {
    const TempFolder folder;
    const std::string path = folder / "sparse";
    std::ofstream(path).put('x');
    std::filesystem::resize_file(path, 64 << 20);
    const int before = ::open("/dev/null", O_RDONLY);
    ::close(before);

    EXPECT_TRUE(runsOutOfMemory(32 << 20, [&] { Util::load(path); }));
    const int after = ::open("/dev/null", O_RDONLY);
    ::close(after);
    EXPECT_EQ(after, before) << "a descriptor stayed open";
}

}  // namespace
}  // namespace vorl::test
