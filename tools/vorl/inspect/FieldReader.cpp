#include "inspect/FieldReader.h"

#include "inspect/numbers.h"
#include "shared/SecretBytes.h"
#include "vorl/Util.h"

#include <algorithm>
#include <utility>

// A length, by its first byte:
//
//   00 .. 7f          that many octets follow, the last of the block
//   80 .. bf, byte    14 bits: that many octets follow, the last of the block
//   c1 .. c4          1 to 4 times 16384 octets follow, and then another length

namespace vorl::tool {

namespace {

const std::uint64_t FRAGMENT_UNIT = 16384;

}  // namespace

FieldReader::FieldReader(const bytes& record, Report& report)
    : record_(record), report_(report), in_(record) {}

FieldReader::~FieldReader() {
    const SecretBytes wiped(std::move(in_).toByteArray());
}

unsigned char FieldReader::readByte(const std::string& name) {
    const std::uint64_t begin = offset();
    const unsigned char value = in_.get();
    addField(begin, name, 0, "");
    return value;
}

bool FieldReader::readBytes(const std::string& name, unsigned int size) {
    const std::uint64_t begin = offset();
    const unsigned int available = in_.skip(size);
    if (available > 0) {
        addField(begin, name, 0, available == size ? "" : "cut short");
    }
    if (available < size) {
        setProblem(begin, "the " + name + " is cut short: " + bytesText(size) + " needed, " +
                              std::to_string(available) + " there");
    }
    return available == size;
}

std::optional<std::uint64_t> FieldReader::readBlock(const std::string& name, const std::string& meaning) {
    std::uint64_t size = 0;
    bool isFragmented = false;
    for (unsigned int number = 1;; ++number) {
        const std::optional<Fragment> fragment = readLength(name, number, size);
        if (!fragment) {
            return std::nullopt;
        }
        isFragmented = isFragmented || !fragment->last;
        if (!readContent(name, isFragmented ? number : 0, fragment->octets, meaning)) {
            return std::nullopt;
        }
        size += fragment->octets;
        if (fragment->last) {
            return size;
        }
    }
}

void FieldReader::readRest(const std::string& name, const std::string& meaning) {
    if (!atEnd()) {
        const std::uint64_t begin = offset();
        in_.skip(in_.widx());
        addField(begin, name, 0, meaning);
    }
}

void FieldReader::setMeaning(const std::string& meaning) {
    report_.fields.back().meaning = meaning;
}

void FieldReader::setProblem(std::uint64_t offset, const std::string& text) {
    if (!report_.problem) {
        report_.problem = Problem{offset, text};
    }
}

// `before` octets of the block have been read.
std::optional<FieldReader::Fragment> FieldReader::readLength(const std::string& name, unsigned int number,
                                                             std::uint64_t before) {
    const std::uint64_t begin = offset();
    if (atEnd()) {
        setProblem(begin, before == 0 ? "the input ends where the length of the " + name + " is expected"
                                      : "the " + name + " is not closed: a length must follow its " +
                                            bytesText(before) + ", an exact multiple of 16384");
        return std::nullopt;
    }
    const unsigned char head = in_.get();
    const unsigned int low = head & 0x3fU;
    if (head < 0x80) {
        return addLength(begin, name, number, {head, true}, "");
    }
    if (head < 0xc0 && !atEnd()) {
        const std::uint64_t octets = low << 8 | in_.get();
        return addLength(begin, name, number, {octets, true},
                         octets < 0x80 ? ", written longer than needed" : "");
    }
    if (low >= 1 && low <= 4 && head >= 0xc0) {
        return addLength(begin, name, number, {low * FRAGMENT_UNIT, false}, ", more follow");
    }
    addField(begin, name + ".length", number > 1 ? number : 0, "no length");
    setProblem(begin, head < 0xc0 ? "the length of the " + name + " has two bytes, and the second is missing"
                                  : "0x" + Util::toHexString(head) + " is no length");
    return std::nullopt;
}

FieldReader::Fragment FieldReader::addLength(std::uint64_t begin, const std::string& name,
                                             unsigned int number, const Fragment& fragment,
                                             const std::string& remark) {
    const bool isFragmented = number > 1 || !fragment.last;
    addField(begin, name + ".length", isFragmented ? number : 0, bytesText(fragment.octets) + remark);
    return fragment;
}

bool FieldReader::readContent(const std::string& name, unsigned int number, std::uint64_t octets,
                              const std::string& meaning) {
    const std::uint64_t begin = offset();
    const unsigned int available = in_.skip(static_cast<unsigned int>(octets));
    const bool isWhole = available == octets;
    if (available > 0) {
        addField(begin, name, number, isWhole ? meaning : meaning + ", cut short");
    }
    if (!isWhole) {
        setProblem(begin, "the " + name + " is cut short: " + bytesText(octets) + " announced, " +
                              std::to_string(available) + " there");
    }
    return isWhole;
}

void FieldReader::addField(std::uint64_t begin, const std::string& name, unsigned int fragment,
                           const std::string& meaning) {
    const std::uint64_t length = offset() - begin;
    const auto first = record_.begin() + static_cast<std::ptrdiff_t>(begin);
    const auto shown = static_cast<std::ptrdiff_t>(std::min<std::uint64_t>(length, MAX_SHOWN_BYTES));
    report_.fields.push_back({begin, length, name, fragment, bytes(first, first + shown), meaning, ""});
}

}  // namespace vorl::tool
