#include "shared/fingerprint.h"

#include "inspect/numbers.h"
#include "vorl/DigestAlgo.h"
#include "vorl/Digester.h"
#include "vorl/Util.h"

namespace vorl::tool {

namespace {

const std::size_t SHOWN_DIGEST_BYTES = 4;

}  // namespace

std::string fingerprint(const bytes& secret) {
    Digester digester(DigestAlgo::SHA256());
    digester.init();
    digester.update(secret);
    bytes digest = digester.final();
    digest.resize(SHOWN_DIGEST_BYTES);
    return "sha256:" + Util::toHexString(digest, "") + " (" + bytesText(secret.size()) + ")";
}

std::string secretText(const bytes& secret, Secrets secrets) {
    return secrets == Secrets::SHOWN ? Util::toHexString(secret, "") : fingerprint(secret);
}

}  // namespace vorl::tool
