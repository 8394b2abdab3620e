#include "vorl/PubKey.h"

#include "core/memory_bio.h"
#include "vorl/OpenSSLException.h"
#include "vorl/PKAlgo.h"
#include "vorl/safe_ptr.h"

#include <openssl/bio.h>
#include <openssl/pem.h>

namespace vorl {

std::string PubKey::toFormatString(const std::string& name, unsigned int width, unsigned int level,
                                   const std::string& separator, unsigned int indentSize) const {
    return OpenSSLPKey::toFormatString(name, width, level, separator, indentSize);
}

std::string PubKey::toString() const {
    return "Public-Key (" + algo()->name + ")";
}

PubKey::~PubKey() = default;

std::shared_ptr<PubKey> PubKey::loadFromPEMBIO(const std::shared_ptr<BIO>& bio) {
    const std::shared_ptr<EVP_PKEY> pkey =
        safe_ptr(bio ? PEM_read_bio_PUBKEY(bio.get(), nullptr, refusePassword, nullptr) : nullptr);
    if (!pkey) {
        OpenSSLException::throw_message("PEM_read_bio_PUBKEY() in PubKey::loadFromPEMBIO()", "PubKey",
                                        __LINE__, __func__);
    }
    return std::make_shared<PubKey>(pkey);
}

std::shared_ptr<PubKey> PubKey::loadFromPEMFile(const std::string& path) {
    return loadFromPEMBIO(safe_ptr(BIO_new_file(path.c_str(), "r")));
}

std::shared_ptr<PubKey> PubKey::loadFromPEMStr(const std::string& pem) {
    return loadFromPEMBIO(memoryBioOver(pem));
}

}  // namespace vorl
