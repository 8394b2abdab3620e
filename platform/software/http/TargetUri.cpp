#include "http/TargetUri.h"

#include "http/ascii.h"

#include <algorithm>
#include <cstddef>

namespace tarvik::http {

namespace {

const std::size_t NONE = std::string::npos;
const std::size_t MAX_PORT_DIGITS = 5;
const unsigned long MAX_PORT = 65535;

bool belongsInUri(char c) {
    return c > ' ' && c <= '~' && std::string("\"<>\\^`{|}#").find(c) == NONE;
}

// Brackets stand around an IPv6 address and nowhere else.
bool isHost(const std::string& host) {
    if (host.empty() || host.find('@') != NONE) {
        return false;
    }
    if (host.front() != '[') {
        return host.find_first_of("[]") == NONE;
    }
    return host.size() > 2 && host.find(']') == host.size() - 1 && host.rfind('[') == 0;
}

// The host in lower case, and the port unless it is the scheme's own. Nothing where either is wrong.
std::optional<std::string> normalized(const std::string& authority, const std::string& scheme) {
    // Colons within brackets belong to an IPv6 address.
    const std::size_t bracket = authority.rfind(']');
    const std::size_t colon = authority.find(':', bracket == NONE ? 0 : bracket);
    const std::string host = lowerCase(authority.substr(0, colon));
    if (!isHost(host)) {
        return std::nullopt;
    }
    const std::string port = colon == NONE ? "" : authority.substr(colon + 1);
    if (port.size() > MAX_PORT_DIGITS || port.find_first_not_of("0123456789") != NONE) {
        return std::nullopt;
    }
    const unsigned long ownPort = scheme == "https" ? 443 : 80;
    const unsigned long number = port.empty() ? ownPort : std::stoul(port);
    if (number > MAX_PORT) {
        return std::nullopt;
    }
    return number == ownPort ? host : host + ":" + std::to_string(number);
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
