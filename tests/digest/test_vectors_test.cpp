#include "test_vectors.h"

#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

// The reader of the vector files is held to its word, since a reader that overlooks something looks like a
// test that passes.

namespace vorl::test {
namespace {

std::vector<TestVector> parsed(const std::string& text) {
    std::istringstream in(text);
    return parseVectors(in, "file");
}

TEST(TestVectors, AreSeparatedByBlankLines) {
    std::vector<TestVector> vectors = parsed("# source\n\nA = 1\nB = 2\n\n\n# more\nA = 3\n");

    ASSERT_EQ(vectors.size(), 2U);
    EXPECT_EQ(vectors[0].text("A"), "1");
    EXPECT_EQ(vectors[0].text("B"), "2");
    EXPECT_EQ(vectors[0].place(), "file:3");
    EXPECT_EQ(vectors[1].text("A"), "3");
    EXPECT_FALSE(vectors[1].has("B"));
    EXPECT_EQ(vectors[1].place(), "file:8");
}

TEST(TestVectors, HoldOctetsAsHexAsTextAndRepeated) {
    TestVector vector("here");
    vector.add("Hex = 00ff1a");
    vector.add("Empty = \"\"");
    vector.add("Text = \"a x 2\"");
    vector.add("RepeatedHex = 0b x 3");
    vector.add("RepeatedText = \"abc\" x 5");
    vector.add("Once = 0b0c x 1");

    EXPECT_EQ(vector.octets("Hex"), (bytes{0x00, 0xff, 0x1a}));
    EXPECT_EQ(vector.octets("Empty"), bytes());
    EXPECT_EQ(vector.octets("Text"), fromText("a x 2"));
    EXPECT_EQ(vector.octets("RepeatedHex"), bytes(3, 0x0b));
    EXPECT_EQ(vector.octets("RepeatedText"), fromText("abcabcabcabcabc"));
    EXPECT_EQ(vector.octets("Once"), (bytes{0x0b, 0x0c}));
}

TEST(TestVectors, ReportAFieldThatNobodyReads) {
    TestVector vector("here");
    vector.add("A = 1");
    vector.add("B = 02");

    vector.text("A");
    EXPECT_THROW(vector.expectAllRead(), std::runtime_error);
    vector.octets("B");
    EXPECT_NO_THROW(vector.expectAllRead());
}

TEST(TestVectors, ReportWhatTheyCannotRead) {
    EXPECT_THROW(parsed("A 1\n"), std::runtime_error);
    EXPECT_THROW(parsed("A = \n"), std::runtime_error);
    EXPECT_THROW(parsed("A = 1\nA = 2\n"), std::runtime_error);

    TestVector vector("here");
    vector.add("Odd = 123");
    vector.add("Letters = 1g");
    vector.add("Upper = AB");
    EXPECT_THROW(vector.octets("Odd"), std::runtime_error);
    EXPECT_THROW(vector.octets("Letters"), std::runtime_error);
    EXPECT_THROW(vector.octets("Upper"), std::runtime_error);
    EXPECT_THROW(vector.text("Missing"), std::runtime_error);
    EXPECT_THROW(forEachVector("/nonexistent/vectors.txt", [](TestVector&) {}), std::runtime_error);
}

}  // namespace
}  // namespace vorl::test
