#include "shared/key_formats.h"

#include "inspect/base64_text.h"
#include "inspect/numbers.h"
#include "shared/ToolError.h"

#include <algorithm>
#include <vector>

namespace vorl::tool {

namespace {

const char ANOTHER_FORMAT[] = "--key-format raw|hex|base64 says how to read it";

// One way to read a key file.
struct Reading {
    std::string format;
    SecretBytes key;
};

bool isHexDigit(unsigned char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

unsigned int digitValue(unsigned char hexDigit) {
    // The letters stand apart from the digits, and their two cases differ in a bit above the value.
    return hexDigit <= '9' ? hexDigit - '0' : (hexDigit & 0x0fU) + 9;
}

// Empty for what is not hex.
SecretBytes decodeHex(const bytes& text) {
    const std::size_t size = sizeWithoutNewline(text);
    const auto end = text.begin() + static_cast<std::ptrdiff_t>(size);
    if (size % 2 != 0 || !std::all_of(text.begin(), end, isHexDigit)) {
        return SecretBytes();
    }
    bytes decoded(size / 2);
    for (std::size_t i = 0; i < decoded.size(); ++i) {
        decoded[i] = static_cast<unsigned char>(digitValue(text[2 * i]) << 4 | digitValue(text[2 * i + 1]));
    }
    return SecretBytes(std::move(decoded));
}

// The most telling one first: what is hex is seldom meant as anything else, and raw is everything.
std::vector<Reading> readingsOf(const SecretBytes& content) {
    std::vector<Reading> readings;
    readings.push_back({"hex", decodeHex(content.get())});
    readings.push_back({"base64", SecretBytes(decodeBase64Text(content.get()).data)});
    readings.push_back({"raw", SecretBytes(content.get())});
    readings.erase(std::remove_if(readings.begin(), readings.end(),
                                  [](const Reading& reading) { return reading.key.size() == 0; }),
                   readings.end());
    return readings;
}

[[noreturn]] void refuseSize(const std::string& source, const std::string& format, std::size_t size,
                             std::size_t neededBytes) {
    throw ToolError(
        ExitStatus::BAD_INPUT,
        source + ": the key has " + bytesText(size) + ", " + std::to_string(neededBytes) + " are needed",
        format == "raw" ? "" : "it was read as " + format + "; " + ANOTHER_FORMAT);
}

[[noreturn]] void refuseAmbiguity(const std::string& source, const std::vector<Reading>& readings) {
    std::string forms;
    for (const Reading& reading : readings) {
        forms +=
            (forms.empty() ? "" : " or as ") + reading.format + " (" + bytesText(reading.key.size()) + ")";
    }
    throw ToolError(ExitStatus::USAGE, source + ": the key can be read as " + forms, ANOTHER_FORMAT);
}

// A password and the newline that the editor put behind it, where no more than the size is right for a key.
bool isLineOfText(const bytes& content) {
    const std::size_t size = sizeWithoutNewline(content);
    return size < content.size() &&
           std::all_of(content.begin(), content.begin() + static_cast<std::ptrdiff_t>(size),
                       [](unsigned char c) { return c >= 0x20 && c < 0x7f; });
}

[[noreturn]] void refuseLine(const std::string& source, const bytes& line) {
    throw ToolError(ExitStatus::USAGE,
                    source + ": the key can be read as raw (" + bytesText(line.size()) +
                        "), but looks like a text of " + std::to_string(sizeWithoutNewline(line)) +
                        " characters and a newline",
                    "--key-format raw takes it as it is, with the newline");
}

// Which of the readings is meant, where the user has not said it.
Reading& meantOf(std::vector<Reading>& readings, std::size_t neededBytes, const std::string& source) {
    const auto fits = [neededBytes](const Reading& reading) { return reading.key.size() == neededBytes; };
    const auto fitting = std::count_if(readings.begin(), readings.end(), fits);
    if (fitting == 0) {
        return readings.front();
    }
    const auto meant = std::find_if(readings.begin(), readings.end(), fits);
    // Anything of the right length fits as raw. Digits of a text that stands for fewer bytes are no key of
    // random bytes, as likely as not, so that a text is not taken for one unasked.
    if (fitting > 1 || (meant->format == "raw" && readings.size() > 1)) {
        refuseAmbiguity(source, readings);
    }
    if (meant->format == "raw" && isLineOfText(meant->key.get())) {
        refuseLine(source, meant->key.get());
    }
    return *meant;
}

Reading& namedOf(std::vector<Reading>& readings, const std::string& format, const std::string& source) {
    const auto named = std::find_if(readings.begin(), readings.end(),
                                    [&format](const Reading& each) { return each.format == format; });
    if (named == readings.end()) {
        throw ToolError(ExitStatus::BAD_INPUT, source + ": the key is not " + format, ANOTHER_FORMAT);
    }
    return *named;
}

}  // namespace

SecretBytes keyOfAnySizeFrom(const SecretBytes& content, const std::string& format,
                             const std::string& source) {
    if (sizeWithoutNewline(content.get()) == 0) {
        throw ToolError(ExitStatus::BAD_INPUT, source + ": the key is empty");
    }
    std::vector<Reading> readings = readingsOf(content);
    if (!format.empty()) {
        return std::move(namedOf(readings, format, source).key);
    }
    if (readings.size() > 1) {
        refuseAmbiguity(source, readings);
    }
    if (isLineOfText(content.get())) {
        refuseLine(source, content.get());
    }
    return std::move(readings.front().key);
}

bool isTextOfKey(const SecretBytes& content) {
    return readingsOf(content).size() > 1 || isLineOfText(content.get());
}

SecretBytes keyFrom(const SecretBytes& content, const std::string& format, std::size_t neededBytes,
                    const std::string& source) {
    if (sizeWithoutNewline(content.get()) == 0) {
        refuseSize(source, "raw", content.size(), neededBytes);
    }
    std::vector<Reading> readings = readingsOf(content);
    Reading& reading =
        format.empty() ? meantOf(readings, neededBytes, source) : namedOf(readings, format, source);
    if (reading.key.size() != neededBytes) {
        refuseSize(source, reading.format, reading.key.size(), neededBytes);
    }
    return std::move(reading.key);
}

}  // namespace vorl::tool
