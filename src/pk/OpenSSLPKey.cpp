#include "vorl/OpenSSLPKey.h"

#include "core/ErrorQueueMark.h"
#include "core/blanks.h"
#include "core/memory_bio.h"
#include "vorl/OpenSSLException.h"
#include "vorl/PKAlgo.h"
#include "vorl/VORLException.h"
#include "vorl/safe_ptr.h"

#include <openssl/evp.h>
#include <openssl/rsa.h>

#include <algorithm>
#include <limits>

namespace vorl {

namespace {

// OpenSSL takes a key that is not const, but does no more to it than count a reference, and than keep a copy
// of the RSA key of a provider.
//
// A key without a modulus is none: OpenSSL would look for its size and not find it.
std::shared_ptr<RSA> rsaOf(const EVP_PKEY* pkey) {
    auto* const source = const_cast<EVP_PKEY*>(pkey);  // NOLINT(cppcoreguidelines-pro-type-const-cast)
    std::shared_ptr<RSA> rsa = safe_ptr(EVP_PKEY_get1_RSA(source));
    return rsa && RSA_get0_n(rsa.get()) != nullptr ? rsa : nullptr;
}

[[noreturn]] void failInKey(const char* context, int line, const char* function) {
    OpenSSLException::throw_message(context, "OpenSSLPKey", line, function);
}

}  // namespace

OpenSSLPKey::OpenSSLPKey(const EVP_PKEY* pkey) : pkey_(duplicate(pkey)) {}

OpenSSLPKey::OpenSSLPKey(const std::shared_ptr<const EVP_PKEY>& pkey) : pkey_(duplicate(pkey.get())) {}

OpenSSLPKey::OpenSSLPKey(const OpenSSLPKey& other)
    : FormatPrintable(other), pkey_(duplicate(other.pkey_.get())) {}

OpenSSLPKey& OpenSSLPKey::operator=(const OpenSSLPKey& other) {
    if (this != &other) {
        pkey_ = duplicate(other.pkey_.get());
    }
    return *this;
}

std::string OpenSSLPKey::toFormatString(const std::string& name, unsigned int /*width*/, unsigned int level,
                                        const std::string& /*separator*/, unsigned int indentSize) const {
    return indentOf(level, indentSize) + name + ":  " + toString() + "\n";
}

std::string OpenSSLPKey::toString() const {
    return "OpenSSL-PKEY (" + algo()->name + ")";
}

OpenSSLPKey::~OpenSSLPKey() = default;

std::shared_ptr<const PKAlgo> OpenSSLPKey::algo(const EVP_PKEY* pkey) {
    const int type = pkey != nullptr ? EVP_PKEY_base_id(pkey) : EVP_PKEY_NONE;
    if (type != EVP_PKEY_RSA) {
        throw VORLException("Unknown EVP_PKEY type value: " + std::to_string(type));
    }
    return PKAlgo::RSA();
}

std::shared_ptr<const PKAlgo> OpenSSLPKey::algo() const {
    return algo(pkey_.get());
}

std::shared_ptr<EVP_PKEY> OpenSSLPKey::duplicate(const EVP_PKEY* pkey) {
    algo(pkey);
    std::shared_ptr<EVP_PKEY> copy = safe_ptr(EVP_PKEY_new());
    if (!copy) {
        failInKey("EVP_PKEY_new() in OpenSSLPKey::duplicate()", __LINE__, __func__);
    }
    const std::shared_ptr<RSA> rsa = rsaOf(pkey);
    if (!rsa) {
        failInKey("EVP_PKEY_get1_RSA(pkey) in OpenSSLPKey::duplicate()", __LINE__, __func__);
    }
    if (EVP_PKEY_set1_RSA(copy.get(), rsa.get()) == 0) {
        failInKey("EVP_PKEY_set1_RSA(pkey_new.get(), rsa.get()) in OpenSSLPKey::duplicate()", __LINE__,
                  __func__);
    }
    return copy;
}

std::shared_ptr<RSA> OpenSSLPKey::toRSA() const {
    std::shared_ptr<RSA> rsa = rsaOf(pkey_.get());
    if (!rsa) {
        failInKey("EVP_PKEY_get1_RSA(pkey) in OpenSSLPKey::toRSA()", __LINE__, __func__);
    }
    return rsa;
}

bool OpenSSLPKey::operator==(const OpenSSLPKey& other) const {
    if (this == &other) {
        return true;
    }
    const ErrorQueueMark mark;
    return EVP_PKEY_cmp(pkey_.get(), other.pkey_.get()) == 1;
}

std::string OpenSSLPKey::print(const EVP_PKEY* pkey, unsigned int indent) {
    if (algo(pkey) != PKAlgo::RSA()) {
        throw VORLException("Unknown PKAlgo");
    }
    const std::shared_ptr<RSA> rsa = rsaOf(pkey);
    if (!rsa) {
        failInKey("EVP_PKEY_get1_RSA() in OpenSSLPKey::print(pkey)", __LINE__, __func__);
    }
    // OpenSSL counts in ints.
    const auto maxIndent = static_cast<unsigned int>(std::numeric_limits<int>::max());
    const std::shared_ptr<BIO> bio = newMemoryBio();
    if (!bio || RSA_print(bio.get(), rsa.get(), static_cast<int>(std::min(indent, maxIndent))) == 0) {
        failInKey("RSA_print() in OpenSSLPKey::print(pkey)", __LINE__, __func__);
    }
    std::string text;
    if (!readPending(bio.get(), text)) {
        failInKey("BIO_read() in OpenSSLPKey::print(pkey)", __LINE__, __func__);
    }
    return text;
}

}  // namespace vorl
