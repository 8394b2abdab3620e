#include "http/TargetUri.h"

#include <gtest/gtest.h>

#include <string>

namespace vorl::test {

namespace {

using tarvik::http::TargetUri;

struct UriCase {
    const char* name;
    std::string uri;
    std::string scheme;
    std::string authority;
    std::string path;
    std::string query;
};

struct RefusedUriCase {
    const char* name;
    std::string uri;
};

class ReadTargetUri : public ::testing::TestWithParam<UriCase> {};
class RefusedTargetUri : public ::testing::TestWithParam<RefusedUriCase> {};

}  // namespace

TEST_P(ReadTargetUri, HasItsParts) {
    const UriCase& expected = GetParam();
    const auto uri = TargetUri::parse(expected.uri);
    ASSERT_TRUE(uri);
    EXPECT_EQ(uri->scheme, expected.scheme);
    EXPECT_EQ(uri->authority, expected.authority);
    EXPECT_EQ(uri->path, expected.path);
    EXPECT_EQ(uri->query, expected.query);
}

// RFC 9421, sections 2.2.3 to 2.2.7.
INSTANTIATE_TEST_SUITE_P(
    Rfc9421, ReadTargetUri,
    ::testing::Values(UriCase{"Authority", "https://www.example.com/path?param=value", "https",
                              "www.example.com", "/path", "?param=value"},
                      UriCase{"Query", "https://www.example.com/path?param=value&foo=bar&baz=bat%2Dman",
                              "https", "www.example.com", "/path", "?param=value&foo=bar&baz=bat%2Dman"},
                      UriCase{"QueryWithoutValues", "https://www.example.com/path?queryString", "https",
                              "www.example.com", "/path", "?queryString"},
                      UriCase{"NoQuery", "https://www.example.com/path", "https", "www.example.com", "/path",
                              "?"}),
    [](const auto& test) { return std::string(test.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Normalized, ReadTargetUri,
    ::testing::Values(
        UriCase{"Capitals", "HTTP://WWW.Example.COM/Path?Query=A", "http", "www.example.com", "/Path",
                "?Query=A"},
        UriCase{"EmptyPath", "http://example.com", "http", "example.com", "/", "?"},
        UriCase{"EmptyPathBeforeAQuery", "http://example.com?a", "http", "example.com", "/", "?a"},
        UriCase{"EmptyQuery", "http://example.com/?", "http", "example.com", "/", "?"},
        UriCase{"QueryOfAQuestionMark", "http://example.com/a??", "http", "example.com", "/a", "??"},
        UriCase{"SlashInTheQuery", "http://example.com/a?b/c", "http", "example.com", "/a", "?b/c"},
        UriCase{"SlashInTheQueryOfAnEmptyPath", "http://example.com?b/c", "http", "example.com", "/", "?b/c"},
        UriCase{"UriInTheQuery", "http://example.com/?u=http://b:1/", "http", "example.com", "/",
                "?u=http://b:1/"},
        UriCase{"NothingIsDecoded", "http://example.com/%7Ea/%2f/./b//..?%41", "http", "example.com",
                "/%7Ea/%2f/./b//..", "?%41"}),
    [](const auto& test) { return std::string(test.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Ports, ReadTargetUri,
    ::testing::Values(
        UriCase{"OfHttp", "http://example.com:80/", "http", "example.com", "/", "?"},
        UriCase{"OfHttps", "https://example.com:443/", "https", "example.com", "/", "?"},
        UriCase{"OfHttpsOnHttp", "http://example.com:443/", "http", "example.com:443", "/", "?"},
        UriCase{"OfHttpOnHttps", "https://example.com:80/", "https", "example.com:80", "/", "?"},
        UriCase{"Empty", "http://example.com:/", "http", "example.com", "/", "?"},
        UriCase{"Largest", "http://example.com:65535", "http", "example.com:65535", "/", "?"},
        UriCase{"BeforeAQuery", "http://example.com:8080?a", "http", "example.com:8080", "/", "?a"},
        UriCase{"ZerosInFront", "http://example.com:0080/", "http", "example.com", "/", "?"},
        UriCase{"ZerosInFrontOfAnother", "http://example.com:08080/", "http", "example.com:8080", "/", "?"},
        UriCase{"Ipv4", "http://127.0.0.1:8080/a", "http", "127.0.0.1:8080", "/a", "?"},
        UriCase{"Ipv6", "http://[2001:DB8::1]:8080/a", "http", "[2001:db8::1]:8080", "/a", "?"},
        UriCase{"Ipv6WithTheSchemesOwn", "https://[::1]:443", "https", "[::1]", "/", "?"},
        UriCase{"Ipv6WithoutAPort", "http://[::1]/", "http", "[::1]", "/", "?"}),
    [](const auto& test) { return std::string(test.param.name); });

TEST_P(RefusedTargetUri, IsNone) {
    EXPECT_FALSE(TargetUri::parse(GetParam().uri)) << GetParam().uri;
}

INSTANTIATE_TEST_SUITE_P(Form, RefusedTargetUri,
                         ::testing::Values(RefusedUriCase{"Nothing", ""}, RefusedUriCase{"PathOnly", "/path"},
                                           RefusedUriCase{"AuthorityOnly", "example.com:443"},
                                           RefusedUriCase{"Asterisk", "*"},
                                           RefusedUriCase{"NoScheme", "://example.com/"},
                                           RefusedUriCase{"OtherScheme", "ftp://example.com/"},
                                           RefusedUriCase{"LongerScheme", "httpss://example.com/"},
                                           RefusedUriCase{"SchemeBehindText", "a?http://example.com/"},
                                           RefusedUriCase{"OneSlash", "http:/example.com/"},
                                           RefusedUriCase{"NoHost", "http://"},
                                           RefusedUriCase{"NoHostBeforeAPath", "http:///path"},
                                           RefusedUriCase{"NoHostBeforeAPort", "http://:80/"},
                                           RefusedUriCase{"User", "http://user@example.com/"},
                                           RefusedUriCase{"UserWithAPassword", "http://user:80@example.com/"},
                                           RefusedUriCase{"UserBeforeIpv6", "http://user@[::1]/"},
                                           RefusedUriCase{"Ipv6AsAUser", "http://[::1]@example.com/"},
                                           RefusedUriCase{"Fragment", "http://example.com/#a"},
                                           RefusedUriCase{"FragmentOfAHost", "http://example.com#a"}),
                         [](const auto& test) { return std::string(test.param.name); });

INSTANTIATE_TEST_SUITE_P(Ports, RefusedTargetUri,
                         ::testing::Values(RefusedUriCase{"TooLarge", "http://example.com:65536/"},
                                           RefusedUriCase{"FiveNines", "http://example.com:99999/"},
                                           RefusedUriCase{"SixDigits", "http://example.com:000080/"},
                                           RefusedUriCase{"Letters", "http://example.com:http/"},
                                           RefusedUriCase{"Sign", "http://example.com:-1/"},
                                           RefusedUriCase{"Two", "http://example.com:80:80/"},
                                           RefusedUriCase{"LettersBehindIpv6", "http://[::1]:a/"}),
                         [](const auto& test) { return std::string(test.param.name); });

INSTANTIATE_TEST_SUITE_P(Brackets, RefusedTargetUri,
                         ::testing::Values(RefusedUriCase{"NotClosed", "http://[::1/"},
                                           RefusedUriCase{"NotOpened", "http://a]/"},
                                           RefusedUriCase{"Within", "http://a[b]/"},
                                           RefusedUriCase{"TextBehind", "http://[::1]a/"},
                                           RefusedUriCase{"Twice", "http://[::1][::1]/"},
                                           RefusedUriCase{"Empty", "http://[]/"},
                                           RefusedUriCase{"Ipv6WithoutBrackets", "http://::1/"}),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(TargetUri, HasTheCharactersOfUris) {
    const std::string others = "\"<>\\^`{|}#";
    for (int code = 0; code < 256; ++code) {
        const char c = static_cast<char>(code);
        const bool belongs = code > 0x20 && code < 0x7f && others.find(c) == std::string::npos;
        EXPECT_EQ(TargetUri::parse(std::string("http://example.com/") + c).has_value(), belongs) << code;
        EXPECT_EQ(TargetUri::parse(std::string("http://example.com/?") + c).has_value(), belongs) << code;
    }
}

}  // namespace vorl::test
