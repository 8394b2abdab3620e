#ifndef VORL_BIGNUM_H
#define VORL_BIGNUM_H

#include "vorl/bytes.h"
#include "vorl/export.h"

#include <openssl/ossl_typ.h>

#include <memory>
#include <string>

namespace vorl {

/// A non-negative integer of any size.
///
/// As bytes it is unsigned and big-endian; leading zero bytes are read and not written. Objects never share a
/// number, and it is wiped when the object goes.
class VORL_API BigNum {
public:
    /// Throw OpenSSLException, "BN_bin2bn()" here and "BN_bin2bn" there, where OpenSSL fails, and for more
    /// than 2^31 - 1 bytes.
    BigNum(const unsigned char* data, unsigned int len);
    explicit BigNum(const bytes& data);
    /// A copy; 0 for null. A negative number keeps its sign, which toString() and comparison see, but
    /// encode() does not write. Throws OpenSSLException "BN_dup/BN_new".
    explicit BigNum(const BIGNUM* bn);
    /// Throws OpenSSLException "BN_dup()".
    BigNum(const BigNum& other);
    /// Where OpenSSL has no memory, the object is left without a number: it encodes as 0 and has no text.
    BigNum& operator=(const BigNum& other);
    ~BigNum();

    /// The number whose encoding `b64` is in Base64. A text that is not Base64 is the number 0.
    static BigNum fromBase64(const bytes& b64);

    /// Bytes of the magnitude; none for 0.
    unsigned int size() const;
    /// size() bytes.
    bytes encode() const;
    bytes toBase64() const;

    /// The number itself, still owned by the object.
    const BIGNUM* getBIGNUM() const { return bn_.get(); }

    bool operator==(const BigNum& other) const;
    bool operator!=(const BigNum& other) const { return !(*this == other); }

    /// OpenSSL's form: upper-case hexadecimal without a prefix, "0" for zero.
    /// Throws OpenSSLException where OpenSSL cannot print.
    std::string toString() const;

    /// The bytes of encode() as a block: see Util::toFormatHexString. What is left out comes from Env.
    std::string toFormatString(const std::string& name, unsigned int width, unsigned int level,
                               const std::string& separator, unsigned int indentSize) const;
    std::string toFormatString(const std::string& name, unsigned int width, unsigned int level) const;
    std::string toFormatString(const std::string& name) const;

private:
    void wipe();

    std::shared_ptr<BIGNUM> bn_;
};

}  // namespace vorl

#endif
