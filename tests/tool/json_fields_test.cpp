#include "json_fields.h"

#include "messageOf.h"

#include <gtest/gtest.h>

#include <string>

// The reader of the JSON files is held to its word: one that overlooks something looks like a test that
// passes.

namespace vorl::test {
namespace {

template <typename Use>
std::string faultOf(const char* json, Use&& use) {
    const nlohmann::json object = nlohmann::json::parse(json);
    return messageOf<std::runtime_error>([&] {
        JsonFields fields(object, "file");
        use(fields);
        fields.expectAllRead();
    });
}

TEST(JsonFields, HoldTextsNumbersOctetsObjectsAndArrays) {
    const char json[] =
        R"({"a": "x", "b": 7, "c": "00ff", "d": {"e": "y"}, "f": [{"g": 1}, {"g": 2}], "h": ["z"]})";
    std::size_t sum = 0;
    EXPECT_EQ(faultOf(json,
                      [&](JsonFields& fields) {
                          EXPECT_TRUE(fields.has("a"));
                          EXPECT_FALSE(fields.has("z"));
                          EXPECT_EQ(fields.text("a"), "x");
                          EXPECT_EQ(fields.number("b"), 7U);
                          EXPECT_EQ(fields.octets("c"), (bytes{0x00, 0xff}));
                          fields.in("d", [](JsonFields& inner) { EXPECT_EQ(inner.text("e"), "y"); });
                          EXPECT_EQ(fields.each("f", [&](JsonFields& inner) { sum += inner.number("g"); }),
                                    2U);
                          EXPECT_EQ(fields.texts("h"), std::vector<std::string>{"z"});
                      }),
              "<no exception>");
    EXPECT_EQ(sum, 3U);
}

TEST(JsonFields, ThatNobodyReadsAreFaults) {
    EXPECT_EQ(faultOf(R"({"a": 1})", [](JsonFields&) {}), "file: nobody reads a");
    EXPECT_EQ(faultOf(R"({"a": 1})", [](JsonFields& fields) { EXPECT_TRUE(fields.has("a")); }),
              "file: nobody reads a");
    EXPECT_EQ(faultOf(R"({"a": {"b": 1}})", [](JsonFields& fields) { fields.in("a", [](JsonFields&) {}); }),
              "file.a: nobody reads b");
    EXPECT_EQ(
        faultOf(R"({"a": [{}, {"b": 1}]})", [](JsonFields& fields) { fields.each("a", [](JsonFields&) {}); }),
        "file.a[1]: nobody reads b");
}

TEST(JsonFields, OfAnotherKindAreFaults) {
    const auto text = [](JsonFields& fields) { fields.text("a"); };
    const auto number = [](JsonFields& fields) { fields.number("a"); };
    const auto octets = [](JsonFields& fields) { fields.octets("a"); };
    EXPECT_EQ(faultOf("{}", text), "file: no member a");
    EXPECT_EQ(faultOf("[]", text), "file: no object");
    EXPECT_EQ(faultOf(R"({"a": 1})", text), "file: no text: a");
    EXPECT_EQ(faultOf(R"({"a": "1"})", number), "file: no number: a");
    EXPECT_EQ(faultOf(R"({"a": -1})", number), "file: no number: a");
    EXPECT_EQ(faultOf(R"({"a": "0"})", octets), "file: not hexadecimal: a");
    EXPECT_EQ(faultOf(R"({"a": "0g"})", octets), "file: not hexadecimal: a");
    EXPECT_EQ(faultOf(R"({"a": [1]})", [](JsonFields& fields) { fields.texts("a"); }), "file: no text in a");
    EXPECT_EQ(faultOf(R"({"a": {}})", [](JsonFields& fields) { fields.each("a", [](JsonFields&) {}); }),
              "file: no array: a");
}

}  // namespace
}  // namespace vorl::test
