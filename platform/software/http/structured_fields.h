#ifndef TARVIK_SOFTWARE_STRUCTURED_FIELDS_H
#define TARVIK_SOFTWARE_STRUCTURED_FIELDS_H

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

/// Structured Field Values for HTTP (RFC 8941), as far as signatures and digests of messages use them:
/// dictionaries of items and inner lists, with parameters. Decimals are not read, and a key that stands twice
/// is refused, where the RFC lets the last one win: of two signatures under one label, none is to be
/// believed.
namespace tarvik::http::structured {

struct Token {
    std::string text;
};
using Octets = std::vector<unsigned char>;
using BareItem = std::variant<bool, std::int64_t, std::string, Token, Octets>;
using Parameters = std::vector<std::pair<std::string, BareItem>>;

struct Item {
    BareItem value;
    Parameters parameters;
};

struct InnerList {
    std::vector<Item> items;
    Parameters parameters;
};

using Member = std::variant<Item, InnerList>;
using Dictionary = std::vector<std::pair<std::string, Member>>;

/// Nothing for a text that is not a dictionary.
std::optional<Dictionary> parseDictionary(const std::string& text);

/// As RFC 8941, section 4.1, writes them. The values must be ones that can be written: see isString() and
/// isKey().
std::string serialize(const Item& item);
std::string serialize(const InnerList& list);
std::string serialize(const Octets& octets);

/// Whether a String can carry the text: visible ASCII characters and spaces.
bool isString(const std::string& text);
/// Whether it can name a member or a parameter.
bool isKey(const std::string& text);

/// The member of that name; null where there is none.
const Member* find(const Dictionary& dictionary, const std::string& key);
const BareItem* find(const Parameters& parameters, const std::string& key);

}  // namespace tarvik::http::structured

#endif
