#include "http/TargetUri.h"

#include "http/ascii.h"

#include <algorithm>
#include <cstddef>

namespace tarvik::http {

namespace {

const std::size_t NONE = std::string::npos;
const std::size_t MAX_PORT_DIGITS = 5;

bool belongsInUri(char c) {
    return c > ' ' && c <= '~' && std::string("\"<>\\^`{|}#").find(c) == NONE;
}

// The host in lower case, and the port unless it is the scheme's own. Nothing where either is wrong.
std::optional<std::string> normalized(const std::string& authority, const std::string& scheme) {
    // Colons within brackets belong to an IPv6 address.
    const std::size_t bracket = authority.rfind(']');
    const std::size_t colon = authority.find(':', bracket == NONE ? 0 : bracket);
    const std::string host = lowerCase(authority.substr(0, colon));
    if (host.empty() || host.find('@') != NONE) {
        return std::nullopt;
    }
    const std::string port = colon == NONE ? "" : authority.substr(colon + 1);
    if (port.size() > MAX_PORT_DIGITS || port.find_first_not_of("0123456789") != NONE) {
        return std::nullopt;
    }
    if (port.empty() || port == (scheme == "https" ? "443" : "80")) {
        return host;
    }
    return host + ":" + port;
}

}  // namespace

std::optional<TargetUri> TargetUri::parse(const std::string& text) {
    const std::size_t colon = text.find("://");
    if (colon == NONE || !std::all_of(text.begin(), text.end(), belongsInUri)) {
        return std::nullopt;
    }
    TargetUri uri;
    uri.scheme = lowerCase(text.substr(0, colon));
    if (uri.scheme != "http" && uri.scheme != "https") {
        return std::nullopt;
    }
    const std::size_t start = colon + 3;
    const std::size_t end = std::min(text.find_first_of("/?", start), text.size());
    const std::optional<std::string> authority = normalized(text.substr(start, end - start), uri.scheme);
    if (!authority) {
        return std::nullopt;
    }
    uri.authority = *authority;
    const std::size_t question = std::min(text.find('?', end), text.size());
    uri.path = question == end ? "/" : text.substr(end, question - end);
    uri.query = question == text.size() ? "?" : text.substr(question);
    return uri;
}

}  // namespace tarvik::http
