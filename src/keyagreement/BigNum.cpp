#include "vorl/BigNum.h"

#include "core/ErrorQueueMark.h"
#include "core/WipeUnlessKept.h"
#include "core/memory_bio.h"
#include "vorl/Env.h"
#include "vorl/OpenSSLException.h"
#include "vorl/Util.h"
#include "vorl/safe_ptr.h"

#include <brisclient/Base64.h>
#include <openssl/bn.h>

#include <cstddef>
#include <limits>
#include <utility>

namespace vorl {

namespace {

// Null for more bytes than OpenSSL counts.
std::shared_ptr<BIGNUM> numberFrom(const unsigned char* data, std::size_t len) {
    if (len > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
        return nullptr;
    }
    return safe_ptr(BN_bin2bn(data, static_cast<int>(len), nullptr));
}

}  // namespace

BigNum::BigNum(const unsigned char* data, unsigned int len) : bn_(numberFrom(data, len)) {
    if (!bn_) {
        OpenSSLException::throw_message("BN_bin2bn()", "BigNum", __LINE__, __func__);
    }
}

BigNum::BigNum(const bytes& data) : bn_(numberFrom(data.data(), data.size())) {
    if (!bn_) {
        // Without the other constructor's "()": logs are searched for both.
        OpenSSLException::throw_message("BN_bin2bn", "BigNum", __LINE__, __func__);
    }
}

BigNum::BigNum(const BIGNUM* bn) : bn_(safe_ptr(bn != nullptr ? BN_dup(bn) : BN_new())) {
    if (!bn_) {
        OpenSSLException::throw_message("BN_dup/BN_new", "BigNum", __LINE__, __func__);
    }
}

BigNum::BigNum(const BigNum& other) : bn_(safe_ptr(BN_dup(other.bn_.get()))) {
    if (!bn_) {
        OpenSSLException::throw_message("BN_dup()", "BigNum", __LINE__, __func__);
    }
}

BigNum& BigNum::operator=(const BigNum& other) {
    if (this != &other) {
        // Its failure is not reported.
        const ErrorQueueMark mark;
        std::shared_ptr<BIGNUM> copy = safe_ptr(BN_dup(other.bn_.get()));
        wipe();
        bn_ = std::move(copy);
    }
    return *this;
}

BigNum::~BigNum() {
    wipe();
}

BigNum BigNum::fromBase64(const bytes& b64) {
    bytes number = Tarvik::BrisClient::Base64::decode(b64);
    const WipeUnlessKept wipe(number);
    return BigNum(number);
}

unsigned int BigNum::size() const {
    return bn_ ? static_cast<unsigned int>(BN_num_bytes(bn_.get())) : 0;
}

bytes BigNum::encode() const {
    bytes number(size());
    if (!number.empty()) {
        BN_bn2bin(bn_.get(), number.data());
    }
    return number;
}

bytes BigNum::toBase64() const {
    bytes number = encode();
    const WipeUnlessKept wipe(number);
    return Tarvik::BrisClient::Base64::encode(number);
}

bool BigNum::operator==(const BigNum& other) const {
    return BN_cmp(bn_.get(), other.bn_.get()) == 0;
}

std::string BigNum::toString() const {
    const std::shared_ptr<BIO> bio = newMemoryBio();
    if (!bio || !bn_ || BN_print(bio.get(), bn_.get()) == 0) {
        OpenSSLException::throw_message("BN_print() in BigNum::toString()", "BigNum", __LINE__, __func__);
    }
    std::string text;
    if (!readPending(bio.get(), text)) {
        OpenSSLException::throw_message("BIO_read() in BigNum::toString()", "BigNum", __LINE__, __func__);
    }
    return text;
}

std::string BigNum::toFormatString(const std::string& name, unsigned int width, unsigned int level,
                                   const std::string& separator, unsigned int indentSize) const {
    bytes number = encode();
    const WipeUnlessKept wipe(number);
    return Util::toFormatHexString(number, name, width, level, separator, indentSize);
}

std::string BigNum::toFormatString(const std::string& name, unsigned int width, unsigned int level) const {
    const Env& env = *Env::instance();
    return toFormatString(name, width, level, env.fmtSeparator(), env.fmtIndentSize());
}

std::string BigNum::toFormatString(const std::string& name) const {
    const Env& env = *Env::instance();
    return toFormatString(name, env.fmtWidth(), env.fmtLevel());
}

// BN_free() leaves the digits in memory, and the number may have been a private key.
void BigNum::wipe() {
    if (bn_) {
        BN_clear(bn_.get());
    }
}

}  // namespace vorl
