#include "vorl/DigestAlgo.h"

#include <openssl/evp.h>
#include <openssl/objects.h>

#include <utility>

namespace vorl {

DigestAlgo::DigestAlgo(std::string theName, int theNid, const EVP_MD* theMd)
    : name(std::move(theName)), nid(theNid), md(theMd) {}

std::shared_ptr<const DigestAlgo> DigestAlgo::SHA1() {
    return std::make_shared<const DigestAlgo>("SHA1", NID_sha1, EVP_sha1());
}

std::shared_ptr<const DigestAlgo> DigestAlgo::SHA224() {
    return std::make_shared<const DigestAlgo>("SHA224", NID_sha224, EVP_sha224());
}

std::shared_ptr<const DigestAlgo> DigestAlgo::SHA256() {
    return std::make_shared<const DigestAlgo>("SHA256", NID_sha256, EVP_sha256());
}

std::shared_ptr<const DigestAlgo> DigestAlgo::SHA384() {
    return std::make_shared<const DigestAlgo>("SHA384", NID_sha384, EVP_sha384());
}

std::shared_ptr<const DigestAlgo> DigestAlgo::SHA512() {
    return std::make_shared<const DigestAlgo>("SHA512", NID_sha512, EVP_sha512());
}

}  // namespace vorl
