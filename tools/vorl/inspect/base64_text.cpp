#include "inspect/base64_text.h"

#include "vorl/Util.h"

#include <brisclient/Base64.h>

#include <algorithm>
#include <cstring>

namespace vorl::tool {

using Tarvik::BrisClient::Base64;

namespace {

bool isWhiteSpace(unsigned char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

bool isOfAlphabet(unsigned char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '+' || c == '/';
}

std::string characterText(unsigned char c) {
    if (isWhiteSpace(c)) {
        return "white space or a line break within the text";
    }
    return "a character that Base64 does not have: 0x" + Util::toHexString(c);
}

// The codec has refused `text`: the first reason that a reader would see.
Problem whyRefused(const bytes& text) {
    const auto offsetOf = [&text](auto at) { return static_cast<std::uint64_t>(at - text.begin()); };
    if (text.empty()) {
        return {0, "the input is empty"};
    }
    const auto foreign =
        std::find_if(text.begin(), text.end(), [](unsigned char c) { return !isOfAlphabet(c) && c != '='; });
    if (foreign != text.end()) {
        return {offsetOf(foreign), characterText(*foreign)};
    }
    if (text.size() % 4 != 0) {
        return {text.size(), "the text has " + std::to_string(text.size()) +
                                 (text.size() == 1 ? " character" : " characters") +
                                 ", which is no multiple of 4: something is missing"};
    }
    const auto padding = std::find(text.begin(), text.end(), static_cast<unsigned char>('='));
    if (text.end() - padding > 2 || std::any_of(padding, text.end(), isOfAlphabet)) {
        return {offsetOf(padding), "a '=' that is not at the end of the text"};
    }
    return {offsetOf(padding) - 1, "the last character has bits that belong to no byte"};
}

}  // namespace

std::size_t sizeWithoutNewline(const bytes& text) {
    std::size_t size = text.size();
    if (size > 0 && text[size - 1] == '\n') {
        --size;
        if (size > 0 && text[size - 1] == '\r') {
            --size;
        }
    }
    return size;
}

DecodedText decodeBase64Text(const bytes& input) {
    const bytes text(input.begin(), input.begin() + static_cast<std::ptrdiff_t>(sizeWithoutNewline(input)));
    DecodedText decoded;
    decoded.data = Base64::decode(text);
    if (decoded.data.empty()) {
        decoded.problem = whyRefused(text);
    }
    return decoded;
}

bool isPrintableText(const bytes& input) {
    return !input.empty() && std::all_of(input.begin(), input.end(), [](unsigned char c) {
        return isWhiteSpace(c) || (c > ' ' && c < 0x7f);
    });
}

bool isNearlyBase64(const bytes& input) {
    const auto foreign = std::count_if(input.begin(), input.end(), [](unsigned char c) {
        return !isOfAlphabet(c) && c != '=' && !isWhiteSpace(c);
    });
    return !input.empty() && static_cast<std::size_t>(foreign) <= input.size() / 16;
}

bool resemblesBase64(const bytes& input) {
    return isPrintableText(input) && isNearlyBase64(input);
}

}  // namespace vorl::tool
