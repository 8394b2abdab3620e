#include "vorl/Util.h"

#include "octets.h"

#include "vorl/Env.h"

#include <gtest/gtest.h>

#include <bitset>
#include <cstdio>
#include <string>

namespace vorl::test {
namespace {

const bytes ABC{0x01, 0xab, 0xff};

std::string repeated(const std::string& text, unsigned int times) {
    std::string all;
    for (unsigned int i = 0; i < times; ++i) {
        all += text;
    }
    return all;
}

// "11:11:11" for 3 octets 0x11 and ":".
std::string elevens(unsigned int count, const std::string& separator) {
    return "11" + repeated(separator + "11", count - 1);
}

// Hex of bytes and numbers.

TEST(UtilToHexString, OfAByteIsTwoLowerCaseDigits) {
    EXPECT_EQ(Util::toHexString(static_cast<unsigned char>(0x05)), "05");
    EXPECT_EQ(Util::toHexString(static_cast<unsigned char>(0xab)), "ab");
    for (unsigned int v = 0; v <= 0xff; ++v) {
        char expected[3];
        std::snprintf(expected, sizeof(expected), "%02x", v);
        EXPECT_EQ(Util::toHexString(static_cast<unsigned char>(v)), expected);
    }
}

struct NumberCase {
    const char* name;
    unsigned int value;
    const char* hex;
    const char* sixWide;
};

const NumberCase NUMBERS[] = {
    {"Zero", 0, "0", "     0"},
    {"LargestDigit", 0xf, "f", "     f"},
    {"TwoDigits", 0x10, "10", "    10"},
    {"Decimal255", 255, "ff", "    ff"},
    {"FourDigits", 0x1234, "1234", "  1234"},
    {"FiveDigits", 0xabcde, "abcde", " abcde"},
    {"SixDigits", 0xabcdef, "abcdef", "abcdef"},
    {"SevenDigits", 0x1000000, "1000000", "1000000"},
    {"Largest", 0xffffffff, "ffffffff", "ffffffff"},
};

class UtilNumber : public ::testing::TestWithParam<NumberCase> {};

TEST_P(UtilNumber, IsHexWithoutLeadingZeros) {
    EXPECT_EQ(Util::toHexString(GetParam().value), GetParam().hex);
}

TEST_P(UtilNumber, IsFilledUpWithBlanksButNeverCut) {
    EXPECT_EQ(Util::toSpacedHexString(GetParam().value, 6), GetParam().sixWide);
    EXPECT_EQ(Util::toSpacedHexString(GetParam().value, 0), GetParam().hex);
    EXPECT_EQ(Util::toSpacedHexString(GetParam().value, 1), GetParam().hex);
}

INSTANTIATE_TEST_SUITE_P(Values, UtilNumber, ::testing::ValuesIn(NUMBERS),
                         [](const auto& test) { return test.param.name; });

TEST(UtilToHexString, OfBytesJoinsThemWithTheSeparator) {
    EXPECT_EQ(Util::toHexString(ABC.data(), 3, ":"), "01:ab:ff");
    EXPECT_EQ(Util::toHexString(ABC, ":"), "01:ab:ff");
    EXPECT_EQ(Util::toHexString(ABC.data(), 3, ", 0x"), "01, 0xab, 0xff");
    EXPECT_EQ(Util::toHexString(ABC, ", 0x"), "01, 0xab, 0xff");
    EXPECT_EQ(Util::toHexString(ABC.data(), 3, ""), "01abff");
    EXPECT_EQ(Util::toHexString(ABC, ""), "01abff");
    EXPECT_EQ(Util::toHexString(ABC.data(), 1, ":"), "01");
}

TEST(UtilToHexString, OfBytesJoinsThemWithABlankByDefault) {
    EXPECT_EQ(Util::toHexString(ABC.data(), 3), "01 ab ff");
    EXPECT_EQ(Util::toHexString(ABC), "01 ab ff");
}

TEST(UtilToHexString, OfNoBytesIsEmpty) {
    EXPECT_EQ(Util::toHexString(ABC.data(), 0), "");
    EXPECT_EQ(Util::toHexString(nullptr, 0, ":"), "");
    EXPECT_EQ(Util::toHexString(bytes()), "");
    EXPECT_EQ(Util::toHexString(bytes(), ":"), "");
}

// Characters and bits.

TEST(UtilToBinaryString, IsEightBitsTheMostSignificantFirst) {
    EXPECT_EQ(Util::toBinaryString(0x81), "10000001");
    EXPECT_EQ(Util::toBinaryString(0x01), "00000001");
    for (unsigned int v = 0; v <= 0xff; ++v) {
        EXPECT_EQ(Util::toBinaryString(static_cast<unsigned char>(v)), std::bitset<8>(v).to_string());
    }
}

TEST(UtilToAlpha, ShowsPrintableAsciiAndADotForTheRest) {
    EXPECT_EQ(Util::toAlpha(0x1f), ".");
    EXPECT_EQ(Util::toAlpha(0x20), " ");
    EXPECT_EQ(Util::toAlpha(0x7e), "~");
    EXPECT_EQ(Util::toAlpha(0x7f), ".");
    for (unsigned int c = 0; c <= 0xff; ++c) {
        const std::string expected(1, c >= ' ' && c <= '~' ? static_cast<char>(c) : '.');
        EXPECT_EQ(Util::toAlpha(static_cast<unsigned char>(c)), expected);
    }
}

TEST(UtilIsPowerOf2, IsTrueForASingleBitOnly) {
    EXPECT_FALSE(Util::isPowerOf2(0));
    EXPECT_TRUE(Util::isPowerOf2(1));
    EXPECT_FALSE(Util::isPowerOf2(6));
    for (unsigned int v = 0; v <= 4096; ++v) {
        EXPECT_EQ(Util::isPowerOf2(v), std::bitset<32>(v).count() == 1) << v;
    }
    for (unsigned int bit = 2; bit < 32; ++bit) {
        EXPECT_TRUE(Util::isPowerOf2(1U << bit));
        EXPECT_FALSE(Util::isPowerOf2((1U << bit) - 1));
        EXPECT_FALSE(Util::isPowerOf2((1U << bit) + 1));
    }
    EXPECT_FALSE(Util::isPowerOf2(0xffffffff));
}

// Indented blocks.

TEST(UtilToFormatString, IsTheIndentedNameOnALineOfItsOwn) {
    EXPECT_EQ(Util::toFormatString("Keys", 80, 0, 4), "Keys:\n");
    EXPECT_EQ(Util::toFormatString("Keys", 80, 1, 4), "    Keys:\n");
    EXPECT_EQ(Util::toFormatString("Keys", 80, 3, 2), "      Keys:\n");
    EXPECT_EQ(Util::toFormatString("Keys", 80, 3, 0), "Keys:\n");
    EXPECT_EQ(Util::toFormatString("", 80, 1, 1), " :\n");
}

TEST(UtilToFormatString, DoesNotUseTheWidth) {
    EXPECT_EQ(Util::toFormatString("a long name", 0, 1, 4), "    a long name:\n");
    EXPECT_EQ(Util::toFormatString("a long name", 3, 1, 4), "    a long name:\n");
}

TEST(UtilToFormatHexString, IsOneLineBehindTheName) {
    EXPECT_EQ(Util::toFormatHexString({1, 2, 3}, "IV", 80, 1, ":", 4), "    IV:  01:02:03\n");
    EXPECT_EQ(Util::toFormatHexString({1}, "IV", 80, 0, ":", 4), "IV:  01\n");
    EXPECT_EQ(Util::toFormatHexString({1, 2}, "", 80, 2, " : ", 1), "  :  01 : 02\n");
}

TEST(UtilToFormatHexString, OfNoBytesIsNullWithoutANewline) {
    EXPECT_EQ(Util::toFormatHexString(bytes(), "X", 80, 1, ":", 4), "    X:  (NULL)");
    EXPECT_EQ(Util::toFormatHexString(nullptr, 0, "X", 80, 1, ":", 4), "    X:  (NULL)");
    EXPECT_EQ(Util::toFormatHexString(ABC.data(), 0, "X", 0, 3, ":", 2), "      X:  (NULL)");
}

// The indent, the name, three characters and the bytes must stay below the width.
TEST(UtilToFormatHexString, TakesMoreLinesFromTheWidthOn) {
    const std::string name64(64, 'n');
    const std::string name65(65, 'n');
    EXPECT_EQ(Util::toFormatHexString({1, 2, 3}, name64, 80, 1, ":", 4), "    " + name64 + ":  01:02:03\n");
    EXPECT_EQ(Util::toFormatHexString({1, 2, 3}, name65, 80, 1, ":", 4),
              "    " + name65 + ":\n        01:02:03\n");

    EXPECT_EQ(Util::toFormatHexString({1, 2, 3}, "n", 17, 1, ":", 4), "    n:  01:02:03\n");
    EXPECT_EQ(Util::toFormatHexString({1, 2, 3}, "n", 16, 1, ":", 4), "    n:\n        01:02\n        03\n");
}

TEST(UtilToFormatHexString, CountsTheWholeSeparator) {
    EXPECT_EQ(Util::toFormatHexString({1, 2, 3}, "n", 19, 1, ", ", 4), "    n:  01, 02, 03\n");
    EXPECT_EQ(Util::toFormatHexString({1, 2, 3}, "n", 18, 1, ", ", 4),
              "    n:\n        01, 02\n        03\n");
    EXPECT_EQ(Util::toFormatHexString({1, 2, 3}, "n", 15, 1, "", 4), "    n:  010203\n");
    EXPECT_EQ(Util::toFormatHexString({1, 2, 3}, "n", 14, 1, "", 4), "    n:\n        010203\n");
}

struct LinesCase {
    const char* name;
    unsigned int octets;
    unsigned int fullLines;
    unsigned int rest;
};

// (80 - 8) / 3 = 24 bytes fit on a line at the defaults.
const LinesCase LINES[] = {
    {"OneLineAndOne", 25, 1, 1}, {"Example", 40, 1, 16},  {"AlmostTwoLines", 47, 1, 23},
    {"TwoLines", 48, 2, 0},      {"TwoAndOne", 49, 2, 1}, {"Key", 128, 5, 8},
};

class UtilHexLines : public ::testing::TestWithParam<LinesCase> {};

TEST_P(UtilHexLines, AreFilledAndFollowedByTheRest) {
    const LinesCase& c = GetParam();
    std::string expected = "    data:\n" + repeated("        " + elevens(24, ":") + "\n", c.fullLines);
    if (c.rest > 0) {
        expected += "        " + elevens(c.rest, ":") + "\n";
    }

    EXPECT_EQ(Util::toFormatHexString(bytes(c.octets, 0x11), "data"), expected);
}

INSTANTIATE_TEST_SUITE_P(Sizes, UtilHexLines, ::testing::ValuesIn(LINES),
                         [](const auto& test) { return test.param.name; });

TEST(UtilToFormatHexString, KeepsTheOrderOfTheBytesAcrossLines) {
    EXPECT_EQ(Util::toFormatHexString({1, 2, 3, 4, 5, 6, 7}, "n", 12, 1, ":", 2),
              "  n:\n    01:02\n    03:04\n    05:06\n    07\n");
}

struct LevelCase {
    const char* name;
    unsigned int width;
    unsigned int level;
    unsigned int perLine;
};

// The bytes stand one level deeper: 4 * (level + 1) blanks of the width are taken.
const LevelCase LEVELS[] = {
    {"Outermost", 80, 0, 25},          {"Level16", 80, 16, 4},       {"Level17", 80, 17, 2},
    {"LastWithRoom", 80, 18, 1},       {"NoRoomAtAll", 80, 19, 1},   {"BeyondTheWidth", 80, 20, 1},
    {"FarBeyondTheWidth", 80, 500, 1}, {"TwoBytesOfRoom", 14, 1, 2}, {"OneByteOfRoom", 13, 1, 1},
    {"ExactlyOneByte", 11, 1, 1},      {"LessThanAByte", 10, 1, 1},  {"NoWidth", 0, 1, 1},
};

class UtilHexLevel : public ::testing::TestWithParam<LevelCase> {};

TEST_P(UtilHexLevel, GivesALineTheBytesThatFitAndAtLeastOne) {
    const LevelCase& c = GetParam();
    const std::string line = std::string(4 * (c.level + 1), ' ') + elevens(c.perLine, ":") + "\n";
    const std::string rest = std::string(4 * (c.level + 1), ' ') + "11\n";

    EXPECT_EQ(Util::toFormatHexString(bytes(3 * c.perLine + 1, 0x11), "n", c.width, c.level, ":", 4),
              std::string(4 * c.level, ' ') + "n:\n" + repeated(line, 3) + rest);
}

INSTANTIATE_TEST_SUITE_P(Levels, UtilHexLevel, ::testing::ValuesIn(LEVELS),
                         [](const auto& test) { return test.param.name; });

TEST(UtilToFormatHexString, TakesAHugeLevelWithoutAnIndent) {
    EXPECT_EQ(Util::toFormatHexString({1, 2, 3}, "n", 80, 0xffffffff, ":", 0), "n:  01:02:03\n");
    EXPECT_EQ(Util::toFormatHexString({1, 2, 3}, "n", 7, 0xffffffff, ":", 0), "n:\n01:02\n03\n");
}

TEST(UtilToFormatHexString, TakesAHugeIndentOfTheOutermostLevel) {
    EXPECT_EQ(Util::toFormatHexString({1, 2, 3}, "n", 80, 0, ":", 0xffffffff), "n:  01:02:03\n");
}

TEST(UtilToFormatHexString, TakesAHugeWidth) {
    EXPECT_EQ(Util::toFormatHexString(bytes(1000, 0x11), "n", 0xffffffff, 1, ":", 4),
              "    n:  " + elevens(1000, ":") + "\n");
}

TEST(UtilToFormatHexString, TakesWhatIsLeftOutFromTheEnvironment) {
    const Env& env = *Env::instance();
    const bytes data = octets(40);
    const auto n = static_cast<unsigned int>(data.size());

    const std::string all = Util::toFormatHexString(data, "n", env.fmtWidth(), env.fmtLevel(),
                                                    env.fmtSeparator(), env.fmtIndentSize());
    EXPECT_EQ(Util::toFormatHexString(data, "n"), all);
    EXPECT_EQ(Util::toFormatHexString(data.data(), n, "n"), all);

    const std::string nested = Util::toFormatHexString(data, "n", 40, 3, ":", 4);
    EXPECT_EQ(Util::toFormatHexString(data, "n", 40, 3), nested);
    EXPECT_EQ(Util::toFormatHexString(data.data(), n, "n", 40, 3), nested);
    EXPECT_EQ(Util::toFormatHexString(data.data(), n, "n", 40, 3, ":", 4), nested);
    EXPECT_NE(nested, all);
}

// Dumps.

TEST(UtilHexAsciiDump, ShowsOffsetHexAndCharacters) {
    const bytes data{0x41, 0x42, 0x00, 0x43, 0x44};

    EXPECT_EQ(Util::hexAsciiDump(data, 4, " "),
              "     0: 41 42 00 43    AB.C\n"
              "     4: 44             D   \n");
    EXPECT_EQ(Util::hexAsciiDump(data.data(), 5, 4, " "), Util::hexAsciiDump(data, 4, " "));
}

TEST(UtilHexAsciiDump, OfFullLinesHasNoPaddedOne) {
    EXPECT_EQ(Util::hexAsciiDump({0x41, 0x42, 0x43, 0x44}, 4, " "), "     0: 41 42 43 44    ABCD\n");
    EXPECT_EQ(Util::hexAsciiDump({0x41, 0x42, 0x43, 0x44}, 2, " "),
              "     0: 41 42    AB\n"
              "     2: 43 44    CD\n");
    EXPECT_EQ(Util::hexAsciiDump({0x41, 0x42}, 1, " "),
              "     0: 41    A\n"
              "     1: 42    B\n");
}

TEST(UtilHexAsciiDump, OfLessThanALinePadsBothColumns) {
    EXPECT_EQ(Util::hexAsciiDump({0x41, 0x42, 0x43}, 4, " "), "     0: 41 42 43       ABC \n");
    EXPECT_EQ(Util::hexAsciiDump({0x41}, 4, " "), "     0: 41             A   \n");
}

// Three blanks stand for a missing byte whatever the separator, so that the columns align for one character.
TEST(UtilHexAsciiDump, PadsForASeparatorOfOneCharacter) {
    EXPECT_EQ(Util::hexAsciiDump({0x41, 0x42, 0x43}, 2, ""),
              "     0: 4142    AB\n"
              "     2: 43       C \n");
    EXPECT_EQ(Util::hexAsciiDump({0x41, 0x42, 0x43}, 2, " - "),
              "     0: 41 - 42    AB\n"
              "     2: 43       C \n");
}

TEST(UtilHexAsciiDump, WritesOffsetsInHex) {
    std::string expected;
    for (unsigned int offset = 0; offset < 0x1010; offset += 16) {
        char line[16];
        std::snprintf(line, sizeof(line), "%6x: ", offset);
        expected += line + elevens(16, " ") + "    " + std::string(16, '.') + "\n";
    }

    EXPECT_EQ(Util::hexAsciiDump(bytes(0x1010, 0x11), 16, " "), expected);
}

TEST(UtilHexAsciiDump, OfNoBytesIsEmpty) {
    EXPECT_EQ(Util::hexAsciiDump(bytes(), 16), "");
    EXPECT_EQ(Util::hexAsciiDump(bytes(), 16, " "), "");
    EXPECT_EQ(Util::hexAsciiDump(nullptr, 0, 16), "");
    EXPECT_EQ(Util::hexAsciiDump(nullptr, 0, 0, " "), "");
}

TEST(UtilHexAsciiDump, OfAPointerSeparatesWithABlankByDefault) {
    const bytes data{0x41, 0x42, 0x43};

    EXPECT_EQ(Util::hexAsciiDump(data.data(), 3, 3), "     0: 41 42 43    ABC\n");
}

TEST(UtilHexAsciiDump, OfAVectorSeparatesAsTheEnvironmentSaysByDefault) {
    EXPECT_EQ(Util::hexAsciiDump(bytes{0x41, 0x42, 0x43}, 3), "     0: 41:42:43    ABC\n");
}

TEST(UtilHexAsciiDump, TakesNoBytesALineForOne) {
    const bytes data{0x41, 0x42};
    const std::string oneALine =
        "     0: 41    A\n"
        "     1: 42    B\n";

    EXPECT_EQ(Util::hexAsciiDump(data, 0), oneALine);
    EXPECT_EQ(Util::hexAsciiDump(data, 0, " "), oneALine);
    EXPECT_EQ(Util::hexAsciiDump(data.data(), 2, 0), oneALine);
    EXPECT_EQ(Util::hexAsciiDump(data.data(), 2, 0, " "), oneALine);
}

// 65536 separators of 65534 characters do not fit in 32 bits, and so not on a line.
TEST(UtilToFormatHexString, LengthOfALineIsCountedInMoreThan32Bits) {
    const std::string separator(65534, '-');
    const std::string block = Util::toFormatHexString(bytes(65537, 0x11), "n", 80, 1, separator, 4);
    EXPECT_EQ(block.substr(0, 7), "    n:\n");
    EXPECT_EQ(block.size(), 7 + 65537 * (8 + 2 + 1U));
}

}  // namespace
}  // namespace vorl::test
