#include "vorl/BigNum.h"

#include "messageOf.h"
#include "octets.h"
#include "raw_base64.h"
#include "vorl/OpenSSLException.h"

#include <openssl/bn.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>

namespace vorl::test {
namespace {

static_assert(!std::is_polymorphic_v<BigNum>);
static_assert(std::is_same_v<decltype(std::declval<const BigNum&>().getBIGNUM()), const BIGNUM*>);

struct NumberCase {
    const char* name;
    bytes read;
    unsigned int size;
    bytes written;
    const char* text;
};

const NumberCase NUMBERS[] = {
    {"Zero", {}, 0, {}, "0"},
    {"ZeroOfOneByte", {0x00}, 0, {}, "0"},
    {"ZeroOfManyBytes", bytes(20, 0x00), 0, {}, "0"},
    {"One", {0x01}, 1, {0x01}, "1"},
    // Not "05".
    {"Five", {0x05}, 1, {0x05}, "5"},
    {"OneDigitLargest", {0x0f}, 1, {0x0f}, "F"},
    {"TwoDigitsSmallest", {0x10}, 1, {0x10}, "10"},
    {"OneByteWithTheTopBit", {0x80}, 1, {0x80}, "80"},
    {"OneByteLargest", {0xff}, 1, {0xff}, "FF"},
    {"TwoBytesSmallest", {0x01, 0x00}, 2, {0x01, 0x00}, "100"},
    {"LeadingZeros", {0x00, 0x00, 0x01, 0x00}, 2, {0x01, 0x00}, "100"},
    {"TwoBytesLargest", {0xff, 0xff}, 2, {0xff, 0xff}, "FFFF"},
    {"ThreeBytesSmallest", {0x01, 0x00, 0x00}, 3, {0x01, 0x00, 0x00}, "10000"},
    {"AllDigits",
     {0x01, 0x23, 0x45, 0x67, 0x89, 0xab, 0xcd, 0xef},
     8,
     {0x01, 0x23, 0x45, 0x67, 0x89, 0xab, 0xcd, 0xef},
     "123456789ABCDEF"},
    // More than a machine word, with zero bytes inside.
    {"PastAWord",
     {0x0a, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x0b},
     17,
     {0x0a, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x0b},
     "A0000000000000000000000000000000B"},
};

std::shared_ptr<BIGNUM> rawNumber(const bytes& data) {
    return std::shared_ptr<BIGNUM>(BN_bin2bn(data.data(), static_cast<int>(data.size()), nullptr), BN_free);
}

class BigNumValue : public ::testing::TestWithParam<NumberCase> {
protected:
    static void expectTheNumber(const BigNum& number) {
        EXPECT_EQ(number.size(), GetParam().size);
        EXPECT_EQ(number.encode(), GetParam().written);
        EXPECT_EQ(number.toString(), GetParam().text);
        EXPECT_EQ(number.toBase64(), rawBase64(GetParam().written));
        EXPECT_EQ(BN_cmp(number.getBIGNUM(), rawNumber(GetParam().read).get()), 0);
    }
};

TEST_P(BigNumValue, IsReadFromAPointer) {
    const bytes& data = GetParam().read;
    expectTheNumber(BigNum(data.data(), static_cast<unsigned int>(data.size())));
}

TEST_P(BigNumValue, IsReadFromAVector) {
    expectTheNumber(BigNum(GetParam().read));
}

TEST_P(BigNumValue, IsCopiedFromOpenSSL) {
    expectTheNumber(BigNum(rawNumber(GetParam().read).get()));
}

TEST_P(BigNumValue, IsCopied) {
    const BigNum number(GetParam().read);
    expectTheNumber(BigNum(number));
    expectTheNumber(number);
}

TEST_P(BigNumValue, IsAssigned) {
    const BigNum number(GetParam().read);
    BigNum other(octets(100));
    other = number;
    expectTheNumber(other);
    expectTheNumber(number);
}

TEST_P(BigNumValue, IsReadFromBase64) {
    expectTheNumber(BigNum::fromBase64(rawBase64(GetParam().read)));
    expectTheNumber(BigNum::fromBase64(BigNum(GetParam().read).toBase64()));
}

INSTANTIATE_TEST_SUITE_P(Numbers, BigNumValue, ::testing::ValuesIn(NUMBERS),
                         [](const auto& test) { return test.param.name; });

TEST(BigNum, CountsTheBytesOfALargeNumber) {
    const bytes largest(128, 0xff);
    bytes next(129, 0x00);
    next[0] = 0x01;

    EXPECT_EQ(BigNum(largest).size(), 128U);
    EXPECT_EQ(BigNum(largest).encode(), largest);
    EXPECT_EQ(BigNum(largest).toString(), std::string(256, 'F'));
    EXPECT_EQ(BigNum(next).size(), 129U);
    EXPECT_EQ(BigNum(next).encode(), next);
    EXPECT_EQ(BigNum(next).toString(), "1" + std::string(256, '0'));
}

TEST(BigNum, OfNoBytesIsZeroWhateverThePointer) {
    const unsigned char data[] = {0x42};
    EXPECT_EQ(BigNum(data, 0).toString(), "0");
    EXPECT_EQ(BigNum(nullptr, 0).toString(), "0");
}

TEST(BigNum, OfANullNumberIsZero) {
    const BIGNUM* const none = nullptr;
    const BigNum number(none);
    EXPECT_EQ(number.size(), 0U);
    EXPECT_EQ(number.encode(), bytes());
    EXPECT_EQ(number.toString(), "0");
    EXPECT_TRUE(BN_is_zero(number.getBIGNUM()));
}

// Which no bytes make, only OpenSSL's own numbers.
TEST(BigNum, MayBeNegativeWithTheBytesOfItsMagnitude) {
    const std::shared_ptr<BIGNUM> raw = rawNumber({0x12, 0x34});
    BN_set_negative(raw.get(), 1);
    const BigNum number(raw.get());
    EXPECT_EQ(number.toString(), "-1234");
    EXPECT_EQ(number.size(), 2U);
    EXPECT_EQ(number.encode(), (bytes{0x12, 0x34}));
    EXPECT_FALSE(number == BigNum(bytes{0x12, 0x34}));
}

// OpenSSL counts in ints and would take the number of bytes for a negative one.
TEST(BigNum, OfMoreBytesThanAnIntIsRefusedUnread) {
    const unsigned char data[] = {0x42};
    for (const unsigned int size : {0x80000000U, 0xffffffffU}) {
        EXPECT_EQ(messageOf<OpenSSLException>([&] { BigNum(data, size); }), "BN_bin2bn()") << size;
    }
}

TEST(BigNum, LeavesTheNumberItIsMadeOfToItsOwner) {
    std::shared_ptr<BIGNUM> raw = rawNumber({0x12, 0x34});
    const BigNum number(raw.get());

    EXPECT_NE(number.getBIGNUM(), raw.get());
    ASSERT_EQ(BN_set_word(raw.get(), 7), 1);
    EXPECT_EQ(number.toString(), "1234");
    raw.reset();
    EXPECT_EQ(number.toString(), "1234");
}

TEST(BigNum, IsNeverSharedByItsCopies) {
    BigNum number(bytes{0x12, 0x34});
    const BigNum copy(number);
    BigNum assigned(bytes{0x01});
    assigned = number;

    EXPECT_NE(copy.getBIGNUM(), number.getBIGNUM());
    EXPECT_NE(assigned.getBIGNUM(), number.getBIGNUM());
    number = BigNum(bytes{0x56});
    EXPECT_EQ(number.toString(), "56");
    EXPECT_EQ(copy.toString(), "1234");
    EXPECT_EQ(assigned.toString(), "1234");
}

TEST(BigNum, OutlivesWhatItWasCopiedFrom) {
    auto number = std::make_unique<BigNum>(octets(100));
    const BigNum copy(*number);
    BigNum assigned(bytes{0x01});
    assigned = *number;
    number.reset();
    EXPECT_EQ(copy.encode(), octets(100));
    EXPECT_EQ(assigned.encode(), octets(100));
}

TEST(BigNum, MayBeAssignedToItself) {
    BigNum number(bytes{0x12, 0x34});
    BigNum& same = number;
    EXPECT_EQ(&(number = same), &number);
    EXPECT_EQ(number.toString(), "1234");
}

TEST(BigNum, AssignmentGivesTheAssigned) {
    BigNum first(bytes{0x01});
    BigNum second(bytes{0x02});
    first = second = BigNum(bytes{0x03});
    EXPECT_EQ(first.toString(), "3");
    EXPECT_EQ(second.toString(), "3");
}

TEST(BigNum, IsEqualByItsValue) {
    const auto expectDifferent = [](const bytes& a, const bytes& b) {
        EXPECT_FALSE(BigNum(a) == BigNum(b));
        EXPECT_TRUE(BigNum(a) != BigNum(b));
        EXPECT_FALSE(BigNum(b) == BigNum(a));
        EXPECT_TRUE(BigNum(b) != BigNum(a));
    };
    EXPECT_TRUE(BigNum(octets(100)) == BigNum(octets(100)));
    EXPECT_FALSE(BigNum(octets(100)) != BigNum(octets(100)));
    EXPECT_TRUE(BigNum(bytes{0x00, 0x00, 0x12}) == BigNum(bytes{0x12}));
    EXPECT_TRUE(BigNum(bytes{0x00}) == BigNum(bytes()));
    EXPECT_FALSE(BigNum(bytes{0x00}) != BigNum(bytes()));

    expectDifferent({0x12}, {0x13});
    expectDifferent({0x12}, {});
    expectDifferent({0x12}, {0x12, 0x00});
    expectDifferent(bytes{0x01} + octets(100), bytes{0x02} + octets(100));
    expectDifferent(octets(100) + bytes{0x01}, octets(100) + bytes{0x02});
}

TEST(BigNum, HasItsEncodingAsBase64Text) {
    // Python: base64.b64encode(bytes.fromhex("0100")); the zero bytes in front do not enter it.
    EXPECT_EQ(toText(BigNum(bytes{0x00, 0x00, 0x01, 0x00}).toBase64()), "AQA=");
    EXPECT_EQ(BigNum(bytes{0x00}).toBase64(), bytes());
    EXPECT_TRUE(BigNum::fromBase64(fromText("AAABAA==")) == BigNum(bytes{0x01, 0x00}));
    EXPECT_TRUE(BigNum::fromBase64(BigNum(octets(129)).toBase64()) == BigNum(octets(129)));
}

TEST(BigNum, OfATextThatIsNotBase64IsZero) {
    for (const char* const text : {"", "AQ", "AQA!", "AQ A="}) {
        EXPECT_EQ(BigNum::fromBase64(fromText(text)).toString(), "0") << text;
    }
}

TEST(BigNum, PrintsItsBytesAsABlock) {
    const BigNum number(bytes{0x00, 0x01, 0x02, 0xab});
    EXPECT_EQ(number.toFormatString("p", 80, 1, ":", 4), "    p:  01:02:ab\n");
    EXPECT_EQ(number.toFormatString("p", 80, 3, "", 2), "      p:  0102ab\n");
    EXPECT_EQ(number.toFormatString("p", 10, 1, "-", 2), "  p:\n    01-02\n    ab\n");
    EXPECT_EQ(BigNum(bytes()).toFormatString("p", 80, 2, ":", 4), "        p:  (NULL)");
}

TEST(BigNum, PrintsItsBytesWithTheDefaultsOfTheEnvironment) {
    const BigNum number(bytes{0x01, 0x02, 0xab});
    EXPECT_EQ(number.toFormatString("p"), "    p:  01:02:ab\n");
    EXPECT_EQ(number.toFormatString("p", 80, 2), "        p:  01:02:ab\n");
    EXPECT_EQ(number.toFormatString("p", 14, 1), "    p:\n        01:02\n        ab\n");
    EXPECT_EQ(BigNum(bytes()).toFormatString("p"), "    p:  (NULL)");
}

// The same block from all three forms where it takes more than one line: 24 bytes on a line of 80.
TEST(BigNum, PrintsManyBytesOnSeveralLines) {
    const std::string expected =
        "    p:\n"
        "        11:11:11:11:11:11:11:11:11:11:11:11:11:11:11:11:11:11:11:11:11:11:11:11\n"
        "        11:11:11\n";
    const BigNum number(bytes(27, 0x11));
    EXPECT_EQ(number.toFormatString("p"), expected);
    EXPECT_EQ(number.toFormatString("p", 80, 1), expected);
    EXPECT_EQ(number.toFormatString("p", 80, 1, ":", 4), expected);
}

}  // namespace
}  // namespace vorl::test
