#include "http/structured_fields.h"

#include "octets.h"
#include "raw_base64.h"

#include <gtest/gtest.h>

#include <string>
#include <variant>

// RFC 8941; sections are given where a rule is easily forgotten.

namespace vorl::test {

namespace {

namespace structured = tarvik::http::structured;
using structured::BareItem;
using structured::Dictionary;
using structured::InnerList;
using structured::Item;
using structured::Member;
using structured::parseDictionary;
using structured::Token;

// The value of the only member, "a=" and the text. Nothing where that is not read.
std::optional<BareItem> valueOfText(const std::string& text) {
    const std::optional<Dictionary> dictionary = parseDictionary("a=" + text);
    const Member* member = dictionary ? find(*dictionary, "a") : nullptr;
    const Item* item = member == nullptr ? nullptr : std::get_if<Item>(member);
    return item == nullptr || !item->parameters.empty() ? std::nullopt : std::optional<BareItem>(item->value);
}

template <typename Kind>
std::optional<Kind> readAs(const std::string& text) {
    const std::optional<BareItem> value = valueOfText(text);
    return value && std::holds_alternative<Kind>(*value) ? std::optional<Kind>(std::get<Kind>(*value))
                                                         : std::nullopt;
}

std::string serializeMember(const Member& member) {
    return std::visit([](const auto& kind) { return structured::serialize(kind); }, member);
}

// As section 4.1.2 writes a dictionary.
std::string serializeAll(const Dictionary& dictionary) {
    std::string text;
    for (const auto& [key, member] : dictionary) {
        const std::string value = serializeMember(member);
        text += (text.empty() ? "" : ", ") + key;
        text += value.substr(0, 2) == "?1" ? value.substr(2) : "=" + value;
    }
    return text;
}

struct StructuredText {
    const char* name;
    std::string text;
};

std::string nameOfText(const ::testing::TestParamInfo<StructuredText>& test) {
    return test.param.name;
}

class RefusedDictionary : public ::testing::TestWithParam<StructuredText> {};
class RefusedValue : public ::testing::TestWithParam<StructuredText> {};
class CanonicalDictionary : public ::testing::TestWithParam<StructuredText> {};

struct RewrittenText {
    const char* name;
    std::string text;
    std::string canonical;
};
class RewrittenDictionary : public ::testing::TestWithParam<RewrittenText> {};

}  // namespace

TEST(StructuredDictionary, IsEmptyForNothing) {
    for (const char* text : {"", " ", "   "}) {
        const auto dictionary = parseDictionary(text);
        ASSERT_TRUE(dictionary) << '"' << text << '"';
        EXPECT_TRUE(dictionary->empty());
    }
}

TEST(StructuredDictionary, KeepsTheOrderOfItsMembers) {
    const auto dictionary = parseDictionary("b=1, a=2,c");
    ASSERT_TRUE(dictionary);
    ASSERT_EQ(dictionary->size(), 3U);
    EXPECT_EQ((*dictionary)[0].first, "b");
    EXPECT_EQ((*dictionary)[1].first, "a");
    EXPECT_EQ((*dictionary)[2].first, "c");
}

TEST(StructuredDictionary, FindsMembersByTheirWholeKey) {
    const auto dictionary = parseDictionary("ab=1, a=2");
    ASSERT_TRUE(dictionary);
    ASSERT_NE(find(*dictionary, "a"), nullptr);
    EXPECT_EQ(serializeMember(*find(*dictionary, "a")), "2");
    EXPECT_EQ(find(*dictionary, "b"), nullptr);
    EXPECT_EQ(find(*dictionary, ""), nullptr);
}

TEST(StructuredDictionary, AKeyAloneIsTrue) {
    const auto dictionary = parseDictionary("a;x=1, b");
    ASSERT_TRUE(dictionary);
    for (const auto& [key, member] : *dictionary) {
        ASSERT_TRUE(std::holds_alternative<Item>(member)) << key;
        EXPECT_TRUE(std::get<bool>(std::get<Item>(member).value)) << key;
    }
    EXPECT_EQ(std::get<Item>((*dictionary)[0].second).parameters.size(), 1U);
}

TEST(StructuredDictionary, AKeyIsKnownAgainAmongThousands) {
    std::string members = "k0";
    std::string parameters = "a;k0";
    for (int i = 1; i < 2000; ++i) {
        members += ",k" + std::to_string(i);
        parameters += ";k" + std::to_string(i);
    }
    const auto dictionary = parseDictionary(members);
    ASSERT_TRUE(dictionary);
    EXPECT_EQ(dictionary->size(), 2000U);
    EXPECT_EQ(dictionary->back().first, "k1999");
    EXPECT_TRUE(parseDictionary(parameters));
    for (const char* key : {"k0", "k1000", "k1999"}) {
        EXPECT_FALSE(parseDictionary(members + "," + key)) << key;
        EXPECT_FALSE(parseDictionary(parameters + ";" + key)) << key;
    }
}

TEST_P(RefusedDictionary, IsNone) {
    EXPECT_FALSE(parseDictionary(GetParam().text)) << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(
    Grammar, RefusedDictionary,
    ::testing::Values(
        StructuredText{"CommaAtTheEnd", "a=1,"}, StructuredText{"CommaAndBlankAtTheEnd", "a=1, "},
        StructuredText{"CommaAtTheBeginning", ",a=1"}, StructuredText{"TwoCommas", "a=1,,b=2"},
        StructuredText{"NoComma", "a=1 b=2"}, StructuredText{"Semicolon", "a=1;"},
        StructuredText{"TabAtTheBeginning", "\ta=1"}, StructuredText{"LineFeed", "a=1,\nb=2"},
        StructuredText{"KeyWithACapital", "A=1"}, StructuredText{"CapitalWithinAKey", "aB=1"},
        StructuredText{"KeyThatStartsWithADigit", "1a=1"}, StructuredText{"KeyWithABlank", "a b"},
        StructuredText{"NoKey", "=1"}, StructuredText{"NoValue", "a="},
        StructuredText{"NoValueBeforeTheNext", "a=, b=1"}, StructuredText{"BlankBeforeTheValue", "a= 1"},
        StructuredText{"BlankBehindTheKey", "a =1"}, StructuredText{"BlankBeforeParameters", "a=1 ;b"},
        StructuredText{"ParameterWithoutAKey", "a=1;=2"}, StructuredText{"ParameterWithoutAValue", "a=1;b="},
        StructuredText{"ParameterWithACapital", "a=1;B=1"}, StructuredText{"ListAsAParameter", "a=1;b=(1)"},
        StructuredText{"NulAtTheEnd", std::string("a=1\0", 4)},
        StructuredText{"NulWithin", std::string("a=1\0,b=2", 8)}),
    nameOfText);

// A second one could be meant for another reader than the first.
INSTANTIATE_TEST_SUITE_P(Twice, RefusedDictionary,
                         ::testing::Values(StructuredText{"Member", "a=1, b=2, a=1"},
                                           StructuredText{"MemberOfAnotherKind", "a, a=()"},
                                           StructuredText{"Parameter", "a=1;b=1;b=1"},
                                           StructuredText{"ParameterOfAList", "a=(1);b=1;c;b=2"},
                                           StructuredText{"ParameterWithinAList", "a=(1;b;b)"}),
                         nameOfText);

INSTANTIATE_TEST_SUITE_P(
    Lists, RefusedDictionary,
    ::testing::Values(StructuredText{"Open", "a=(1"}, StructuredText{"OpenAndEmpty", "a=("},
                      StructuredText{"OpenBehindABlank", "a=(1 "}, StructuredText{"NoBlank", R"(a=("x""y"))"},
                      StructuredText{"Tab", "a=(1\t2)"}, StructuredText{"Comma", "a=(1, 2)"},
                      StructuredText{"Nested", "a=((1))"}, StructuredText{"TextBehind", "a=(1)b"},
                      StructuredText{"ClosedOnly", "a=)"},
                      StructuredText{"BlankBeforeParameters", "a=(1 ;b)"},
                      StructuredText{"KeyWithin", "a=(b=1)"}),
    nameOfText);

TEST_P(RefusedValue, IsNone) {
    EXPECT_FALSE(parseDictionary("a=" + GetParam().text)) << GetParam().text;
    EXPECT_FALSE(parseDictionary("a=1;b=" + GetParam().text)) << GetParam().text;
    EXPECT_FALSE(parseDictionary("a=(" + GetParam().text + ")")) << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(
    Numbers, RefusedValue,
    ::testing::Values(StructuredText{"SixteenDigits", "1234567890123456"},
                      StructuredText{"SixteenDigitsWithZerosInFront", "0000000000000001"},
                      StructuredText{"SixteenNegativeDigits", "-1234567890123456"},
                      StructuredText{"SignOnly", "-"}, StructuredText{"TwoSigns", "--1"},
                      StructuredText{"Plus", "+1"}, StructuredText{"Decimal", "1.5"},
                      StructuredText{"PointAtTheEnd", "1."}, StructuredText{"Hexadecimal", "0x10"},
                      StructuredText{"SignBehind", "1-"}),
    nameOfText);

INSTANTIATE_TEST_SUITE_P(
    Strings, RefusedValue,
    ::testing::Values(StructuredText{"Open", R"("abc)"}, StructuredText{"QuoteOnly", R"(")"},
                      StructuredText{"OpenByAnEscape", R"("abc\")"},
                      StructuredText{"EscapeAtTheEnd", R"("abc\)"},
                      StructuredText{"EscapeOfALetter", R"("\n")"},
                      StructuredText{"EscapeOfABlank", R"("\ ")"}, StructuredText{"Tab", "\"a\tb\""},
                      StructuredText{"LineFeed", "\"a\nb\""}, StructuredText{"Delete", "\"a\x7f\""},
                      StructuredText{"UnitSeparator", "\"\x1f\""}, StructuredText{"Utf8", "\"\xc3\xa4\""},
                      StructuredText{"Nul", std::string("\"a\0\"", 4)}, StructuredText{"SingleQuotes", "'a'"},
                      StructuredText{"TextBehind", R"("a"b)"}),
    nameOfText);

INSTANTIATE_TEST_SUITE_P(
    OtherKinds, RefusedValue,
    ::testing::Values(
        StructuredText{"OpenOctets", ":AAAA"}, StructuredText{"ColonOnly", ":"},
        StructuredText{"OctetsWithoutPadding", ":AAA:"}, StructuredText{"OctetsWithABlank", ":AA AA:"},
        StructuredText{"OctetsOfTheUrlAlphabet", ":-_-_:"}, StructuredText{"BitsUnderThePadding", ":AB==:"},
        StructuredText{"PaddingOnly", ":====:"}, StructuredText{"TextBehindOctets", ":AAAA:A"},
        StructuredText{"BooleanTwo", "?2"}, StructuredText{"QuestionMarkOnly", "?"},
        StructuredText{"BooleanAsAWord", "?true"}, StructuredText{"BooleanOfTwoDigits", "?10"},
        StructuredText{"TokenWithAnEquals", "a=b"}, StructuredText{"TokenWithAParenthesis", "a(b"},
        StructuredText{"TokenThatStartsWithATilde", "~a"}, StructuredText{"TokenInUtf8", "\xc3\xa4"},
        StructuredText{"Date", "@1659578233"}),
    nameOfText);

TEST(StructuredInteger, IsReadUpToFifteenDigits) {
    EXPECT_EQ(readAs<std::int64_t>("0"), 0);
    EXPECT_EQ(readAs<std::int64_t>("-0"), 0);
    EXPECT_EQ(readAs<std::int64_t>("42"), 42);
    EXPECT_EQ(readAs<std::int64_t>("007"), 7);
    EXPECT_EQ(readAs<std::int64_t>("999999999999999"), 999999999999999);
    EXPECT_EQ(readAs<std::int64_t>("-999999999999999"), -999999999999999);
}

TEST(StructuredString, IsReadWithoutItsEscapes) {
    EXPECT_EQ(readAs<std::string>(R"("")"), "");
    EXPECT_EQ(readAs<std::string>(R"("a b")"), "a b");
    EXPECT_EQ(readAs<std::string>(R"("\"\\")"), "\"\\");
    EXPECT_EQ(readAs<std::string>("\" ~,;=()\""), " ~,;=()");
}

TEST(StructuredToken, IsReadToItsEnd) {
    for (const char* text : {"a", "*", "A", "*foo", "foo123/456", "a!#$%&'*+-.^_`|~:/Z9"}) {
        const auto token = readAs<Token>(text);
        ASSERT_TRUE(token) << text;
        EXPECT_EQ(token->text, text);
    }
}

TEST(StructuredOctets, AreReadFromBase64) {
    EXPECT_EQ(readAs<bytes>("::"), bytes());
    for (const std::size_t size : {1U, 2U, 3U, 16U, 32U}) {
        EXPECT_EQ(readAs<bytes>(":" + toText(rawBase64(octets(size))) + ":"), octets(size)) << size;
    }
}

TEST(StructuredBoolean, IsReadFromADigit) {
    EXPECT_EQ(readAs<bool>("?1"), true);
    EXPECT_EQ(readAs<bool>("?0"), false);
}

TEST(StructuredList, HasItemsWithParametersAndParametersOfItsOwn) {
    const auto dictionary = parseDictionary(R"(sig=("a";req "b" 3;x=?0);created=1;tag="t")");
    ASSERT_TRUE(dictionary);
    const Member* member = find(*dictionary, "sig");
    ASSERT_NE(member, nullptr);
    const auto* list = std::get_if<InnerList>(member);
    ASSERT_NE(list, nullptr);
    ASSERT_EQ(list->items.size(), 3U);
    EXPECT_EQ(std::get<std::string>(list->items[0].value), "a");
    ASSERT_NE(find(list->items[0].parameters, "req"), nullptr);
    EXPECT_TRUE(std::get<bool>(*find(list->items[0].parameters, "req")));
    EXPECT_EQ(find(list->items[1].parameters, "req"), nullptr);
    EXPECT_FALSE(std::get<bool>(*find(list->items[2].parameters, "x")));
    ASSERT_EQ(list->parameters.size(), 2U);
    EXPECT_EQ(std::get<std::int64_t>(*find(list->parameters, "created")), 1);
    EXPECT_EQ(std::get<std::string>(*find(list->parameters, "tag")), "t");
    EXPECT_EQ(find(list->parameters, "req"), nullptr);
}

// What is written as section 4.1 writes it is read and written again to the character.
TEST_P(CanonicalDictionary, IsWrittenAsItWasRead) {
    const auto dictionary = parseDictionary(GetParam().text);
    ASSERT_TRUE(dictionary);
    EXPECT_EQ(serializeAll(*dictionary), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, CanonicalDictionary,
    ::testing::Values(
        StructuredText{"Nothing", ""},
        StructuredText{"Kinds", R"(a=1, b="x y", c=tok/en, d=:AQI=:, e, f=?0)"},
        StructuredText{"Escapes", R"(a="\"\\")"}, StructuredText{"EmptyList", "a=()"},
        StructuredText{"EmptyListWithParameters", "a=();b=1"},
        StructuredText{"Parameters", "a;x;y=?0;z=-1, b=2;x;*y.-_*0=tok"},
        StructuredText{"ParametersWithinAList", R"(a=("x";req "y";sf;key="k" tok;z=::);created=0)"},
        StructuredText{"EmptyStringAndOctets", R"(a="", b=::)"},
        // RFC 9421, section 4.1.
        StructuredText{"SignatureInput",
                       R"(sig1=("@method" "@target-uri" "@authority" "content-digest" "cache-control"))"
                       R"(;created=1618884475;keyid="test-key-rsa-pss")"}),
    nameOfText);

TEST_P(RewrittenDictionary, IsWrittenInOneWay) {
    const auto dictionary = parseDictionary(GetParam().text);
    ASSERT_TRUE(dictionary);
    EXPECT_EQ(serializeAll(*dictionary), GetParam().canonical);
}

INSTANTIATE_TEST_SUITE_P(Texts, RewrittenDictionary,
                         ::testing::Values(RewrittenText{"Blanks", "  a=1 \t,\t b=2 ,c \t", "a=1, b=2, c"},
                                           RewrittenText{"BlanksInAList", "a=(  1   2  )", "a=(1 2)"},
                                           RewrittenText{"EmptyListWithBlanks", "a=(   )", "a=()"},
                                           RewrittenText{"BlanksInParameters", "a=1;  x;   y=2", "a=1;x;y=2"},
                                           RewrittenText{"True", "a=?1;x=?1", "a;x"},
                                           RewrittenText{"Zeros", "a=-000", "a=0"}),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(StructuredItem, IsWrittenWithItsParameters) {
    const Item item{std::string("date"),
                    {{"req", true}, {"x", false}, {"n", std::int64_t(-5)}, {"t", Token{"u"}}}};
    EXPECT_EQ(structured::serialize(item), R"("date";req;x=?0;n=-5;t=u)");
    EXPECT_EQ(structured::serialize(InnerList{{item, Item{std::int64_t(7), {}}}, {{"o", bytes{1, 2}}}}),
              R"(("date";req;x=?0;n=-5;t=u 7);o=:AQI=:)");
    EXPECT_EQ(structured::serialize(InnerList{}), "()");
    EXPECT_EQ(structured::serialize(bytes{}), "::");
}

TEST(StructuredString, CarriesVisibleAsciiAndSpaces) {
    for (int code = 0; code < 256; ++code) {
        const std::string text(1, static_cast<char>(code));
        EXPECT_EQ(structured::isString("a" + text), code >= 0x20 && code <= 0x7e) << code;
    }
    EXPECT_TRUE(structured::isString(""));
}

TEST(StructuredKey, HasSmallLettersDigitsAndFourSigns) {
    const std::string first = "abcdefghijklmnopqrstuvwxyz*";
    const std::string later = first + "0123456789_-.";
    for (int code = 0; code < 256; ++code) {
        const char c = static_cast<char>(code);
        EXPECT_EQ(structured::isKey(std::string(1, c)), first.find(c) != std::string::npos) << code;
        EXPECT_EQ(structured::isKey(std::string("a") + c), later.find(c) != std::string::npos) << code;
    }
    EXPECT_FALSE(structured::isKey(""));
}

}  // namespace vorl::test
