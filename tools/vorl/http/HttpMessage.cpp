#include "http/HttpMessage.h"

#include "inspect/base64_text.h"
#include "inspect/numbers.h"
#include "vorl/Util.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <string_view>

namespace vorl::tool {

namespace {

const std::size_t MOST_LINE_BYTES = 16384;
const std::size_t MOST_FIELDS = 256;
const char VERSION[] = "HTTP/1.1";
const char BLANKS[] = " \t";

bool isLetterOrDigit(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

bool isOneOf(char c, std::string_view set) {
    return set.find(c) != std::string_view::npos;
}

bool isToken(const std::string& text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
        return isLetterOrDigit(c) || isOneOf(c, "!#$%&'*+-.^_`|~");
    });
}

// RFC 3986, section 3.2: a host that is none would become a part of the path.
bool isAuthority(const std::string& text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
        return isLetterOrDigit(c) || isOneOf(c, "-._~%!$&'()*+,;=:[]");
    });
}

bool isUriText(const std::string& text) {
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return c > ' ' && c <= '~' && !isOneOf(c, "\"<>\\^`{|}#"); });
}

std::string lowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return text;
}

bool beginsWith(const std::string& text, std::string_view beginning) {
    return text.compare(0, beginning.size(), beginning) == 0;
}

std::string trimmed(const std::string& text) {
    const std::size_t first = text.find_first_not_of(BLANKS);
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(BLANKS) - first + 1);
}

// Takes the head of a text apart, line by line.
class HeadReader {
public:
    explicit HeadReader(const bytes& text) : text_(text) {}

    // The next line, without its end.
    std::string next() {
        ++number_;
        const auto begin = text_.begin() + static_cast<std::ptrdiff_t>(end_);
        const auto end = std::find(begin, text_.end(), '\n');
        if (end - begin > static_cast<std::ptrdiff_t>(MOST_LINE_BYTES)) {
            refuse("the line has more than " + std::to_string(MOST_LINE_BYTES) + " bytes");
        }
        if (end == text_.end()) {
            refuse("the text ends before the empty line that ends the head");
        }
        std::string line(begin, end);
        begin_ = end_;
        end_ += line.size() + 1;
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        refuseControls(line);
        return line;
    }

    [[noreturn]] void refuse(const std::string& problem) const { throw MalformedHttp(number_, problem); }

    HttpMessage::Line place() const { return {begin_, end_}; }
    std::size_t number() const { return number_; }

private:
    // A carriage return that ends no line is one of them.
    void refuseControls(const std::string& line) const {
        for (const char c : line) {
            const auto code = static_cast<unsigned char>(c);
            if ((code < 0x20 && c != '\t') || code == 0x7f) {
                refuse("a control character: 0x" + Util::toHexString(code));
            }
        }
    }

    const bytes& text_;
    std::size_t number_ = 0;
    std::size_t begin_ = 0;
    std::size_t end_ = 0;
};

class MessageReader {
public:
    MessageReader(const bytes& text, const std::string& scheme)
        : text_(text), scheme_(scheme), lines_(text) {}

    HttpMessage read() {
        readStartLine();
        readFields();
        if (!message_.isResponse()) {
            completeTarget();
        }
        readBody();
        return std::move(message_);
    }

private:
    void readStartLine() {
        const std::string line = lines_.next();
        const HttpMessage::Line place = lines_.place();
        message_.lineEnd = place.end - place.begin == line.size() + 2 ? "\r\n" : "\n";
        if (line.empty()) {
            lines_.refuse("a request line or a status line is expected");
        }
        if (beginsWith(line, "HTTP/")) {
            readStatusLine(line);
        } else {
            readRequestLine(line);
        }
    }

    void readStatusLine(const std::string& line) {
        const std::size_t blank = std::min(line.find(' '), line.size());
        checkVersion(line.substr(0, blank));
        const std::string code = line.substr(blank, 5);
        const bool isThreeDigits =
            code.size() >= 4 &&
            std::all_of(code.begin() + 1, code.begin() + 4, [](char c) { return c >= '0' && c <= '9'; });
        if (!isThreeDigits || code[1] < '1' || code[1] > '5' || (code.size() > 4 && code[4] != ' ')) {
            lines_.refuse("a status of three digits, 100 to 599, is expected behind the version");
        }
        message_.status = static_cast<unsigned int>(std::stoul(code));
    }

    void readRequestLine(const std::string& line) {
        const std::size_t first = line.find(' ');
        const std::size_t last = line.rfind(' ');
        if (first == std::string::npos || first == last) {
            lines_.refuse("neither a request line (method, target, version) nor a status line");
        }
        message_.method = line.substr(0, first);
        message_.targetUri = line.substr(first + 1, last - first - 1);
        if (!isToken(message_.method)) {
            lines_.refuse("the method is no word");
        }
        checkVersion(line.substr(last + 1));
        if (!isUriText(message_.targetUri)) {
            lines_.refuse("the target has a character that no URI has");
        }
    }

    void checkVersion(const std::string& version) const {
        if (version != VERSION) {
            lines_.refuse(std::string("the version has to be ") + VERSION);
        }
    }

    void readFields() {
        for (std::string line = lines_.next(); !line.empty(); line = lines_.next()) {
            readField(line);
        }
        message_.fieldsEnd = lines_.place().begin;
    }

    void readField(const std::string& line) {
        if (message_.fields.size() == MOST_FIELDS) {
            lines_.refuse("there are more than " + std::to_string(MOST_FIELDS) + " fields");
        }
        if (isOneOf(line.front(), BLANKS)) {
            lines_.refuse("the line is folded: it begins with a blank");
        }
        const std::size_t colon = line.find(':');
        if (colon == std::string::npos) {
            lines_.refuse("a field (name, colon, value) or an empty line is expected");
        }
        const std::string name = line.substr(0, colon);
        if (!isToken(name)) {
            lines_.refuse("the name of the field is no word");
        }
        message_.fields.emplace_back(name, trimmed(line.substr(colon + 1)));
        message_.fieldLines.push_back(lines_.place());
        noteField(lowerCase(name));
    }

    // The fields that say how the message is to be read.
    void noteField(const std::string& name) {
        if (name == "host" && !message_.isResponse()) {
            takeOnce(hostLine_, "Host");
            host_ = message_.fields.back().second;
            if (!isAuthority(host_)) {
                lines_.refuse("the value of Host is no host");
            }
        } else if (name == "content-length") {
            takeOnce(lengthLine_, "Content-Length");
            bodyBytes_ = numberFrom(message_.fields.back().second);
        } else if (name == "transfer-encoding") {
            lines_.refuse("a message with Transfer-Encoding is not read: give the body as it is, without it");
        }
    }

    void takeOnce(std::size_t& lineNumber, const std::string& name) const {
        if (lineNumber != 0) {
            lines_.refuse("a second " + name + ", after the one of line " + std::to_string(lineNumber));
        }
        lineNumber = lines_.number();
    }

    std::uint64_t numberFrom(const std::string& digits) const {
        std::uint64_t number = 0;
        const char* const end = digits.data() + digits.size();
        const auto [rest, error] = std::from_chars(digits.data(), end, number);
        if (error != std::errc() || rest != end) {
            lines_.refuse("the value of Content-Length is no number of bytes");
        }
        return number;
    }

    // Signatures are about absolute URIs.
    void completeTarget() {
        const std::string beginning = lowerCase(message_.targetUri.substr(0, 8));
        if (beginsWith(beginning, "http://") || beginning == "https://") {
            return;
        }
        if (!beginsWith(beginning, "/")) {
            throw MalformedHttp(1,
                                "the target is neither a path, which begins with '/', nor an absolute URI");
        }
        if (hostLine_ == 0) {
            throw MalformedHttp(1,
                                "the target is a path, and there is no Host field that says of which host");
        }
        message_.targetUri.insert(0, scheme_ + "://" + host_);
    }

    void readBody() {
        const auto begin = text_.begin() + static_cast<std::ptrdiff_t>(lines_.place().end);
        message_.body.assign(begin, text_.end());
        if (lengthLine_ == 0) {
            return;
        }
        const std::size_t given = message_.body.size();
        // Editors end a text with a newline.
        if (given != bodyBytes_) {
            message_.body.resize(sizeWithoutNewline(message_.body));
        }
        if (message_.body.size() != bodyBytes_) {
            throw MalformedHttp(lengthLine_, "Content-Length is " + std::to_string(bodyBytes_) +
                                                 ", and the body has " + bytesText(given));
        }
    }

    const bytes& text_;
    const std::string& scheme_;
    HeadReader lines_;
    HttpMessage message_;
    std::string host_;
    // 0 where there is none.
    std::size_t hostLine_ = 0;
    std::size_t lengthLine_ = 0;
    std::uint64_t bodyBytes_ = 0;
};

void append(bytes& text, const std::string& more) {
    text.insert(text.end(), more.begin(), more.end());
}

}  // namespace

HttpMessage parseHttpMessage(const bytes& text, const std::string& scheme) {
    return MessageReader(text, scheme).read();
}

bytes textWithFields(const bytes& text, const HttpMessage& message, const HttpMessage::Fields& fields) {
    const auto at = [&text](std::size_t offset) {
        return text.begin() + static_cast<std::ptrdiff_t>(offset);
    };
    const std::size_t fieldsBegin =
        message.fieldLines.empty() ? message.fieldsEnd : message.fieldLines.front().begin;
    bytes result(text.begin(), at(fieldsBegin));
    auto field = fields.begin();
    for (std::size_t i = 0; i < message.fields.size() && field != fields.end(); ++i) {
        if (*field == message.fields[i]) {
            result.insert(result.end(), at(message.fieldLines[i].begin), at(message.fieldLines[i].end));
            ++field;
        }
    }
    for (; field != fields.end(); ++field) {
        append(result, field->first + ": " + field->second + message.lineEnd);
    }
    result.insert(result.end(), at(message.fieldsEnd), text.end());
    return result;
}

}  // namespace vorl::tool
