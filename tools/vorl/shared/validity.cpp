#include "shared/validity.h"

#include "shared/CommandOptions.h"
#include "shared/ToolError.h"
#include "vorl/OpenSSLException.h"
#include "vorl/X509Cert.h"

#include <openssl/err.h>
#include <openssl/x509.h>

namespace vorl::tool {

namespace {

const int INCOMPARABLE = -2;

[[noreturn]] void refusePeriod() {
    throw ToolError(ExitStatus::BAD_INPUT, "the validity period of the certificate cannot be compared with",
                    "'vorl cert show' shows it");
}

// Below, at or above 0, as `bound` is before, at or after `time`. A form that the library cannot compare with
// the current time is not compared with another one either.
int compare(const ASN1_TIME* bound, const ASN1_TIME* time) {
    const int order = X509_cmp_current_time(bound) != 0 ? ASN1_TIME_compare(bound, time) : INCOMPARABLE;
    if (order == INCOMPARABLE) {
        ERR_clear_error();
        refusePeriod();
    }
    return order;
}

bool isValidNow(const X509Cert& certificate) {
    try {
        return certificate.isTimeValid();
    } catch (const OpenSSLException&) {
        refusePeriod();
    }
}

std::string notYet(const ASN1_TIME* begin) {
    return "it is not valid before " + momentText(begin);
}

std::string noLonger(const ASN1_TIME* end) {
    return "it is not valid after " + momentText(end);
}

}  // namespace

Option ValidityOption::declare(CommandOptions& command) {
    return command.value(
        "--at", "TIME",
        [this](const std::string& text) {
            at_ = momentFrom(text);
            if (!at_) {
                throw BadValue("'" + text + "' is no time such as 2026-11-21T12:00:00Z or 2026-11-21");
            }
        },
        "Judge the validity at this time in UTC instead of now: 2026-11-21T12:00:00Z or 2026-11-21");
}

std::optional<std::string> ValidityOption::fault(const X509Cert& certificate) const {
    const ASN1_TIME* const begin = X509_get0_notBefore(certificate.getX509());
    const ASN1_TIME* const end = X509_get0_notAfter(certificate.getX509());
    if (!at_) {
        if (isValidNow(certificate)) {
            return std::nullopt;
        }
        return X509_cmp_current_time(begin) > 0 ? notYet(begin) : noLonger(end);
    }
    if (compare(begin, at_.get()) > 0) {
        return notYet(begin);
    }
    return compare(end, at_.get()) <= 0 ? std::optional<std::string>(noLonger(end)) : std::nullopt;
}

std::string ValidityOption::text() const {
    return at_ ? "at " + momentText(at_.get()) : "now";
}

}  // namespace vorl::tool
