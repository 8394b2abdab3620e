#include "inspect/asn1_time.h"

#include "vorl/X509Cert.h"

#include <openssl/asn1.h>
#include <openssl/err.h>

#include <array>
#include <cstdio>
#include <ctime>
#include <new>
#include <string_view>

namespace vorl::tool {

namespace {

const std::string_view DATE_FORM = "0000-00-00";
const std::string_view TIME_FORM = "0000-00-00T00:00:00Z";

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// A '0' in the form stands for any digit.
bool hasForm(std::string_view text, std::string_view form) {
    bool fits = text.size() == form.size();
    for (std::size_t i = 0; fits && i < form.size(); ++i) {
        fits = form[i] == '0' ? isDigit(text[i]) : text[i] == form[i];
    }
    return fits;
}

// GeneralizedTime has the same digits with nothing between them.
std::string generalizedTime(std::string_view text) {
    std::string digits;
    for (const char c : text) {
        if (isDigit(c)) {
            digits += c;
        }
    }
    digits.resize(sizeof "yyyymmddhhmmss" - 1, '0');
    return digits + "Z";
}

}  // namespace

Moment momentFrom(const std::string& text) {
    if (!hasForm(text, DATE_FORM) && !hasForm(text, TIME_FORM)) {
        return nullptr;
    }
    const std::shared_ptr<ASN1_TIME> time(ASN1_TIME_new(), ASN1_TIME_free);
    if (!time) {
        throw std::bad_alloc();
    }
    const bool isInCalendar = ASN1_TIME_set_string(time.get(), generalizedTime(text).c_str()) == 1;
    ERR_clear_error();
    return isInCalendar ? time : nullptr;
}

std::string momentText(const ASN1_TIME* time) {
    std::tm fields = {};
    if (ASN1_TIME_to_tm(time, &fields) != 1) {
        ERR_clear_error();
        return X509Cert::print(time);
    }
    std::array<char, 64> text = {};
    static_cast<void>(std::snprintf(text.data(), text.size(), "%04d-%02d-%02dT%02d:%02d:%02dZ",
                                    fields.tm_year + 1900, fields.tm_mon + 1, fields.tm_mday, fields.tm_hour,
                                    fields.tm_min, fields.tm_sec));
    return text.data();
}

}  // namespace vorl::tool
