#ifndef VORL_PKSIGNATUREPROCESSOR_H
#define VORL_PKSIGNATUREPROCESSOR_H

#include "vorl/Digester.h"
#include "vorl/bytes.h"
#include "vorl/export.h"

#include <memory>
#include <string>

namespace vorl {

class PKSignature;
class PKSignatureAlgo;
class PrivKey;
class PubKey;
class X509Cert;

/// Makes or verifies one RSA signature over data that comes in pieces: an init with a key, update() as often
/// as needed, then sign() or verify() once.
///
/// The data counts from construction: no init restarts the digest, so that data may come before the key does.
/// What a second sign() or verify() gives means nothing; each signature takes a processor of its own, as the
/// one-shot forms do.
class VORL_API PKSignatureProcessor {
public:
    enum Mode : unsigned int {
        SIGN = 0,
        VERIFY = 1,
        UNINITIALIZED = 2,
    };

    explicit PKSignatureProcessor(std::shared_ptr<const PKSignatureAlgo> algo);
    PKSignatureProcessor(const PKSignatureProcessor&) = delete;
    PKSignatureProcessor& operator=(const PKSignatureProcessor&) = delete;

    static std::shared_ptr<PKSignatureProcessor> create(const std::shared_ptr<const PKSignatureAlgo>& algo);
    /// For PKSignatureAlgo::SHA1withRSA().
    static std::shared_ptr<PKSignatureProcessor> create();

    /// Throws VORLException for a null key, with the mode as it was, and for a key of another algorithm, with
    /// the mode SIGN already.
    virtual void initSign(const std::shared_ptr<const PrivKey>& key);
    /// The key must not be null. Throws VORLException for a key of another algorithm, with the mode VERIFY
    /// already.
    virtual void initVerify(const std::shared_ptr<const PubKey>& key);
    /// In any mode, also before an init. Throws OpenSSLException where OpenSSL cannot digest the data.
    virtual void update(const bytes& data);
    /// Throws VORLException in another mode than SIGN and without a key, OpenSSLException where OpenSSL
    /// cannot sign.
    virtual std::shared_ptr<const PKSignature> sign();
    /// Whether the signature is the key's own over the data. One that does not match, or is malformed, is
    /// false and no error, as is one that OpenSSL has no memory to check.
    /// Throws VORLException in another mode than VERIFY and without a key, OpenSSLException where OpenSSL
    /// cannot digest.
    virtual bool verify(const std::shared_ptr<const PKSignature>& signature);
    virtual ~PKSignatureProcessor();

    /// With the certificate's key. Whether the certificate can be trusted is not looked at: see X509Cert.
    void initVerify(const std::shared_ptr<const X509Cert>& cert);

    /// All in one: a processor of its own, an init, the data, and the result.
    static std::shared_ptr<const PKSignature> sign(const std::shared_ptr<const PrivKey>& privKey,
                                                   const bytes& data);
    static bool verify(const std::shared_ptr<const PKSignature>& signature,
                       const std::shared_ptr<const PubKey>& pubKey, const bytes& data);

    /// For example "Signature Creation". Throws VORLException for a value that is no mode.
    static std::string modeToString(Mode mode);

private:
    std::shared_ptr<const PKSignatureAlgo> algo_;
    Digester digester_;
    Mode mode_ = UNINITIALIZED;
    std::shared_ptr<const PubKey> pubKey_;
    std::shared_ptr<const PrivKey> privKey_;
};

}  // namespace vorl

#endif
