#ifndef TARVIK_SOFTWARE_TARGETURI_H
#define TARVIK_SOFTWARE_TARGETURI_H

#include <optional>
#include <string>

namespace tarvik::http {

/// The parts of an absolute "http" or "https" URI (RFC 9110, section 4.2), as signatures name them (RFC 9421,
/// section 2.2): scheme and host in lower case, no port that is the scheme's own, "/" for an empty path.
/// Nothing is decoded.
struct TargetUri {
    /// Nothing for another scheme, an empty host, a user, a fragment, a port that is none, and characters
    /// that no URI has.
    static std::optional<TargetUri> parse(const std::string& text);

    std::string scheme;
    std::string authority;
    std::string path;
    /// With its question mark, which stands for an empty query too.
    std::string query;
};

}  // namespace tarvik::http

#endif
