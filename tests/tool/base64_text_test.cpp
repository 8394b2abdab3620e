#include "inspect/base64_text.h"

#include "octets.h"

#include <gtest/gtest.h>

namespace {

using vorl::bytes;
using vorl::test::fromText;
using vorl::test::operator+;
using vorl::tool::decodeBase64Text;
using vorl::tool::DecodedText;
using vorl::tool::isNearlyBase64;
using vorl::tool::resemblesBase64;
using vorl::tool::sizeWithoutNewline;

TEST(SizeWithoutNewline, LeavesOutOneLineEndAtMost) {
    EXPECT_EQ(sizeWithoutNewline(fromText("")), 0U);
    EXPECT_EQ(sizeWithoutNewline(fromText("ab")), 2U);
    EXPECT_EQ(sizeWithoutNewline(fromText("ab\n")), 2U);
    EXPECT_EQ(sizeWithoutNewline(fromText("ab\r\n")), 2U);
    EXPECT_EQ(sizeWithoutNewline(fromText("ab\n\n")), 3U);
    EXPECT_EQ(sizeWithoutNewline(fromText("ab\r")), 3U);
    EXPECT_EQ(sizeWithoutNewline(fromText("\n")), 0U);
    EXPECT_EQ(sizeWithoutNewline(fromText("\r\n")), 0U);
}

TEST(DecodeBase64Text, ReadsTheVectorsOfRfc4648) {
    for (const auto& [encoded, data] : {std::pair("Zg==", "f"), std::pair("Zm8=\n", "fo"),
                                        std::pair("Zm9v\r\n", "foo"), std::pair("Zm9vYmFy", "foobar")}) {
        const DecodedText decoded = decodeBase64Text(fromText(encoded));
        EXPECT_EQ(decoded.data, fromText(data)) << encoded;
        EXPECT_FALSE(decoded.problem) << encoded;
    }
}

struct BadText {
    const char* name;
    const char* characters;
    std::uint64_t offset;
    const char* problem;
};

void PrintTo(const BadText& text, std::ostream* out) {
    *out << text.name;
}

const BadText BAD_TEXTS[] = {
    {"Empty", "", 0, "the input is empty"},
    {"OnlyANewline", "\n", 0, "the input is empty"},
    {"TooShort", "Zm9vY", 5, "the text has 5 characters, which is no multiple of 4: something is missing"},
    {"MissingPadding", "Zg=", 3,
     "the text has 3 characters, which is no multiple of 4: something is missing"},
    {"ForeignCharacter", "Zm-v", 2, "a character that Base64 does not have: 0x2d"},
    {"HighCharacter", "Zm9\xff", 3, "a character that Base64 does not have: 0xff"},
    {"Blank", "Zm9 v", 3, "white space or a line break within the text"},
    {"SecondNewline", "Zm9v\n\n", 4, "white space or a line break within the text"},
    {"PaddingFirst", "=m9v", 0, "a '=' that is not at the end of the text"},
    {"PaddingWithin", "Zg==Zm9v", 2, "a '=' that is not at the end of the text"},
    {"PaddingBeforeTheLast", "Zm=v", 2, "a '=' that is not at the end of the text"},
    {"ThreePaddings", "Z===", 1, "a '=' that is not at the end of the text"},
    {"BitsUnderOnePadding", "Zm9=", 2, "the last character has bits that belong to no byte"},
    {"BitsUnderTwoPaddings", "Zh==", 1, "the last character has bits that belong to no byte"},
};

class DecodeBadText : public ::testing::TestWithParam<BadText> {};

TEST_P(DecodeBadText, GivesTheReasonAndItsPlace) {
    const DecodedText decoded = decodeBase64Text(fromText(GetParam().characters));

    EXPECT_TRUE(decoded.data.empty());
    ASSERT_TRUE(decoded.problem);
    EXPECT_EQ(decoded.problem->text, GetParam().problem);
    EXPECT_EQ(decoded.problem->offset, GetParam().offset);
}

INSTANTIATE_TEST_SUITE_P(Reasons, DecodeBadText, ::testing::ValuesIn(BAD_TEXTS),
                         [](const auto& test) { return test.param.name; });

TEST(ResemblesBase64, TakesOneForeignCharacterIn16) {
    EXPECT_TRUE(resemblesBase64(fromText("Zm9vYmFyZm9v!mFy")));
    EXPECT_FALSE(resemblesBase64(fromText("Zm9vYmFyZm9v!mF")));
    EXPECT_FALSE(resemblesBase64(fromText("Zm9vYmFyZm9v!mF-")));
    EXPECT_TRUE(resemblesBase64(fromText("~m9vYmFyZm9vYmFyZm9vYmFyZm9vYmF~")));
}

TEST(ResemblesBase64, TakesPrintableTextOnly) {
    for (const unsigned char foreign : bytes{0x00, 0x1f, 0x7f, 0x80, 0xff}) {
        const bytes input = fromText("Zm9vYmFyZm9vYmFyZm9vYmFy") + bytes{foreign};
        EXPECT_FALSE(resemblesBase64(input)) << static_cast<unsigned int>(foreign);
        EXPECT_TRUE(isNearlyBase64(input)) << static_cast<unsigned int>(foreign);
    }
}

TEST(ResemblesBase64, TakesItsAlphabetAndWhiteSpace) {
    EXPECT_TRUE(resemblesBase64(fromText("AZaz09+/=\r\n\t ")));
    EXPECT_FALSE(resemblesBase64(fromText("")));
    EXPECT_FALSE(resemblesBase64(fromText("Zm-v")));
    EXPECT_FALSE(resemblesBase64(bytes{0x02}));
}

}  // namespace
