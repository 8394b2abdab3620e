#include "vorl/Util.h"

#include "blanks.h"
#include "index32.h"
#include "vorl/Env.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace vorl {

namespace {

const char HEX_DIGITS[] = "0123456789abcdef";

void appendHex(std::string& out, unsigned char b) {
    out += HEX_DIGITS[b >> 4];
    out += HEX_DIGITS[b & 0x0f];
}

void appendHex(std::string& out, const unsigned char* p, std::size_t len, const std::string& sep) {
    for (std::size_t i = 0; i < len; ++i) {
        if (i != 0) {
            out += sep;
        }
        appendHex(out, p[i]);
    }
}

// How many bytes fit on a line of a block; at least one, however deep the nesting has become.
std::uint64_t bytesPerLine(std::uint64_t width, std::uint64_t indent, std::uint64_t separatorLength) {
    const std::uint64_t room = width > indent ? width - indent : 0;
    return std::max<std::uint64_t>(room / (separatorLength + 2), 1);
}

}  // namespace

std::string Util::toHexString(unsigned char b) {
    std::string text;
    appendHex(text, b);
    return text;
}

std::string Util::toHexString(unsigned int v) {
    std::string text;
    do {
        text.insert(text.begin(), HEX_DIGITS[v & 0x0f]);
        v >>= 4;
    } while (v != 0);
    return text;
}

std::string Util::toHexString(const unsigned char* p, unsigned int len, std::string sep) {
    std::string text;
    appendHex(text, p, len, sep);
    return text;
}

std::string Util::toHexString(const unsigned char* p, unsigned int len) {
    return toHexString(p, len, " ");
}

std::string Util::toHexString(const bytes& v) {
    return toHexString(v, " ");
}

std::string Util::toHexString(const bytes& v, std::string sep) {
    std::string text;
    appendHex(text, v.data(), v.size(), sep);
    return text;
}

std::string Util::toSpacedHexString(unsigned int v, unsigned int width) {
    const std::string digits = toHexString(v);
    return digits.size() < width ? blanks(width - digits.size()) + digits : digits;
}

std::string Util::toBinaryString(unsigned char b) {
    std::string text;
    for (unsigned int bit = 8; bit-- > 0;) {
        text += (b >> bit & 1) != 0 ? '1' : '0';
    }
    return text;
}

std::string Util::toAlpha(unsigned char c) {
    return std::string(1, c >= 0x20 && c <= 0x7e ? static_cast<char>(c) : '.');
}

bool Util::isPowerOf2(unsigned int x) {
    return x != 0 && (x & (x - 1)) == 0;
}

std::string Util::toFormatString(std::string name, unsigned int /*width*/, unsigned int level,
                                 unsigned int indentSize) {
    return indentOf(level, indentSize) + name + ":\n";
}

std::string Util::toFormatHexString(const unsigned char* p, unsigned int len, const std::string& name,
                                    unsigned int width, unsigned int level, const std::string& separator,
                                    unsigned int indentSize) {
    const std::uint64_t indentLength = std::uint64_t{indentSize} * level;
    std::string text = blanks(indentLength) + name;
    if (len == 0) {
        return text + ":  (NULL)";
    }

    const std::uint64_t separators = len - 1;
    const std::uint64_t hexLength = separators * separator.size() + std::uint64_t{len} * 2;
    if (indentLength + name.size() + 3 + hexLength < width) {
        text += ":  ";
        appendHex(text, p, len, separator);
        return text + "\n";
    }

    text += ":\n";
    const std::string indent = blanks(indentLength + indentSize);
    const std::uint64_t perLine = bytesPerLine(width, indent.size(), separator.size());
    for (std::uint64_t done = 0; done < len; done += perLine) {
        text += indent;
        appendHex(text, p + done, static_cast<std::size_t>(std::min(perLine, len - done)), separator);
        text += '\n';
    }
    return text;
}

std::string Util::toFormatHexString(const unsigned char* p, unsigned int len, const std::string& name,
                                    unsigned int width, unsigned int level) {
    const Env& env = *Env::instance();
    return toFormatHexString(p, len, name, width, level, env.fmtSeparator(), env.fmtIndentSize());
}

std::string Util::toFormatHexString(const unsigned char* p, unsigned int len, const std::string& name) {
    const Env& env = *Env::instance();
    return toFormatHexString(p, len, name, env.fmtWidth(), env.fmtLevel());
}

std::string Util::toFormatHexString(const bytes& v, const std::string& name, unsigned int width,
                                    unsigned int level, const std::string& separator,
                                    unsigned int indentSize) {
    return toFormatHexString(v.data(), index32(v.size(), "Util: bytes to format"), name, width, level,
                             separator, indentSize);
}

std::string Util::toFormatHexString(const bytes& v, const std::string& name, unsigned int width,
                                    unsigned int level) {
    const Env& env = *Env::instance();
    return toFormatHexString(v, name, width, level, env.fmtSeparator(), env.fmtIndentSize());
}

std::string Util::toFormatHexString(const bytes& v, const std::string& name) {
    const Env& env = *Env::instance();
    return toFormatHexString(v, name, env.fmtWidth(), env.fmtLevel());
}

std::string Util::hexAsciiDump(const unsigned char* p, unsigned int len, unsigned int perLine,
                               std::string sep) {
    perLine = std::max(perLine, 1U);
    std::string text;
    for (std::uint64_t offset = 0; offset < len; offset += perLine) {
        const auto count = static_cast<unsigned int>(std::min<std::uint64_t>(perLine, len - offset));
        const std::uint64_t missing = perLine - count;
        text += toSpacedHexString(static_cast<unsigned int>(offset), 6) + ": ";
        appendHex(text, p + offset, count, sep);
        text += blanks(3 * missing) + "    ";
        for (unsigned int i = 0; i < count; ++i) {
            text += toAlpha(p[offset + i]);
        }
        text += blanks(missing) + "\n";
    }
    return text;
}

std::string Util::hexAsciiDump(const unsigned char* p, unsigned int len, unsigned int perLine) {
    return hexAsciiDump(p, len, perLine, " ");
}

std::string Util::hexAsciiDump(const bytes& v, unsigned int perLine, std::string sep) {
    return hexAsciiDump(v.data(), index32(v.size(), "Util: bytes to dump"), perLine, sep);
}

std::string Util::hexAsciiDump(const bytes& v, unsigned int perLine) {
    return hexAsciiDump(v, perLine, Env::instance()->fmtSeparator());
}

}  // namespace vorl
