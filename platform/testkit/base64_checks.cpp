#include "Subject.h"
#include "checks.h"
#include "expectations.h"

#include <openssl/evp.h>

#include <string>

// RFC 4648, section 4, and nothing that is only nearly that.

namespace vorl::testkit {

namespace {

const char ALPHABET[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

struct Base64Vector {
    const char* data;
    const char* text;
};

// RFC 4648, section 10.
const Base64Vector BASE64_VECTORS[] = {{"", ""},
                                       {"f", "Zg=="},
                                       {"fo", "Zm8="},
                                       {"foo", "Zm9v"},
                                       {"foob", "Zm9vYg=="},
                                       {"fooba", "Zm9vYmE="},
                                       {"foobar", "Zm9vYmFy"}};

bytes fromText(const std::string& text) {
    return bytes(text.begin(), text.end());
}

bytes rawEncoded(const bytes& data) {
    bytes text((data.size() + 2) / 3 * 4 + 1);
    text.resize(
        static_cast<std::size_t>(EVP_EncodeBlock(text.data(), data.data(), static_cast<int>(data.size()))));
    return text;
}

// What is no printable character is shown by its number.
std::string shown(const std::string& text) {
    std::string result;
    for (const char c : text) {
        const bool isPlain = c >= ' ' && c <= '~';
        result += isPlain ? std::string(1, c) : "<" + std::to_string(static_cast<unsigned char>(c)) + ">";
    }
    return "\"" + result + "\"";
}

bytes decoded(const Platform& platform, const bytes& text, const std::string& subject) {
    return doing(subject, [&] { return platform.decode(text); });
}

void refuses(const Platform& platform, const std::string& text) {
    require(decoded(platform, fromText(text), "decode() of " + shown(text)).empty(),
            "decode() takes " + shown(text) + " for Base64");
}

void refusesEach(const Platform& platform, std::initializer_list<const char*> texts) {
    for (const char* const text : texts) {
        refuses(platform, text);
    }
}

void encodesPublishedVectors(const Platform& platform) {
    for (const Base64Vector& vector : BASE64_VECTORS) {
        require(doing("encode()", [&] { return platform.encode(fromText(vector.data)); }) ==
                    fromText(vector.text),
                "encode() does not write " + shown(vector.data) + " as " + shown(vector.text));
        require(decoded(platform, fromText(vector.text), "decode()") == fromText(vector.data),
                "decode() does not read " + shown(vector.text) + " as " + shown(vector.data));
    }
}

// All lengths of one line of other encoders, which break lines there, and some around large pieces.
std::vector<std::size_t> sizes() {
    std::vector<std::size_t> all = {3071, 3072, 3073, 16384, 49151, 49152, 49153, 1048577};
    for (std::size_t size = 0; size <= 100; ++size) {
        all.push_back(size);
    }
    return all;
}

void encodesEverySize(const Platform& platform) {
    for (const std::size_t size : sizes()) {
        const std::string what = "encode() of " + std::to_string(size) + " bytes";
        require(doing(what, [&] { return platform.encode(octets(size)); }) == rawEncoded(octets(size)),
                what + " yields a wrong text");
    }
}

void decodesEverySize(const Platform& platform) {
    for (const std::size_t size : sizes()) {
        const std::string what = "decode() of the text of " + std::to_string(size) + " bytes";
        require(decoded(platform, rawEncoded(octets(size)), what) == octets(size),
                what + " yields other bytes");
    }
}

void refusesWrongLengths(const Platform& platform) {
    refusesEach(platform, {"Z", "Zm", "Zm9", "Zg=", "Zm8", "Zm9vY", "Zm9vYg", "Zm9vYg=", "Zm9vYmE"});
}

void refusesForeignCharacters(const Platform& platform) {
    for (int value = 0; value < 256; ++value) {
        const char c = static_cast<char>(value);
        if (c != '=' && std::string(ALPHABET).find(c) == std::string::npos) {
            for (std::size_t at = 0; at < 8; ++at) {
                std::string text = "Zm9vYmFy";
                text[at] = c;
                refuses(platform, text);
            }
        }
    }
    refusesEach(platform, {"-_-_", "AAAA-", "AAAA----", "----"});
}

void refusesWhiteSpace(const Platform& platform) {
    refusesEach(platform, {" Zm9v", "Zm9v ", "Zm9v\n", "\nZm9v", "Zm9v\r\n", "Zm 9v", "Zm9v Zm9v", "    Zm9v",
                           "Zm9v    ", "\n\n\n\nZm9v", "Zm9v\n\n\n\n", "\t\t\t\tZm9v", "Zm9v\r\n\r\n",
                           "Zm9v\nZm9", "    ", "\n\n\n\n", "Zg=\n", "Zg== ", "    Zg=="});
}

void refusesMisplacedPadding(const Platform& platform) {
    refusesEach(platform, {"=", "==", "====", "=AAA", "A=AA", "AA=A", "A===", "==AA", "Zg==Zg==", "Zg==AAAA",
                           "Zm8=AAAA", "AAAA====", "AAAA=", "AAAA===", "Zm9v="});
}

void refusesBitsUnderThePadding(const Platform& platform) {
    refusesEach(platform, {"AB==", "AC==", "AE==", "AI==", "Zh==", "Zv==", "Z/==", "AAB=", "AAC=", "Zm9=",
                           "Zm+=", "Zm/=", "Zm9vYh==", "Zm9vYmF="});
}

}  // namespace

std::vector<Check> base64Checks() {
    return {
        {"base64-agrees-with-published-vectors", "Base64 is that of the published vectors",
         encodesPublishedVectors},
        {"base64-encodes-every-size", "Bytes of any number are encoded, with padding and without line breaks",
         encodesEverySize},
        {"base64-decodes-every-size", "Texts of any length are decoded", decodesEverySize},
        {"base64-refuses-wrong-lengths",
         "decode() returns nothing for a length that is no multiple of 4, and does not throw",
         refusesWrongLengths},
        {"base64-refuses-foreign-characters",
         "decode() returns nothing for a character outside the alphabet, and does not throw",
         refusesForeignCharacters},
        {"base64-refuses-white-space", "decode() returns nothing for white space, and does not throw",
         refusesWhiteSpace},
        {"base64-refuses-misplaced-padding",
         "decode() returns nothing for padding in a wrong place, and does not throw",
         refusesMisplacedPadding},
        {"base64-refuses-bits-under-padding",
         "decode() returns nothing for bits that the padding would swallow, and does not throw",
         refusesBitsUnderThePadding},
    };
}

}  // namespace vorl::testkit
