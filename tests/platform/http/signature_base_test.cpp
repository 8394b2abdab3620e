#include "http/signature_base.h"

#include "messageOf.h"
#include "vorl/VORLException.h"

#include <tarvik/http/HttpResponse.h>

#include <gtest/gtest.h>

#include <string>

namespace vorl::test {

namespace {

namespace structured = tarvik::http::structured;
using structured::InnerList;
using structured::Item;
using tarvik::http::fieldValue;
using tarvik::http::HttpResponse;
using tarvik::http::isNamed;
using tarvik::http::parseComponent;
using tarvik::http::signatureBase;
using tarvik::http::SignedMessage;
using BaseRequest = tarvik::http::IHttpStream::Request;

Item componentOf(const std::string& name) {
    return Item{name, {}};
}

Item ofTheRequest(const std::string& name) {
    return Item{name, {{"req", true}}};
}

// RFC 9421, section 2.1.
BaseRequest requestWithFields() {
    return {"GET",
            "http://www.example.com/path?a=b",
            {{"Host", "www.example.com"},
             {"Date", "Tue, 20 Apr 2021 02:07:56 GMT"},
             {"X-OWS-Header", "   Leading and trailing whitespace.   "},
             {"Cache-Control", "max-age=60"},
             {"Cache-Control", "    must-revalidate"},
             {"Example-Dict", " a=1,    b=2;x=1;y=2,   c=(a   b   c)"},
             {"X-Empty-Header", ""}},
            {}};
}

// RFC 9421, section 2.4: a response, and the request that it answers.
HttpResponse answer() {
    HttpResponse response;
    response.statusCode = 503;
    response.headerFields = {{"Content-Type", "application/json"}, {"Content-Length", "62"}};
    response.answered = BaseRequest{"POST",
                                    "https://example.com/foo?param=Value&Pet=dog",
                                    {{"Content-Type", "text/plain"}, {"Signature", "sig1=:AAAA:"}},
                                    {}};
    return response;
}

std::string valueIn(const BaseRequest& request, const Item& component) {
    return SignedMessage(request).valueOf(component);
}

std::string refusalIn(const BaseRequest& request, const Item& component) {
    return messageOf<VORLException>([&] { SignedMessage(request).valueOf(component); });
}

std::string refusalIn(const HttpResponse& response, const Item& component) {
    return messageOf<VORLException>([&] { SignedMessage(response).valueOf(component); });
}

struct ComponentCase {
    const char* name;
    const char* component;
    const char* value;
};

std::string nameOfComponent(const ::testing::TestParamInfo<ComponentCase>& test) {
    return test.param.name;
}

class RequestComponent : public ::testing::TestWithParam<ComponentCase> {};
class ResponseComponent : public ::testing::TestWithParam<ComponentCase> {};

}  // namespace

TEST_P(RequestComponent, HasItsValue) {
    EXPECT_EQ(valueIn(requestWithFields(), componentOf(GetParam().component)), GetParam().value);
}

INSTANTIATE_TEST_SUITE_P(
    Derived, RequestComponent,
    ::testing::Values(ComponentCase{"Method", "@method", "GET"},
                      ComponentCase{"TargetUri", "@target-uri", "http://www.example.com/path?a=b"},
                      ComponentCase{"Authority", "@authority", "www.example.com"},
                      ComponentCase{"Scheme", "@scheme", "http"}, ComponentCase{"Path", "@path", "/path"},
                      ComponentCase{"Query", "@query", "?a=b"}),
    nameOfComponent);

// RFC 9421, section 2.1.
INSTANTIATE_TEST_SUITE_P(
    Fields, RequestComponent,
    ::testing::Values(ComponentCase{"OneLine", "date", "Tue, 20 Apr 2021 02:07:56 GMT"},
                      ComponentCase{"BlanksAround", "x-ows-header", "Leading and trailing whitespace."},
                      ComponentCase{"TwoLines", "cache-control", "max-age=60, must-revalidate"},
                      ComponentCase{"AsItStands", "example-dict", "a=1,    b=2;x=1;y=2,   c=(a   b   c)"},
                      ComponentCase{"Empty", "x-empty-header", ""}),
    nameOfComponent);

TEST(SignatureBaseMethod, KeepsItsCase) {
    BaseRequest request = requestWithFields();
    request.method = "pOsT";
    EXPECT_EQ(valueIn(request, componentOf("@method")), "pOsT");
}

TEST_P(ResponseComponent, HasItsValue) {
    const HttpResponse response = answer();
    const auto component = parseComponent(GetParam().component);
    ASSERT_TRUE(component);
    EXPECT_EQ(SignedMessage(response).valueOf(*component), GetParam().value);
}

INSTANTIATE_TEST_SUITE_P(
    All, ResponseComponent,
    ::testing::Values(ComponentCase{"Status", "@status", "503"},
                      ComponentCase{"Field", "content-type", "application/json"},
                      ComponentCase{"FieldOfTheRequest", "content-type;req", "text/plain"},
                      ComponentCase{"SignatureOfTheRequest", "signature;req", "sig1=:AAAA:"},
                      ComponentCase{"MethodOfTheRequest", "@method;req", "POST"},
                      ComponentCase{"AuthorityOfTheRequest", "@authority;req", "example.com"},
                      ComponentCase{"PathOfTheRequest", "@path;req", "/foo"},
                      ComponentCase{"QueryOfTheRequest", "@query;req", "?param=Value&Pet=dog"}),
    nameOfComponent);

TEST(SignatureBaseComponent, OfARequestIsRefusedByName) {
    const BaseRequest request = requestWithFields();
    EXPECT_EQ(refusalIn(request, componentOf("etag")), R"(the message has no component "etag")");
    // Names in an identifier are in lower case.
    EXPECT_EQ(refusalIn(request, componentOf("Date")), R"(the message has no component "Date")");
    EXPECT_EQ(refusalIn(request, componentOf("da te")), R"(the message has no component "da te")");
    for (const char* name :
         {"@status", "@signature-params", "@query-param", "@request-target", "@", "@Method"}) {
        EXPECT_EQ(refusalIn(request, componentOf(name)), std::string("unknown component ") + name);
    }
    EXPECT_EQ(refusalIn(request, ofTheRequest("@method")),
              R"(there is no answered request for component "@method";req)");
}

TEST(SignatureBaseComponent, OfAResponseIsRefusedByName) {
    HttpResponse response = answer();
    EXPECT_EQ(refusalIn(response, componentOf("@method")), R"(unknown component "@method" of a response)");
    EXPECT_EQ(refusalIn(response, componentOf("etag")), R"(the message has no component "etag")");
    EXPECT_EQ(refusalIn(response, ofTheRequest("content-length")),
              R"(the message has no component "content-length";req)");
    EXPECT_EQ(refusalIn(response, ofTheRequest("@status")), "unknown component @status");
    response.answered.reset();
    EXPECT_EQ(refusalIn(response, ofTheRequest("@method")),
              R"(there is no answered request for component "@method";req)");
}

// Each would change how a value is made, so that it must not be passed over.
TEST(SignatureBaseComponent, WithAnotherParameterIsUnknown) {
    const BaseRequest request = requestWithFields();
    const HttpResponse response = answer();
    const Item items[] = {
        {std::string("date"), {{"sf", true}}},
        {std::string("date"), {{"bs", true}}},
        {std::string("date"), {{"tr", true}}},
        {std::string("example-dict"), {{"key", std::string("a")}}},
        {std::string("date"), {{"req", false}}},
        {std::string("date"), {{"req", std::int64_t(1)}}},
        {std::string("date"), {{"req", true}, {"sf", true}}},
        {std::string(""), {}},
        {structured::Token{"date"}, {}},
        {std::int64_t(1), {}},
        {true, {}},
    };
    for (const Item& item : items) {
        EXPECT_EQ(refusalIn(request, item), "unknown component " + structured::serialize(item));
        EXPECT_EQ(refusalIn(response, item), "unknown component " + structured::serialize(item));
    }
}

// A line feed in a value could make one line look like two.
TEST(SignatureBaseComponent, IsVisibleAsciiBlanksAndTabs) {
    for (int code = 0; code < 256; ++code) {
        BaseRequest request = requestWithFields();
        request.fields.emplace_back("X-Char", std::string("a") + static_cast<char>(code) + "b");
        if (code == '\t' || (code >= 0x20 && code <= 0x7e)) {
            EXPECT_EQ(valueIn(request, componentOf("x-char")), request.fields.back().second) << code;
        } else {
            EXPECT_EQ(refusalIn(request, componentOf("x-char")),
                      R"(component "x-char" has characters that cannot be signed)")
                << code;
        }
    }
    BaseRequest request = requestWithFields();
    request.method = "GET\n\"@authority\": other.example";
    EXPECT_EQ(refusalIn(request, componentOf("@method")),
              R"(component "@method" has characters that cannot be signed)");
}

TEST(SignatureBaseComponent, OfARequestWithoutAnAbsoluteUriIsRefused) {
    BaseRequest request = requestWithFields();
    request.targetUri = "/path?a=b";
    for (const char* name : {"@authority", "@path", "@query", "@scheme", "@target-uri"}) {
        EXPECT_EQ(refusalIn(request, componentOf(name)),
                  "the request's URI is no absolute one of http or https");
    }
    EXPECT_EQ(valueIn(request, componentOf("@method")), "GET");
    EXPECT_EQ(valueIn(request, componentOf("x-empty-header")), "");
}

// RFC 9421, section 2.5.
TEST(SignatureBase, IsThePublishedOne) {
    const BaseRequest request{"POST",
                              "https://example.com/foo?param=Value&Pet=dog",
                              {{"Host", "example.com"},
                               {"Date", "Tue, 20 Apr 2021 02:07:55 GMT"},
                               {"Content-Type", "application/json"},
                               {"Content-Digest",
                                "sha-512=:WZDPaVn/7XgHaAy8pmojAkGWoRx2UFChF41A2svX+TaPm+"
                                "AbwAgBWnrIiYllu7BNNyealdVLvRwEmTHWXvJwew==:"},
                               {"Content-Length", "18"}},
                              {}};
    InnerList covered;
    for (const char* name :
         {"@method", "@authority", "@path", "content-digest", "content-length", "content-type"}) {
        covered.items.push_back(componentOf(name));
    }
    covered.parameters = {{"created", std::int64_t(1618884473)}, {"keyid", std::string("test-key-rsa-pss")}};
    EXPECT_EQ(signatureBase(SignedMessage(request), covered),
              "\"@method\": POST\n"
              "\"@authority\": example.com\n"
              "\"@path\": /foo\n"
              "\"content-digest\": sha-512=:WZDPaVn/7XgHaAy8pmojAkGWoRx2UFChF41A2svX+TaPm+"
              "AbwAgBWnrIiYllu7BNNyealdVLvRwEmTHWXvJwew==:\n"
              "\"content-length\": 18\n"
              "\"content-type\": application/json\n"
              "\"@signature-params\": (\"@method\" \"@authority\" \"@path\" \"content-digest\" "
              "\"content-length\" \"content-type\");created=1618884473;keyid=\"test-key-rsa-pss\"");
}

TEST(SignatureBase, OfAResponseNamesTheRequestsComponents) {
    const HttpResponse response = answer();
    const InnerList covered{{componentOf("@status"), ofTheRequest("@method"), ofTheRequest("content-type")},
                            {}};
    EXPECT_EQ(signatureBase(SignedMessage(response), covered),
              "\"@status\": 503\n"
              "\"@method\";req: POST\n"
              "\"content-type\";req: text/plain\n"
              "\"@signature-params\": (\"@status\" \"@method\";req \"content-type\";req)");
}

TEST(SignatureBase, OfNothingIsTheParameters) {
    const BaseRequest request = requestWithFields();
    EXPECT_EQ(signatureBase(SignedMessage(request), InnerList{{}, {{"created", std::int64_t(5)}}}),
              "\"@signature-params\": ();created=5");
}

TEST(SignatureBase, IsNotMadeWithoutOneOfItsComponents) {
    const BaseRequest request = requestWithFields();
    const InnerList covered{{componentOf("date"), componentOf("etag")}, {}};
    EXPECT_EQ(messageOf<VORLException>([&] { signatureBase(SignedMessage(request), covered); }),
              R"(the message has no component "etag")");
}

TEST(ProfileComponent, IsANameWithOrWithoutReq) {
    for (const char* text : {"@method", "@authority", "@path", "@query", "@scheme", "@target-uri", "@status",
                             "date", "x-1_2.3~"}) {
        const auto component = parseComponent(text);
        ASSERT_TRUE(component) << text;
        EXPECT_EQ(structured::serialize(*component), std::string("\"") + text + "\"");
        const auto asked = parseComponent(std::string(text) + ";req");
        ASSERT_TRUE(asked) << text;
        EXPECT_EQ(structured::serialize(*asked), std::string("\"") + text + "\";req");
    }
}

TEST(ProfileComponent, IsNothingElse) {
    for (const char* text :
         {"", ";req", "@", "@method ", "@Method", "@signature-params", "@query-param", "Date", "a b", "a;sf",
          "a;req;req", "a;REQ", "a;req=?1", "\"date\"", "a:", "\xc3\xa4"}) {
        EXPECT_FALSE(parseComponent(text)) << text;
    }
}

TEST(FieldValue, IsThatOfAllLinesOfTheName) {
    const tarvik::http::IHttpStream::Fields fields = {{"A", "1"},  {"b", " 2\t"}, {"a", "\t3 "},
                                                      {"AB", "4"}, {"a", ""},     {"a", " \t "}};
    EXPECT_EQ(fieldValue(fields, "a"), "1, 3, , ");
    EXPECT_EQ(fieldValue(fields, "b"), "2");
    EXPECT_EQ(fieldValue(fields, "ab"), "4");
    EXPECT_EQ(fieldValue(fields, "c"), std::nullopt);
    EXPECT_EQ(fieldValue({}, "a"), std::nullopt);
    EXPECT_EQ(fieldValue({{"a", ""}}, "a"), "");
}

TEST(FieldName, DoesNotDistinguishCase) {
    EXPECT_TRUE(isNamed({"cOnTeNt-TyPe", ""}, "content-type"));
    EXPECT_FALSE(isNamed({"content-typ", ""}, "content-type"));
    EXPECT_FALSE(isNamed({"content-type ", ""}, "content-type"));
    EXPECT_FALSE(isNamed({"", ""}, "a"));
    // Next to the letters in ASCII.
    EXPECT_FALSE(isNamed({"@", ""}, "`"));
    EXPECT_FALSE(isNamed({"[", ""}, "{"));
}

}  // namespace vorl::test
