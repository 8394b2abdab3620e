#include "http/content_digest.h"

#include "http/structured_fields.h"
#include "vorl/DigestAlgo.h"
#include "vorl/Digester.h"

#include <optional>

namespace tarvik::http {

namespace {

const char SHA_256[] = "sha-256";

structured::Octets sha256(const std::vector<unsigned char>& body) {
    vorl::Digester digester(vorl::DigestAlgo::SHA256());
    digester.init();
    digester.update(body);
    return digester.final();
}

}  // namespace

std::string contentDigest(const std::vector<unsigned char>& body) {
    return std::string(SHA_256) + "=" + structured::serialize(sha256(body));
}

bool isContentDigestOf(const std::string& field, const std::vector<unsigned char>& body) {
    const std::optional<structured::Dictionary> digests = structured::parseDictionary(field);
    const structured::Member* member = digests ? structured::find(*digests, SHA_256) : nullptr;
    const auto* item = member == nullptr ? nullptr : std::get_if<structured::Item>(member);
    const auto* digest = item == nullptr ? nullptr : std::get_if<structured::Octets>(&item->value);
    return digest != nullptr && *digest == sha256(body);
}

}  // namespace tarvik::http
