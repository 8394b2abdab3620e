#ifndef VORL_TESTS_OCTETS_H
#define VORL_TESTS_OCTETS_H

#include "vorl/bytes.h"

#include <cstddef>
#include <string>

namespace vorl::test {

/// `n` octets in which neighbours, and the same places of neighbouring pages, differ.
inline bytes octets(std::size_t n) {
    bytes pattern(n);
    for (std::size_t i = 0; i < n; ++i) {
        pattern[i] = static_cast<unsigned char>(i * 31 + (i >> 8) * 7 + 1);
    }
    return pattern;
}

inline bytes operator+(bytes left, const bytes& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

inline bytes slice(const bytes& all, std::size_t from, std::size_t count) {
    const auto begin = all.begin() + static_cast<std::ptrdiff_t>(from);
    return bytes(begin, begin + static_cast<std::ptrdiff_t>(count));
}

inline bytes fromText(const std::string& text) {
    return bytes(text.begin(), text.end());
}

inline std::string toText(const bytes& characters) {
    return std::string(characters.begin(), characters.end());
}

/// "00 01 ff" or "0001ff"; any other character is a mistake in the test and ends it.
inline bytes fromHex(const std::string& hex) {
    bytes result;
    std::string digits;
    for (const char c : hex) {
        if (c == ' ' || c == '\n') {
            continue;
        }
        digits += c;
        if (digits.size() == 2) {
            result.push_back(static_cast<unsigned char>(std::stoul(digits, nullptr, 16)));
            digits.clear();
        }
    }
    return result;
}

}  // namespace vorl::test

#endif
