#include "inspect/asn1_time.h"

#include <gtest/gtest.h>
#include <openssl/asn1.h>

#include <memory>

namespace {

using vorl::tool::Moment;
using vorl::tool::momentFrom;
using vorl::tool::momentText;

std::string readAndWritten(const std::string& text) {
    const Moment moment = momentFrom(text);
    return moment ? momentText(moment.get()) : "none";
}

// A time as it may stand in a certificate, which OpenSSL does not look at here.
std::shared_ptr<ASN1_TIME> timeOf(int type, const std::string& content) {
    const std::shared_ptr<ASN1_STRING> time(ASN1_STRING_type_new(type), ASN1_STRING_free);
    EXPECT_EQ(ASN1_STRING_set(time.get(), content.data(), static_cast<int>(content.size())), 1);
    return time;
}

TEST(Asn1Time, AMomentIsWrittenAsItIsRead) {
    for (const char* const text :
         {"0000-01-01T00:00:00Z", "1949-12-31T23:59:59Z", "1950-01-01T00:00:00Z", "1970-01-01T00:00:00Z",
          "2020-02-29T12:34:56Z", "2038-01-19T03:14:08Z", "2049-12-31T23:59:59Z", "2050-01-01T00:00:00Z",
          "2106-02-07T06:28:16Z", "9999-12-31T23:59:59Z"}) {
        EXPECT_EQ(readAndWritten(text), text);
    }
}

TEST(Asn1Time, ADateIsItsFirstSecond) {
    EXPECT_EQ(readAndWritten("2026-11-21"), "2026-11-21T00:00:00Z");
}

TEST(Asn1Time, WhatNoCalendarHasIsNoMoment) {
    for (const char* const text :
         {"2026-00-01", "2026-13-01", "2026-01-00", "2026-01-32", "2026-04-31", "2026-02-29", "2100-02-29",
          "2026-01-01T24:00:00Z", "2026-01-01T00:60:00Z", "2026-01-01T00:00:60Z"}) {
        EXPECT_EQ(readAndWritten(text), "none") << text;
    }
    EXPECT_EQ(readAndWritten("2000-02-29"), "2000-02-29T00:00:00Z");
}

TEST(Asn1Time, AnotherFormIsNoMoment) {
    for (const char* const text :
         {"", "2026", "2026-11", "20261121", "2026-11-21T", "2026-11-21T12:00Z", "2026-11-21T12:00:00",
          "2026-11-21T12:00:00+00:00", "2026-11-21 12:00:00Z", "2026-11-21T12:00:00z",
          "2026-11-21T12:00:00.5Z", "2026-11-21T12:00:00Z ", "-026-11-21", "+026-11-21", "now"}) {
        EXPECT_EQ(readAndWritten(text), "none") << text;
    }
}

TEST(Asn1Time, TheFormsOfACertificateAreWrittenInUtc) {
    EXPECT_EQ(momentText(timeOf(V_ASN1_UTCTIME, "491231235959Z").get()), "2049-12-31T23:59:59Z");
    EXPECT_EQ(momentText(timeOf(V_ASN1_UTCTIME, "500101000000Z").get()), "1950-01-01T00:00:00Z");
    EXPECT_EQ(momentText(timeOf(V_ASN1_GENERALIZEDTIME, "20500101000000Z").get()), "2050-01-01T00:00:00Z");
}

TEST(Asn1Time, ATimeThatIsNoneIsWrittenAsOpenSSLCallsIt) {
    EXPECT_EQ(momentText(timeOf(V_ASN1_UTCTIME, "not a time").get()), "Bad time value");
}

}  // namespace
