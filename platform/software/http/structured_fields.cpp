#include "http/structured_fields.h"

#include "brisclient/Base64.h"

#include <algorithm>
#include <cstddef>
#include <set>

// The grammar, as far as it is read:
//
//   dictionary   member *( OWS "," OWS member )
//   member       key [ "=" ( item / inner-list ) / parameters ]      a key alone is true
//   inner-list   "(" *SP item *( 1*SP item ) *SP ")" parameters
//   item         ( integer / string / token / octets / boolean ) parameters
//   parameters   *( ";" *SP key [ "=" bare-item ] )
//
// Each read...() leaves the position behind what it has read, and gives nothing where the text is none of it.
// Values are made where they stay: GCC 12 with sanitizers takes a variant that is moved for uninitialised.

namespace tarvik::http::structured {

namespace {

const int MAX_DIGITS = 15;
const char QUOTE = '"';
const char ESCAPE = '\\';

// Those that were read so far. Strangers send fields with thousands of them, among which none is searched for
// one by one.
using Keys = std::set<std::string>;

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

bool isLower(char c) {
    return c >= 'a' && c <= 'z';
}

bool isLetter(char c) {
    return isLower(c) || (c >= 'A' && c <= 'Z');
}

bool isOneOf(char c, const char* characters) {
    return c != '\0' && std::string(characters).find(c) != std::string::npos;
}

bool isVisibleOrSpace(char c) {
    return c >= ' ' && c <= '~';
}

bool startsKey(char c) {
    return isLower(c) || c == '*';
}

bool continuesKey(char c) {
    return isLower(c) || isDigit(c) || isOneOf(c, "_-.*");
}

bool continuesToken(char c) {
    return isLetter(c) || isDigit(c) || isOneOf(c, "!#$%&'*+-.^_`|~:/");
}

class Reader {
public:
    explicit Reader(const std::string& text) : text_(text) {}

    bool atEnd() const { return at_ == text_.size(); }
    // NUL behind the end; a NUL within belongs to no rule.
    char next() const { return atEnd() ? '\0' : text_[at_]; }

    bool skip(char c) {
        if (atEnd() || text_[at_] != c) {
            return false;
        }
        ++at_;
        return true;
    }

    void skipAll(const char* characters) {
        while (!atEnd() && isOneOf(text_[at_], characters)) {
            ++at_;
        }
    }

    template <typename Predicate>
    std::string readWhile(Predicate belongs) {
        const std::size_t start = at_;
        while (!atEnd() && belongs(text_[at_])) {
            ++at_;
        }
        return text_.substr(start, at_ - start);
    }

    std::optional<std::string> readKey() {
        if (!startsKey(next())) {
            return std::nullopt;
        }
        return readWhile(continuesKey);
    }

    std::optional<BareItem> readBareItem();
    bool readParameters(Parameters& parameters);
    std::optional<Item> readItem();
    std::optional<InnerList> readInnerList();
    std::optional<Member> readMember();

private:
    std::optional<BareItem> readInteger();
    std::optional<BareItem> readString();
    std::optional<BareItem> readOctets();
    std::optional<BareItem> readBoolean();

    const std::string& text_;
    std::size_t at_ = 0;
};

std::optional<BareItem> Reader::readInteger() {
    const bool isNegative = skip('-');
    const std::string digits = readWhile(isDigit);
    if (digits.empty() || digits.size() > MAX_DIGITS || next() == '.') {
        return std::nullopt;
    }
    std::int64_t value = 0;
    for (const char digit : digits) {
        value = value * 10 + (digit - '0');
    }
    return std::make_optional<BareItem>(isNegative ? -value : value);
}

std::optional<BareItem> Reader::readString() {
    skip(QUOTE);
    std::string value;
    while (!skip(QUOTE)) {
        const bool isEscaped = skip(ESCAPE);
        const char c = next();
        if (!isVisibleOrSpace(c) || (isEscaped && c != QUOTE && c != ESCAPE)) {
            return std::nullopt;
        }
        skip(c);
        value += c;
    }
    return std::make_optional<BareItem>(std::move(value));
}

std::optional<BareItem> Reader::readOctets() {
    skip(':');
    const std::string text = readWhile([](char c) { return c != ':'; });
    if (!skip(':')) {
        return std::nullopt;
    }
    Octets value = Tarvik::BrisClient::Base64::decode(Octets(text.begin(), text.end()));
    // The codec answers with nothing for what is not Base64.
    if (value.empty() && !text.empty()) {
        return std::nullopt;
    }
    return std::make_optional<BareItem>(std::move(value));
}

std::optional<BareItem> Reader::readBoolean() {
    skip('?');
    if (skip('1')) {
        return std::make_optional<BareItem>(true);
    }
    if (skip('0')) {
        return std::make_optional<BareItem>(false);
    }
    return std::nullopt;
}

std::optional<BareItem> Reader::readBareItem() {
    const char first = next();
    if (first == '-' || isDigit(first)) {
        return readInteger();
    }
    if (first == QUOTE) {
        return readString();
    }
    if (first == ':') {
        return readOctets();
    }
    if (first == '?') {
        return readBoolean();
    }
    if (isLetter(first) || first == '*') {
        return std::make_optional<BareItem>(Token{readWhile(continuesToken)});
    }
    return std::nullopt;
}

bool Reader::readParameters(Parameters& parameters) {
    Keys keys;
    while (skip(';')) {
        skipAll(" ");
        std::optional<std::string> key = readKey();
        if (!key || !keys.insert(*key).second) {
            return false;
        }
        std::optional<BareItem> value(true);
        if (skip('=')) {
            value = readBareItem();
        }
        if (!value) {
            return false;
        }
        parameters.emplace_back(std::move(*key), std::move(*value));
    }
    return true;
}

std::optional<Item> Reader::readItem() {
    std::optional<BareItem> value = readBareItem();
    if (!value) {
        return std::nullopt;
    }
    Item item{std::move(*value), {}};
    if (!readParameters(item.parameters)) {
        return std::nullopt;
    }
    return item;
}

std::optional<InnerList> Reader::readInnerList() {
    skip('(');
    InnerList list;
    for (skipAll(" "); !skip(')'); skipAll(" ")) {
        std::optional<Item> item = readItem();
        if (!item || (next() != ' ' && next() != ')')) {
            return std::nullopt;
        }
        list.items.push_back(std::move(*item));
    }
    if (!readParameters(list.parameters)) {
        return std::nullopt;
    }
    return list;
}

std::optional<Member> Reader::readMember() {
    if (!skip('=')) {
        Item item{true, {}};
        return readParameters(item.parameters) ? std::optional<Member>(std::move(item)) : std::nullopt;
    }
    if (next() == '(') {
        std::optional<InnerList> list = readInnerList();
        return list ? std::optional<Member>(std::move(*list)) : std::nullopt;
    }
    std::optional<Item> item = readItem();
    return item ? std::optional<Member>(std::move(*item)) : std::nullopt;
}

std::string quoted(const std::string& text) {
    std::string result(1, QUOTE);
    for (const char c : text) {
        if (c == QUOTE || c == ESCAPE) {
            result += ESCAPE;
        }
        result += c;
    }
    return result + QUOTE;
}

struct Writer {
    std::string operator()(bool value) const { return value ? "?1" : "?0"; }
    std::string operator()(std::int64_t value) const { return std::to_string(value); }
    std::string operator()(const std::string& value) const { return quoted(value); }
    std::string operator()(const Token& value) const { return value.text; }
    std::string operator()(const Octets& value) const { return serialize(value); }
};

std::string serialize(const Parameters& parameters) {
    std::string text;
    for (const auto& [key, value] : parameters) {
        text += ";" + key;
        const bool* flag = std::get_if<bool>(&value);
        if (flag == nullptr || !*flag) {
            text += "=" + std::visit(Writer(), value);
        }
    }
    return text;
}

template <typename Pairs>
auto findIn(const Pairs& pairs, const std::string& key) -> decltype(&pairs.begin()->second) {
    const auto found =
        std::find_if(pairs.begin(), pairs.end(), [&](const auto& pair) { return pair.first == key; });
    return found == pairs.end() ? nullptr : &found->second;
}

}  // namespace

std::optional<Dictionary> parseDictionary(const std::string& text) {
    Reader in(text);
    Dictionary dictionary;
    Keys keys;
    in.skipAll(" ");
    while (!in.atEnd()) {
        std::optional<std::string> key = in.readKey();
        if (!key || !keys.insert(*key).second) {
            return std::nullopt;
        }
        std::optional<Member> member = in.readMember();
        if (!member) {
            return std::nullopt;
        }
        dictionary.emplace_back(std::move(*key), std::move(*member));
        in.skipAll(" \t");
        if (in.atEnd()) {
            break;
        }
        // A comma is followed by a member.
        if (!in.skip(',')) {
            return std::nullopt;
        }
        in.skipAll(" \t");
        if (in.atEnd()) {
            return std::nullopt;
        }
    }
    return dictionary;
}

std::string serialize(const Item& item) {
    return std::visit(Writer(), item.value) + serialize(item.parameters);
}

std::string serialize(const InnerList& list) {
    std::string text = "(";
    for (const Item& item : list.items) {
        text += (text.size() > 1 ? " " : "") + serialize(item);
    }
    return text + ")" + serialize(list.parameters);
}

std::string serialize(const Octets& octets) {
    const Octets text = Tarvik::BrisClient::Base64::encode(octets);
    return ":" + std::string(text.begin(), text.end()) + ":";
}

bool isString(const std::string& text) {
    return std::all_of(text.begin(), text.end(), isVisibleOrSpace);
}

bool isKey(const std::string& text) {
    return !text.empty() && startsKey(text.front()) && std::all_of(text.begin(), text.end(), continuesKey);
}

const Member* find(const Dictionary& dictionary, const std::string& key) {
    return findIn(dictionary, key);
}

const BareItem* find(const Parameters& parameters, const std::string& key) {
    return findIn(parameters, key);
}

}  // namespace tarvik::http::structured
