#include "http/HttpMessage.h"

#include "messageOf.h"
#include "octets.h"

#include <gtest/gtest.h>

#include <string>

namespace vorl::test {

namespace {

using tool::HttpMessage;
using tool::MalformedHttp;
using tool::parseHttpMessage;
using tool::textWithFields;
using Fields = HttpMessage::Fields;

HttpMessage parsed(const std::string& text, const std::string& scheme = "http") {
    return parseHttpMessage(fromText(text), scheme);
}

std::string bodyOf(const std::string& text) {
    const bytes body = parsed(text).body;
    return std::string(body.begin(), body.end());
}

std::string withFields(const std::string& text, const Fields& fields) {
    const bytes result = textWithFields(fromText(text), parsed(text), fields);
    return std::string(result.begin(), result.end());
}

struct MalformedCase {
    const char* name;
    std::string text;
    const char* problem;
};

const MalformedCase MALFORMED[] = {
    {"NoText", "", "line 1: the text ends before the empty line that ends the head"},
    {"NoEmptyLine", "GET / HTTP/1.1\nHost: a\n",
     "line 3: the text ends before the empty line that ends the head"},
    {"NoEndOfLine", "GET / HTTP/1.1", "line 1: the text ends before the empty line that ends the head"},
    {"EmptyStartLine", "\r\nGET / HTTP/1.1\r\n\r\n", "line 1: a request line or a status line is expected"},
    {"OneWord", "GET\n\n", "line 1: neither a request line (method, target, version) nor a status line"},
    {"TwoWords", "GET /\n\n", "line 1: neither a request line (method, target, version) nor a status line"},
    {"BlankInTarget", "GET /a b HTTP/1.1\nHost: a\n\n", "line 1: the target has a character that no URI has"},
    {"FragmentInTarget", "GET /a#b HTTP/1.1\nHost: a\n\n",
     "line 1: the target has a character that no URI has"},
    {"MethodWithAStroke", "G/T / HTTP/1.1\nHost: a\n\n", "line 1: the method is no word"},
    {"NoMethod", " / HTTP/1.1\nHost: a\n\n", "line 1: the method is no word"},
    {"OldVersion", "GET / HTTP/1.0\nHost: a\n\n", "line 1: the version has to be HTTP/1.1"},
    {"NewVersion", "HTTP/2 200\n\n", "line 1: the version has to be HTTP/1.1"},
    {"NoStatus", "HTTP/1.1\n\n",
     "line 1: a status of three digits, 100 to 599, is expected behind the version"},
    {"LowStatus", "HTTP/1.1 099 Low\n\n",
     "line 1: a status of three digits, 100 to 599, is expected behind the version"},
    {"HighStatus", "HTTP/1.1 600\n\n",
     "line 1: a status of three digits, 100 to 599, is expected behind the version"},
    {"ShortStatus", "HTTP/1.1 20\n\n",
     "line 1: a status of three digits, 100 to 599, is expected behind the version"},
    {"LongStatus", "HTTP/1.1 2000\n\n",
     "line 1: a status of three digits, 100 to 599, is expected behind the version"},
    {"StatusWithALetter", "HTTP/1.1 2x0\n\n",
     "line 1: a status of three digits, 100 to 599, is expected behind the version"},
    {"NoHost", "GET / HTTP/1.1\nDate: now\n\n",
     "line 1: the target is a path, and there is no Host field that says of which host"},
    {"TwoHosts", "GET / HTTP/1.1\nHost: a\nDate: now\nhost: a\n\n",
     "line 4: a second Host, after the one of line 2"},
    {"TwoHostsWithAnAbsoluteTarget", "GET http://a/ HTTP/1.1\nHost: a\nHost: a\n\n",
     "line 3: a second Host, after the one of line 2"},
    {"EmptyHost", "GET / HTTP/1.1\nHost:\n\n", "line 2: the value of Host is no host"},
    {"HostWithAPath", "GET / HTTP/1.1\nHost: a/b\n\n", "line 2: the value of Host is no host"},
    {"HostWithAQuery", "GET / HTTP/1.1\nHost: a?b\n\n", "line 2: the value of Host is no host"},
    {"HostWithAUser", "GET / HTTP/1.1\nHost: me@a\n\n", "line 2: the value of Host is no host"},
    {"AsteriskForm", "OPTIONS * HTTP/1.1\nHost: a\n\n",
     "line 1: the target is neither a path, which begins with '/', nor an absolute URI"},
    {"AuthorityForm", "CONNECT a:80 HTTP/1.1\nHost: a\n\n",
     "line 1: the target is neither a path, which begins with '/', nor an absolute URI"},
    {"OtherScheme", "GET ftp://a/ HTTP/1.1\nHost: a\n\n",
     "line 1: the target is neither a path, which begins with '/', nor an absolute URI"},
    {"FoldedWithABlank", "HTTP/1.1 200\nDate: a\n b\n\n",
     "line 3: the line is folded: it begins with a blank"},
    {"FoldedWithATab", "HTTP/1.1 200\nDate: a\n\tb\n\n",
     "line 3: the line is folded: it begins with a blank"},
    {"LineOfBlanks", "HTTP/1.1 200\n \n\n", "line 2: the line is folded: it begins with a blank"},
    {"NoColon", "HTTP/1.1 200\nDate\n\n",
     "line 2: a field (name, colon, value) or an empty line is expected"},
    {"NoName", "HTTP/1.1 200\n: a\n\n", "line 2: the name of the field is no word"},
    {"BlankBeforeTheColon", "HTTP/1.1 200\nDate : a\n\n", "line 2: the name of the field is no word"},
    {"NulInAValue", std::string("HTTP/1.1 200\nDate: a\0b\n\n", 24), "line 2: a control character: 0x00"},
    {"CarriageReturnInAValue", "HTTP/1.1 200\nDate: a\rb\n\n", "line 2: a control character: 0x0d"},
    {"TwoCarriageReturns", "HTTP/1.1 200\r\r\n\r\n", "line 1: a control character: 0x0d"},
    {"DelInAValue", "HTTP/1.1 200\nDate: \x7f\n\n", "line 2: a control character: 0x7f"},
    {"TwoLengths", "HTTP/1.1 200\nContent-Length: 1\nContent-Length: 1\n\na",
     "line 3: a second Content-Length, after the one of line 2"},
    {"NegativeLength", "HTTP/1.1 200\nContent-Length: -1\n\na",
     "line 2: the value of Content-Length is no number of bytes"},
    {"SignedLength", "HTTP/1.1 200\nContent-Length: +1\n\na",
     "line 2: the value of Content-Length is no number of bytes"},
    {"ListOfLengths", "HTTP/1.1 200\nContent-Length: 1, 1\n\na",
     "line 2: the value of Content-Length is no number of bytes"},
    {"EmptyLength", "HTTP/1.1 200\nContent-Length:\n\n",
     "line 2: the value of Content-Length is no number of bytes"},
    {"LengthBeyondAllNumbers", "HTTP/1.1 200\nContent-Length: 18446744073709551616\n\na",
     "line 2: the value of Content-Length is no number of bytes"},
    {"ShortBody", "HTTP/1.1 200\nDate: a\nContent-Length: 3\n\nab",
     "line 3: Content-Length is 3, and the body has 2 bytes"},
    {"LongBody", "HTTP/1.1 200\nContent-Length: 1\n\nab",
     "line 2: Content-Length is 1, and the body has 2 bytes"},
    {"TwoNewlinesBehindTheBody", "HTTP/1.1 200\nContent-Length: 1\n\na\n\n",
     "line 2: Content-Length is 1, and the body has 3 bytes"},
    {"BodyOfANewlineMissing", "HTTP/1.1 200\nContent-Length: 1\n\n",
     "line 2: Content-Length is 1, and the body has 0 bytes"},
    {"Chunked", "HTTP/1.1 200\nTransfer-Encoding: chunked\n\n0\n\n",
     "line 2: a message with Transfer-Encoding is not read: give the body as it is, without it"},
};

class MalformedText : public ::testing::TestWithParam<MalformedCase> {};

}  // namespace

TEST_P(MalformedText, IsRefusedWithItsLine) {
    EXPECT_EQ(messageOf<MalformedHttp>([] { parsed(GetParam().text); }), GetParam().problem);
}

INSTANTIATE_TEST_SUITE_P(HttpMessage, MalformedText, ::testing::ValuesIn(MALFORMED),
                         [](const auto& test) { return test.param.name; });

TEST(HttpMessage, IsARequestWithItsHost) {
    const HttpMessage message =
        parsed("POST /a?b HTTP/1.1\r\nHost: Example.com:81\r\nX-A:  one two \t\r\n\r\nbody");
    EXPECT_FALSE(message.isResponse());
    EXPECT_EQ(message.method, "POST");
    EXPECT_EQ(message.targetUri, "http://Example.com:81/a?b");
    EXPECT_EQ(message.fields, (Fields{{"Host", "Example.com:81"}, {"X-A", "one two"}}));
    EXPECT_EQ(message.body, fromText("body"));
}

TEST(HttpMessage, TakesThePathOfARequestForOneOfTheScheme) {
    EXPECT_EQ(parsed("GET // HTTP/1.1\nHost: a\n\n", "https").targetUri, "https://a//");
}

TEST(HttpMessage, KeepsATargetThatIsAbsolute) {
    EXPECT_EQ(parsed("GET HTTPS://A/b HTTP/1.1\nHost: other\n\n", "http").targetUri, "HTTPS://A/b");
    EXPECT_EQ(parsed("GET http://a HTTP/1.1\n\n", "https").targetUri, "http://a");
}

TEST(HttpMessage, IsAResponseWithOrWithoutAReason) {
    for (const char* line : {"HTTP/1.1 100", "HTTP/1.1 100 ", "HTTP/1.1 100 Go on"}) {
        const HttpMessage message = parsed(line + std::string("\n\n"));
        EXPECT_TRUE(message.isResponse());
        EXPECT_EQ(message.status, 100U);
    }
    EXPECT_EQ(parsed("HTTP/1.1 599\n\n").status, 599U);
}

TEST(HttpMessage, OfAResponseMayHaveAnyHosts) {
    EXPECT_EQ(parsed("HTTP/1.1 200\nHost: ?\nHost: ?\n\n").fields.size(), 2U);
}

TEST(HttpMessage, KeepsFieldsOfOneNameInTheirOrder) {
    EXPECT_EQ(parsed("HTTP/1.1 200\nA: 2\na: 1\nA:\n\n").fields, (Fields{{"A", "2"}, {"a", "1"}, {"A", ""}}));
}

TEST(HttpMessage, KeepsBytesAboveAscii) {
    EXPECT_EQ(parsed("HTTP/1.1 200\nA: \xc3\xbc\n\n").fields.front().second, "\xc3\xbc");
}

TEST(HttpMessage, HasAllTheRestForABodyWithoutALength) {
    EXPECT_EQ(bodyOf("HTTP/1.1 200\n\n"), "");
    EXPECT_EQ(bodyOf("HTTP/1.1 200\n\n\r\nA: b\n\n\n"), "\r\nA: b\n\n\n");
    EXPECT_EQ(bodyOf(std::string("HTTP/1.1 200\n\n\0", 15)), std::string(1, '\0'));
}

TEST(HttpMessage, HasABodyOfItsLengthBehindWhichANewlineIsPassedOver) {
    for (const char* rest : {"ab", "ab\n", "ab\r\n"}) {
        EXPECT_EQ(bodyOf(std::string("HTTP/1.1 200\ncontent-length: 2\n\n") + rest), "ab");
    }
    EXPECT_EQ(bodyOf("HTTP/1.1 200\nContent-Length: 1\n\n\n"), "\n");
    EXPECT_EQ(bodyOf("HTTP/1.1 200\nContent-Length: 0\n\n\n"), "");
}

TEST(HttpMessage, HasLinesUpToABound) {
    const std::string longest(16384, 'a');
    EXPECT_EQ(parsed("HTTP/1.1 200 " + longest.substr(13) + "\n\n").status, 200U);
    EXPECT_EQ(messageOf<MalformedHttp>([&] { parsed("HTTP/1.1 200 " + longest.substr(12) + "\n\n"); }),
              "line 1: the line has more than 16384 bytes");
    EXPECT_EQ(messageOf<MalformedHttp>([&] { parsed(longest + "a"); }),
              "line 1: the line has more than 16384 bytes");
}

TEST(HttpMessage, HasFieldsUpToABound) {
    std::string text = "HTTP/1.1 200\n";
    for (int i = 0; i < 256; ++i) {
        text += "A: b\n";
    }
    EXPECT_EQ(parsed(text + "\n").fields.size(), 256U);
    EXPECT_EQ(messageOf<MalformedHttp>([&] { parsed(text + "A: b\n\n"); }),
              "line 258: there are more than 256 fields");
}

TEST(TextWithFields, HasNewOnesBehindThoseThatWereThere) {
    EXPECT_EQ(withFields("HTTP/1.1 200 OK\nA:b\n\nbody", {{"A", "b"}, {"C", "d"}}),
              "HTTP/1.1 200 OK\nA:b\nC: d\n\nbody");
    EXPECT_EQ(withFields("HTTP/1.1 200 OK\n\nbody", {{"C", "d"}}), "HTTP/1.1 200 OK\nC: d\n\nbody");
}

TEST(TextWithFields, KeepsLinesAsTheyAreWrittenAndEndsNewOnesLikeTheFirst) {
    EXPECT_EQ(withFields("HTTP/1.1 200\r\nA:\t b \nE: f\r\n\n\r\n", {{"A", "b"}, {"E", "f"}, {"C", "d"}}),
              "HTTP/1.1 200\r\nA:\t b \nE: f\r\nC: d\r\n\n\r\n");
    EXPECT_EQ(withFields("HTTP/1.1 200\nA: b\r\n\r\n", {{"A", "b"}, {"C", "d"}}),
              "HTTP/1.1 200\nA: b\r\nC: d\n\r\n");
}

TEST(TextWithFields, LeavesOutWhatIsGone) {
    EXPECT_EQ(withFields("HTTP/1.1 200\nA: 1\nB: 2\nC: 3\n\n", {{"B", "2"}, {"D", "4"}}),
              "HTTP/1.1 200\nB: 2\nD: 4\n\n");
    EXPECT_EQ(withFields("HTTP/1.1 200\nA: 1\n\nbody", {}), "HTTP/1.1 200\n\nbody");
}

TEST(TextWithFields, KeepsTheBodyAndWhatStandsBehindIt) {
    EXPECT_EQ(withFields("HTTP/1.1 200\nContent-Length: 2\n\nab\n", {{"Content-Length", "2"}, {"A", "b"}}),
              "HTTP/1.1 200\nContent-Length: 2\nA: b\n\nab\n");
}

}  // namespace vorl::test
