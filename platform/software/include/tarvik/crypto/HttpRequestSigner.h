#ifndef TARVIK_CRYPTO_HTTPREQUESTSIGNER_H
#define TARVIK_CRYPTO_HTTPREQUESTSIGNER_H

#include "tarvik/crypto/IRequestSigner.h"
#include "tarvik/export.h"
#include "tarvik/http/HttpResponse.h"
#include "tarvik/http/IHttpStream.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tarvik::crypto {

/// What the signatures of an HttpRequestSigner look like. As it is made, it is that of the software platform.
struct HttpSignatureProfile {
    /// The name of the signature within its fields.
    std::string label = "vorl";
    /// What is covered and what must be, in order: derived components ("@method") and fields ("date"), those
    /// of an answered request followed by ";req". Where there are none: of a request "@method" "@authority"
    /// "@path" "@query", with a body "content-digest" "content-type" too; of a response "@status"
    /// "content-digest", and where the request is known the first four of it, with a body its
    /// "content-digest", and its "signature" if it has one. A list that fits requests and responses alike
    /// lets the one pass for the other.
    std::vector<std::string> components;
    /// The parameters, in order; each of them must be there to be verified, and in any case "created" and
    /// "keyid". These are the ones there are.
    std::vector<std::string> parameters = {"created", "expires", "nonce", "keyid", "alg", "tag"};
    /// The value of the parameter "tag".
    std::string tag = "vorl-1";
    /// From "created" to "expires", in seconds.
    std::int64_t lifetime = 300;
    /// How many nonces are remembered at a time; a signature with a further one is refused.
    std::size_t mostNonces = 65536;
    /// Seconds since 1970, of at most 15 digits; the system's clock where there is none.
    std::function<std::int64_t()> clock;
};

/// Signs HTTP messages (RFC 9421, hmac-sha256) over their digest (RFC 9530, sha-256), and verifies such
/// signatures.
///
/// The string of sign() and verify() is the signature's keyid. A signature is good for 300 seconds, and with
/// a nonce for one verification by the same object. Who has several peers keeps one object for each.
class TARVIK_API HttpRequestSigner : public IRequestSigner {
public:
    /// With a key of at least one byte, taken as it is, and the software platform's profile. Throws
    /// vorl::VORLException for an empty key: everybody could sign with it.
    explicit HttpRequestSigner(const std::vector<unsigned char>& key);
    /// Throws vorl::VORLException for an empty key and for a profile that cannot be written: a label that is
    /// no key of a structured field, a component or a parameter that is not known or stands twice, a tag that
    /// is not ASCII, a lifetime that is negative or has more than 15 digits. So it does for one whose
    /// signatures would never be verified: with more than 16 components, or with "signature" or
    /// "signature-input" among them.
    HttpRequestSigner(const std::vector<unsigned char>& key, const HttpSignatureProfile& profile);
    ~HttpRequestSigner() override;

    HttpRequestSigner(const HttpRequestSigner&) = delete;
    HttpRequestSigner& operator=(const HttpRequestSigner&) = delete;

    /// The signing key that belongs to the key of a vorl::VorlContext: its HMAC-SHA256 of a fixed label, so
    /// that the same bytes never are cipher key and signing key. Throws vorl::VORLException for an empty
    /// key.
    static std::vector<unsigned char> keyOfContext(const std::vector<unsigned char>& contextKey);

    /// Appends the fields Signature-Input and Signature and, where it is covered, Content-Digest, unless
    /// there is one that has the SHA-256 of the body. Signatures that this operation has added before are
    /// replaced, so that a request can be sent again, and so is a digest of another body. Throws
    /// vorl::VORLException for what cannot be signed (the text names the component) and where the names and
    /// values of all fields would have more bytes than the 8192 that are verified; fields that are added on
    /// the way count too. Throws vorl::OpenSSLException where vorl::Random is not initialised. The request is
    /// then as it was.
    void sign(const std::string& keyid, tarvik::http::IHttpStream::Request& request) override;
    /// Whether the response carries one signature under the profile's label, by this key and keyid, in time
    /// and for the first time, over all that the profile covers, and the body is the one that was digested.
    /// Nothing is thrown but lack of memory, and what the profile's clock throws.
    bool verify(const std::string& keyid, tarvik::http::IHttpStream& stream) override;

    /// What the other side does: a service signs the responses and verifies the requests.
    void signResponse(const std::string& keyid, tarvik::http::HttpResponse& response);
    bool verifyRequest(const std::string& keyid, const tarvik::http::IHttpStream::Request& request);

    /// The keyid that a message says it was signed with, so that the key can be found. Nothing where it does
    /// not say.
    static std::optional<std::string> keyidOf(const tarvik::http::IHttpStream::Fields& fields,
                                              const std::string& label = "vorl");

    /// The text that a signature is computed of, for those who look for a difference: of a signed message as
    /// its fields tell it, of another one as it would be signed now. Throws vorl::VORLException where there
    /// is none.
    std::string signatureBase(const std::string& keyid,
                              const tarvik::http::IHttpStream::Request& request) const;
    std::string signatureBase(const std::string& keyid, const tarvik::http::HttpResponse& response) const;

private:
    class Engine;
    std::unique_ptr<Engine> engine_;
};

}  // namespace tarvik::crypto

#endif
