#ifndef VORL_TESTS_RAW_HTTP_SIGNATURE_H
#define VORL_TESTS_RAW_HTTP_SIGNATURE_H

#include "octets.h"
#include "raw_base64.h"
#include "raw_digest.h"

#include <tarvik/http/IHttpStream.h>

#include <string>
#include <utility>
#include <vector>

namespace vorl::test {

/// The value of a field as RFC 8941 writes octets.
inline std::string rawOctetField(const bytes& octets) {
    return ":" + toText(rawBase64(octets)) + ":";
}

/// A field Content-Digest after RFC 9530.
inline std::string rawContentDigest(const bytes& body) {
    return "sha-256=" + rawOctetField(rawDigest(EVP_sha256(), body));
}

/// A signature after RFC 9421 that is put together from texts, for expected fields that do not come from the
/// library, and for such as it never makes.
struct RawHttpSignature {
    std::string label;
    /// The lines of the base: an identifier as it is written, `"@path"`, and its value.
    std::vector<std::pair<std::string, std::string>> lines;
    /// What stands behind the list: `;created=1;keyid="a"`.
    std::string parameters;

    std::string input() const {
        std::string list;
        for (const auto& [identifier, value] : lines) {
            list += (list.empty() ? "" : " ") + identifier;
        }
        return "(" + list + ")" + parameters;
    }

    std::string base() const {
        std::string text;
        for (const auto& [identifier, value] : lines) {
            text += identifier + ": " + value + "\n";
        }
        return text + "\"@signature-params\": " + input();
    }

    bytes code(const bytes& key) const { return rawHmac(EVP_sha256(), key, fromText(base())); }

    void addTo(tarvik::http::IHttpStream::Fields& fields, const bytes& key) const {
        fields.emplace_back("Signature-Input", label + "=" + input());
        fields.emplace_back("Signature", label + "=" + rawOctetField(code(key)));
    }
};

}  // namespace vorl::test

#endif
