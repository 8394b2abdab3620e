#include "inspect/openssl_key.h"

#include "inspect/der.h"
#include "shared/SecretBytes.h"
#include "vorl/DigestAlgo.h"
#include "vorl/Digester.h"
#include "vorl/OpenSSLException.h"
#include "vorl/OpenSSLPKey.h"
#include "vorl/Util.h"
#include "vorl/VORLException.h"
#include "vorl/safe_ptr.h"

#include <openssl/bn.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/objects.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>

#include <algorithm>
#include <iterator>

namespace vorl::tool {

namespace {

// An RSA key of 16384 bits, the largest that OpenSSL computes with, has less than 10 KiB; of other
// algorithms, none in use has 2 KiB.
const std::size_t MAX_RSA_KEY_BYTES = std::size_t{16} * 1024;
const std::size_t MAX_OTHER_KEY_BYTES = std::size_t{4} * 1024;

// OpenSSL's own names are not those that people use.
struct AlgorithmName {
    int type;
    const char* name;
};
const AlgorithmName ALGORITHM_NAMES[] = {
    {EVP_PKEY_RSA, "RSA"},     {EVP_PKEY_RSA_PSS, "RSA-PSS"}, {EVP_PKEY_DSA, "DSA"},
    {EVP_PKEY_DH, "DH"},       {EVP_PKEY_EC, "EC"},           {EVP_PKEY_ED25519, "Ed25519"},
    {EVP_PKEY_ED448, "Ed448"}, {EVP_PKEY_X25519, "X25519"},   {EVP_PKEY_X448, "X448"},
};

// Reads all of `der` as one object; what OpenSSL has to say about a failure is nobody's concern.
template <class Read>
OpenSSLKey keyIn(const bytes& der, const Read& read) {
    if (!beginsSequence(der)) {
        return nullptr;
    }
    const unsigned char* at = der.data();
    OpenSSLKey key = safe_ptr(read(&at, static_cast<long>(der.size())));
    ERR_clear_error();
    return key && at == der.data() + der.size() ? key : nullptr;
}

bool isRsaInPkcs8(const bytes& der) {
    const unsigned char* at = der.data();
    const std::unique_ptr<PKCS8_PRIV_KEY_INFO, decltype(&PKCS8_PRIV_KEY_INFO_free)> info(
        d2i_PKCS8_PRIV_KEY_INFO(nullptr, &at, static_cast<long>(der.size())), PKCS8_PRIV_KEY_INFO_free);
    const ASN1_OBJECT* id = nullptr;
    const bool isRead = info && PKCS8_pkey_get0(&id, nullptr, nullptr, nullptr, info.get()) == 1;
    ERR_clear_error();
    return isRead && OBJ_obj2nid(id) == NID_rsaEncryption;
}

bool hasSizeOfPrivateKey(const bytes& der) {
    if (der.size() <= MAX_OTHER_KEY_BYTES) {
        return !der.empty();
    }
    if (der.size() > MAX_RSA_KEY_BYTES) {
        return false;
    }
    // The older form of RSA, nine numbers, holds nothing to compute with while it is read.
    const unsigned char* at = der.data();
    const std::unique_ptr<RSA, decltype(&RSA_free)> rsa(
        d2i_RSAPrivateKey(nullptr, &at, static_cast<long>(der.size())), RSA_free);
    ERR_clear_error();
    return rsa != nullptr || isRsaInPkcs8(der);
}

bytes publicDer(EVP_PKEY* key) {
    const int size = i2d_PUBKEY(key, nullptr);
    bytes der(size > 0 ? static_cast<std::size_t>(size) : 0);
    if (!der.empty()) {
        unsigned char* at = der.data();
        i2d_PUBKEY(key, &at);
    }
    ERR_clear_error();
    return der;
}

SecretBytes bytesOf(const BIGNUM* number) {
    bytes content(static_cast<std::size_t>(BN_num_bytes(number)));
    BN_bn2bin(number, content.data());
    return SecretBytes(std::move(content));
}

// Decimal, as everybody writes the usual ones. Others are in hex, which does not take long at any size.
std::string exponentText(const BIGNUM* exponent) {
    if (BN_num_bits(exponent) > 32) {
        return "0x" + Util::toHexString(bytesOf(exponent).get(), "");
    }
    return std::to_string(BN_get_word(exponent));
}

// Null for a key that the library does not take.
std::shared_ptr<RSA> rsaOf(const EVP_PKEY* key) {
    return libraryVerdictOn(key).empty() ? OpenSSLPKey(key).toRSA() : nullptr;
}

// Keeps the number 0, or no number at all, out of a report.
void addNumber(const char* name, const char* label, const BIGNUM* number, Secrets secrets, Report& report) {
    if (number != nullptr && BN_is_zero(number) == 0) {
        report.facts.push_back({name, label, secretText(bytesOf(number).get(), secrets)});
    }
}

}  // namespace

OpenSSLKey publicKeyInDer(const bytes& der) {
    OpenSSLKey key =
        keyIn(der, [](const unsigned char** at, long size) { return d2i_PUBKEY(nullptr, at, size); });
    return key ? key : keyIn(der, [](const unsigned char** at, long size) {
        return d2i_PublicKey(EVP_PKEY_RSA, nullptr, at, size);
    });
}

OpenSSLKey privateKeyInDer(const bytes& der) {
    // OpenSSL might want to ask for the password.
    return isEncryptedInDer(der) || !hasSizeOfPrivateKey(der)
               ? nullptr
               : keyIn(der, [](const unsigned char** at, long size) {
                     return d2i_AutoPrivateKey(nullptr, at, size);
                 });
}

bytes firstElement(const bytes& der) {
    const unsigned char* at = der.data();
    long length = 0;
    int tag = 0;
    int tagClass = 0;
    const bool isRead =
        !der.empty() &&
        (ASN1_get_object(&at, &length, &tag, &tagClass, static_cast<long>(der.size())) & 0x81) == 0;
    ERR_clear_error();
    return isRead ? bytes(der.data(), at + length) : der;
}

bool isEncryptedInDer(const bytes& der) {
    const unsigned char* at = der.data();
    const std::unique_ptr<X509_SIG, decltype(&X509_SIG_free)> outer(
        der.empty() ? nullptr : d2i_X509_SIG(nullptr, &at, static_cast<long>(der.size())), X509_SIG_free);
    ERR_clear_error();
    if (!outer || at != der.data() + der.size()) {
        return false;
    }
    const X509_ALGOR* algorithm = nullptr;
    X509_SIG_get0(outer.get(), &algorithm, nullptr);
    const ASN1_OBJECT* id = nullptr;
    X509_ALGOR_get0(&id, nullptr, nullptr, algorithm);
    return EVP_PBE_find(EVP_PBE_TYPE_OUTER, OBJ_obj2nid(id), nullptr, nullptr, nullptr) == 1;
}

std::string algorithmName(const EVP_PKEY* key) {
    const int type = EVP_PKEY_base_id(key);
    const auto* const known = std::find_if(std::begin(ALGORITHM_NAMES), std::end(ALGORITHM_NAMES),
                                           [type](const AlgorithmName& each) { return each.type == type; });
    if (known != std::end(ALGORITHM_NAMES)) {
        return known->name;
    }
    const char* const name = OBJ_nid2ln(type);
    ERR_clear_error();
    return name != nullptr ? name : "type " + std::to_string(type);
}

std::string libraryVerdictOn(const EVP_PKEY* key) {
    try {
        const OpenSSLPKey taken(key);
        return "";
    } catch (const VORLException& fault) {
        return fault.what();
    } catch (const OpenSSLException& fault) {
        return std::string(fault.what()) + " failed in OpenSSL";
    }
}

void addKeyFacts(EVP_PKEY* key, Report& report) {
    report.facts.push_back({"keyAlgorithm", "key algorithm", algorithmName(key)});
    report.facts.push_back({"keyBits", "bits in the key", static_cast<std::uint64_t>(EVP_PKEY_bits(key))});
    if (const std::shared_ptr<RSA> rsa = rsaOf(key)) {
        const BIGNUM* exponent = nullptr;
        RSA_get0_key(rsa.get(), nullptr, &exponent, nullptr);
        report.facts.push_back({"publicExponent", "public exponent", exponentText(exponent)});
    }
    report.facts.push_back({"keySha256", "SHA-256 of the public key", sha256Text(publicDer(key))});
}

void addPrivateFacts(const EVP_PKEY* key, Secrets secrets, Report& report) {
    const std::shared_ptr<RSA> rsa = rsaOf(key);
    if (!rsa) {
        return;
    }
    addNumber("privateExponent", "private exponent", RSA_get0_d(rsa.get()), secrets, report);
    addNumber("prime1", "prime 1", RSA_get0_p(rsa.get()), secrets, report);
    addNumber("prime2", "prime 2", RSA_get0_q(rsa.get()), secrets, report);
    addNumber("exponent1", "exponent 1", RSA_get0_dmp1(rsa.get()), secrets, report);
    addNumber("exponent2", "exponent 2", RSA_get0_dmq1(rsa.get()), secrets, report);
    addNumber("coefficient", "coefficient", RSA_get0_iqmp(rsa.get()), secrets, report);
}

std::string sha256Text(const bytes& data) {
    Digester digester(DigestAlgo::SHA256());
    digester.init();
    digester.update(data);
    return Util::toHexString(digester.final(), "");
}

}  // namespace vorl::tool
