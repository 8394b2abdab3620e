#ifndef VORL_TOOL_INSPECT_REPORT_H
#define VORL_TOOL_INSPECT_REPORT_H

#include "vorl/bytes.h"

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace vorl::tool {

/// One field of a record, in the order of its bytes.
struct Field {
    std::uint64_t offset;
    std::uint64_t length;
    /// For example "iv.length". Stable: it is what JSON shows.
    std::string name;
    /// Counted from 1 where a block is written in several fragments, else 0.
    unsigned int fragment;
    /// The first bytes of the field, up to MAX_SHOWN_BYTES of them.
    bytes head;
    std::string meaning;
    /// What stands for the bytes where they are secret, and `head` is empty for that reason.
    std::string fingerprint = std::string();
};

const std::size_t MAX_SHOWN_BYTES = 16;

/// Where, and why, the input cannot be what it seems to be.
struct Problem {
    std::uint64_t offset;
    std::string text;
};

struct Range {
    std::uint64_t min;
    std::uint64_t max;
};

/// What follows from the fields together.
struct Fact {
    /// Stable: it is what JSON shows.
    std::string name;
    std::string label;
    std::variant<std::string, std::uint64_t, Range> value;
};

/// What can be told about an input without any key.
struct Report {
    /// For example "envelope"; "unknown" where the input shows too little of itself. Stable.
    std::string kind = "unknown";
    /// What people call it, where that is not its kind.
    std::string title;
    bool isBase64 = false;
    bool isPem = false;
    /// The input as it was given, a newline behind Base64 text included.
    std::uint64_t inputBytes = 0;
    /// The record itself; for PEM text, all of it.
    std::uint64_t recordBytes = 0;
    std::vector<Field> fields;
    std::vector<Fact> facts;
    /// The first thing that is wrong. Its offset counts in the record; in the text, where the text is not
    /// Base64.
    std::optional<Problem> problem;
    /// What the library says against the structure of the record; empty where it says nothing.
    std::string libraryVerdict;
    /// False where the library takes a record that this report holds for malformed, or the other way round:
    /// a fault of the tool.
    bool agreesWithLibrary = true;
    /// What nobody can tell without the key.
    std::vector<std::string> unknown;
};

}  // namespace vorl::tool

#endif
