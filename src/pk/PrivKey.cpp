#include "vorl/PrivKey.h"

#include "core/memory_bio.h"
#include "vorl/OpenSSLException.h"
#include "vorl/PKAlgo.h"
#include "vorl/safe_ptr.h"

#include <openssl/bio.h>
#include <openssl/pem.h>

namespace vorl {

std::string PrivKey::toFormatString(const std::string& name, unsigned int width, unsigned int level,
                                    const std::string& separator, unsigned int indentSize) const {
    return OpenSSLPKey::toFormatString(name, width, level, separator, indentSize);
}

std::string PrivKey::toString() const {
    return "Private-Key (" + algo()->name + ")";
}

PrivKey::~PrivKey() = default;

std::shared_ptr<PrivKey> PrivKey::loadFromPEMBIO(const std::shared_ptr<BIO>& bio) {
    const std::shared_ptr<EVP_PKEY> pkey =
        safe_ptr(bio ? PEM_read_bio_PrivateKey(bio.get(), nullptr, refusePassword, nullptr) : nullptr);
    if (!pkey) {
        // The message names the public key on purpose: it is the one that logs have always been searched for.
        OpenSSLException::throw_message("PEM_read_bio_PUBKEY() in PubKey::loadFromPEMBIO()", "PrivKey",
                                        __LINE__, __func__);
    }
    return std::make_shared<PrivKey>(pkey);
}

std::shared_ptr<PrivKey> PrivKey::loadFromPEMFile(const std::string& path) {
    return loadFromPEMBIO(safe_ptr(BIO_new_file(path.c_str(), "r")));
}

std::shared_ptr<PrivKey> PrivKey::loadFromPEMStr(const std::string& pem) {
    return loadFromPEMBIO(memoryBioOver(pem));
}

}  // namespace vorl
