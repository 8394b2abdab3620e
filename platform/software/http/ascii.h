#ifndef TARVIK_SOFTWARE_ASCII_H
#define TARVIK_SOFTWARE_ASCII_H

#include <algorithm>
#include <string>

namespace tarvik::http {

/// Without the locale, which may know more letters than HTTP does.
inline char lowerCase(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

inline std::string lowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](char c) { return lowerCase(c); });
    return text;
}

}  // namespace tarvik::http

#endif
