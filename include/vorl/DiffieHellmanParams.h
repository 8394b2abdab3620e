#ifndef VORL_DIFFIEHELLMANPARAMS_H
#define VORL_DIFFIEHELLMANPARAMS_H

#include "vorl/bytes.h"
#include "vorl/export.h"

#include <openssl/ossl_typ.h>

#include <memory>
#include <string>

namespace vorl {

class Buffer;
class DiffieHellman;

/// A group for Diffie-Hellman: a prime p and a generator g. Objects never share their OpenSSL DH.
///
/// Reading checks the form, not the mathematics: whoever takes a group from elsewhere trusts its source, or
/// has OpenSSL's DH_check() judge it.
class VORL_API DiffieHellmanParams {
public:
    /// From DER (PKCS #3, DHParameter). Bytes behind the structure are not looked at.
    /// Throws VORLException for a null pointer and an empty vector, OpenSSLException for what is not DER.
    DiffieHellmanParams(const unsigned char* der, unsigned int len);
    explicit DiffieHellmanParams(const bytes& der);
    /// From PEM text. Throws VORLException "Unable to read DHParams from BIO".
    /// With instrumentation on, the encoded group is saved as "DHParams".
    explicit DiffieHellmanParams(const std::string& pem);
    /// Copies of p and g; keys are not copied. Throw OpenSSLException where the DH cannot be duplicated.
    explicit DiffieHellmanParams(const std::shared_ptr<DH>& dh);
    explicit DiffieHellmanParams(const DiffieHellman& dh);
    DiffieHellmanParams(const DiffieHellmanParams& other);
    DiffieHellmanParams& operator=(const DiffieHellmanParams& other);
    ~DiffieHellmanParams();

    /// The parameters of the next PEM block in `bio`. A block that is encrypted is refused: a password is
    /// neither asked for nor tried. Throws VORLException for a null BIO and where there is no such block.
    static std::shared_ptr<DH> loadFromPEM(const std::shared_ptr<BIO>& bio);
    /// From a PEM file. Throws OpenSSLException "BIO_new_file()" where it cannot be opened, and as
    /// loadFromPEM().
    static std::unique_ptr<DiffieHellmanParams> load(const std::string& fileName);

    /// A new group whose safe prime has `bits` bits; takes seconds from 1024 bits on. OpenSSL 3.0 makes none
    /// below 512. The generator comes first, and is 2 or 5: anything else aborts the process.
    /// What is left out is 5 and 512. Throws VORLException "failed DH generation".
    static std::unique_ptr<DiffieHellmanParams> generate(unsigned int generator, unsigned int bits);
    static std::unique_ptr<DiffieHellmanParams> generate(unsigned int bits);
    static std::unique_ptr<DiffieHellmanParams> generate();

    /// Appends p and g, each as an OctetString. A number that is 0 is not written: such a group cannot be
    /// read back.
    void encode(Buffer& out) const;
    /// Throws ASN1Exception where a block is missing or cut short.
    static std::unique_ptr<DiffieHellmanParams> decode(Buffer& in);

    bool operator==(const DiffieHellmanParams& other) const;
    bool operator!=(const DiffieHellmanParams& other) const { return !(*this == other); }

    /// Both numbers in hex.
    std::string toString() const;

private:
    friend class DiffieHellman;

    struct Owned {};
    DiffieHellmanParams(Owned tag, std::shared_ptr<DH> dh);

    static std::unique_ptr<DiffieHellmanParams> own(std::shared_ptr<DH> dh);
    void initObj(const unsigned char* data, std::size_t len);

    std::shared_ptr<DH> dh_;
};

}  // namespace vorl

#endif
