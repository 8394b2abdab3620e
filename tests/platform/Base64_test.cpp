#include "brisclient/Base64.h"

#include "error_queue.h"
#include "octets.h"
#include "raw_base64.h"

#include <openssl/err.h>
#include <openssl/evp.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace vorl::test {

namespace {

using Tarvik::BrisClient::Base64;

struct Vector {
    const char* name;
    const char* data;
    const char* text;
};

// RFC 4648, section 10.
const Vector RFC_4648[] = {
    {"Empty", "", ""},
    {"F", "f", "Zg=="},
    {"Fo", "fo", "Zm8="},
    {"Foo", "foo", "Zm9v"},
    {"Foob", "foob", "Zm9vYg=="},
    {"Fooba", "fooba", "Zm9vYmE="},
    {"Foobar", "foobar", "Zm9vYmFy"},
};

class Base64Vector : public ::testing::TestWithParam<Vector> {};

const char ALPHABET[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// Sizes around the pieces in which long data is worked on, and powers of two near them.
std::vector<std::size_t> longSizes() {
    std::vector<std::size_t> sizes;
    for (const std::size_t middle :
         {768U, 3072U, 6144U, 12288U, 16384U, 24576U, 36864U, 49152U, 65536U, 98304U}) {
        for (std::size_t size = middle - 7; size <= middle + 7; ++size) {
            sizes.push_back(size);
        }
    }
    return sizes;
}

// Whether a text is one that encoding yields. OpenSSL's decoder takes much that is not, but its encoder is
// the judge: what it makes of the decoded octets must be the text itself.
bool isEncoded(const bytes& text) {
    if (text.empty() || text.size() % 4 != 0) {
        return false;
    }
    bytes data(text.size() / 4 * 3);
    const int size = EVP_DecodeBlock(data.data(), text.data(), static_cast<int>(text.size()));
    if (size < 0) {
        return false;
    }
    data.resize(static_cast<std::size_t>(size));
    for (std::size_t dropped = 0; dropped <= 2 && dropped <= data.size(); ++dropped) {
        if (rawBase64(slice(data, 0, data.size() - dropped)) == text) {
            return true;
        }
    }
    return false;
}

void expectStrict(const bytes& text) {
    const bytes data = Base64::decode(text);
    if (isEncoded(text)) {
        ASSERT_EQ(rawBase64(data), text) << toText(text);
        ASSERT_FALSE(data.empty()) << toText(text);
    } else {
        ASSERT_TRUE(data.empty()) << toText(text);
    }
}

}  // namespace

TEST_P(Base64Vector, IsEncodedAndDecoded) {
    EXPECT_EQ(toText(Base64::encode(fromText(GetParam().data))), GetParam().text);
    EXPECT_EQ(toText(Base64::decode(fromText(GetParam().text))), GetParam().data);
}

INSTANTIATE_TEST_SUITE_P(Rfc4648, Base64Vector, ::testing::ValuesIn(RFC_4648),
                         [](const auto& test) { return test.param.name; });

// 00 10 83 10 51 87 ... encodes to the alphabet in its order: RFC 4648, table 1.
TEST(Base64, AlphabetIsTheStandardOne) {
    bytes data;
    for (unsigned int group = 0; group < 16; ++group) {
        const unsigned int bits =
            (4 * group) << 18 | (4 * group + 1) << 12 | (4 * group + 2) << 6 | (4 * group + 3);
        data.push_back(static_cast<unsigned char>(bits >> 16));
        data.push_back(static_cast<unsigned char>(bits >> 8 & 0xff));
        data.push_back(static_cast<unsigned char>(bits & 0xff));
    }
    EXPECT_EQ(toText(Base64::encode(data)), ALPHABET);
    EXPECT_EQ(Base64::decode(fromText(ALPHABET)), data);
}

TEST(Base64, EachShortLengthIsEncodedAndDecoded) {
    for (std::size_t size = 0; size <= 100; ++size) {
        EXPECT_EQ(Base64::encode(octets(size)), rawBase64(octets(size))) << size;
        EXPECT_EQ(Base64::decode(rawBase64(octets(size))), octets(size)) << size;
    }
}

TEST(Base64, EachByteValueIsEncodedAndDecoded) {
    for (unsigned int value = 0; value < 256; ++value) {
        for (std::size_t size = 1; size <= 4; ++size) {
            const bytes data(size, static_cast<unsigned char>(value));
            EXPECT_EQ(Base64::encode(data), rawBase64(data)) << value;
            EXPECT_EQ(Base64::decode(rawBase64(data)), data) << value;
        }
    }
}

TEST(Base64, LongDataIsEncodedAndDecoded) {
    for (const std::size_t size : longSizes()) {
        EXPECT_TRUE(Base64::encode(octets(size)) == rawBase64(octets(size))) << size;
        EXPECT_TRUE(Base64::decode(rawBase64(octets(size))) == octets(size)) << size;
    }
}

TEST(Base64, TextHasNoLineBreaksAndNoTerminator) {
    const bytes text = Base64::encode(octets(10000));
    EXPECT_EQ(text.size(), 13336U);
    EXPECT_EQ(toText(text).find_first_not_of(ALPHABET), 13334U);
    EXPECT_EQ(toText(slice(text, 13334, 2)), "==");
}

TEST(Base64, LengthThatIsNoMultipleOf4IsRefused) {
    const bytes text = rawBase64(octets(30));
    for (std::size_t size = 0; size <= text.size(); ++size) {
        EXPECT_EQ(Base64::decode(slice(text, 0, size)), size % 4 == 0 ? octets(size / 4 * 3) : bytes())
            << size;
    }
}

TEST(Base64, TextsThatOpenSSLWouldTakeAreRefused) {
    for (const char* text : {"AB==",         "Zh==",         "AAB=",     "Zm9=",     "=AAA",      "A=AA",
                             "AA=A",         "A===",         "====",     "==AA",     "AA==AAAA",  "AAA=AAAA",
                             "AAAA====",     "AAAA===",      "AAAA-",    "AAAA----", "AAA-",      "-AAA",
                             " AAAA",        "AAAA ",        "    AAAA", "AAAA    ", "\nAAAA",    "AAAA\n",
                             "\t\t\t\tAAAA", "AAAA\r\n\r\n", "AA AA",    "A A A A ", "AAAA\nAAA", "    ",
                             "\n\n\n\n",     "----",         "-_-_",     "AAAAA",    "AAAA AAA",  "Zg=\n",
                             "Zm8=\n\n\n\n", "Zg== ",        "    Zg=="}) {
        EXPECT_EQ(Base64::decode(fromText(text)), bytes()) << text;
    }
}

TEST(Base64, NulCharactersAreForeign) {
    EXPECT_EQ(Base64::decode(bytes(4, 0x00)), bytes());
    EXPECT_EQ(Base64::decode(fromText("AAAA") + bytes(4, 0x00)), bytes());
    EXPECT_EQ(Base64::decode(bytes{'A', 'A', 'A', 0x00}), bytes());
}

// Every byte value at every position.
TEST(Base64, EachWrongCharacterIsRefusedAndEachRightOneDecoded) {
    for (const std::size_t size : {9U, 8U, 7U}) {
        const bytes text = rawBase64(octets(size));
        for (std::size_t at = 0; at < text.size(); ++at) {
            for (unsigned int value = 0; value < 256; ++value) {
                bytes changed = text;
                changed[at] = static_cast<unsigned char>(value);
                ASSERT_NO_FATAL_FAILURE(expectStrict(changed));
            }
        }
    }
}

TEST(Base64, EachWrongPairOfCharactersIsRefused) {
    const std::string few = "=A/ \n-\t";
    const bytes text = rawBase64(octets(9));
    for (std::size_t first = 0; first < text.size(); ++first) {
        for (std::size_t second = first + 1; second < text.size(); ++second) {
            for (const char one : few) {
                for (const char other : few) {
                    bytes changed = text;
                    changed[first] = static_cast<unsigned char>(one);
                    changed[second] = static_cast<unsigned char>(other);
                    ASSERT_NO_FATAL_FAILURE(expectStrict(changed));
                }
            }
        }
    }
}

TEST(Base64, EachInsertedCharacterIsRefused) {
    const bytes text = rawBase64(octets(9));
    for (const char* inserted : {"=", " ", "\n", "-", "A", "    ", "====", "\r\n\r\n", "----"}) {
        for (std::size_t at = 0; at <= text.size(); ++at) {
            ASSERT_NO_FATAL_FAILURE(
                expectStrict(slice(text, 0, at) + fromText(inserted) + slice(text, at, text.size() - at)));
        }
    }
}

// OpenSSL skips white space at the ends of what it is given, and long texts are given to it in pieces: blanks
// must not get lost at the seams either.
TEST(Base64, BlanksInALongTextAreRefusedWhereverTheyAre) {
    for (const std::size_t size : {12288U, 24576U, 36864U, 49152U, 49153U}) {
        const bytes text = rawBase64(octets(size));
        for (const unsigned char blank : fromText(" \n-=")) {
            for (const std::size_t count : {1U, 4U, 5U}) {
                for (std::size_t seam = 0; seam <= text.size(); seam += 4096) {
                    for (std::size_t at = seam < 8 ? 0 : seam - 8;
                         at < seam + 8 && at + count < text.size() - 2; ++at) {
                        bytes changed = text;
                        std::fill_n(changed.begin() + static_cast<std::ptrdiff_t>(at), count, blank);
                        ASSERT_TRUE(Base64::decode(changed).empty()) << size << " " << at << " " << count;
                    }
                }
            }
        }
    }
}

TEST(Base64, BlanksAroundALongTextAreRefused) {
    const bytes text = rawBase64(octets(12288));
    for (const char* blanks : {"    ", "\n\n\n\n", "\r\n\r\n", "----", "===="}) {
        EXPECT_TRUE(Base64::decode(fromText(blanks) + text).empty());
        EXPECT_TRUE(Base64::decode(text + fromText(blanks)).empty());
    }
}

TEST(Base64, BitsUnderThePaddingOfALongTextAreRefused) {
    for (const std::size_t size : {12286U, 12287U, 12289U, 12290U, 49153U, 49154U}) {
        bytes text = rawBase64(octets(size));
        const std::size_t last = text.size() - 1 - (3 - size % 3);
        ASSERT_EQ(text[last + 1], '=');
        // The next letter of the alphabet differs in the lowest bit of its six, which lies under the padding.
        const std::size_t letter = std::string(ALPHABET).find(static_cast<char>(text[last]));
        text[last] = static_cast<unsigned char>(ALPHABET[letter + 1]);
        EXPECT_TRUE(Base64::decode(text).empty()) << size;
    }
}

TEST(Base64, RefusalLeavesTheErrorQueueAsItWas) {
    ERR_clear_error();
    const unsigned long left = leaveApplicationError();
    EXPECT_TRUE(Base64::decode(fromText("!!!!")).empty());
    EXPECT_TRUE(Base64::decode(fromText("AB==")).empty());
    EXPECT_EQ(takeErrorQueue(), ErrorCodes{left});
}

}  // namespace vorl::test
