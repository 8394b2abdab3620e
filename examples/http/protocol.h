#ifndef EXAMPLES_HTTP_PROTOCOL_H
#define EXAMPLES_HTTP_PROTOCOL_H

#include <vorl/vorl.h>

#include <httplib.h>
#include <tarvik/http/HttpResponse.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

/// What device and service have in common: two exchanges, of which every body is lines of text.
///
///     POST /v1/agree      the device's DH record
///                         -> session, the service's DH record, its signature over both records and the
///                         session
///     POST /v1/messages   an envelope; signed (RFC 9421), the session is the keyid
///                         -> an envelope with the receipt, the service's signature over the session and the
///                         receipt; signed too
///
/// The keys are those of vorl::ClientKeys from the agreed secret: the encryption key makes the
/// vorl::VorlContext, which encrypts and signs. The certificate, which the device has from its maker, proves
/// who is at the other end.
namespace example {

/// Of RFC 2409, so that the example starts at once. Many use it, and who has spent the effort on it once
/// opens the agreements of all: a real service generates its own, and its devices are made with it.
extern const char GROUP[];
inline constexpr char AGREE[] = "/v1/agree";
inline constexpr char MESSAGES[] = "/v1/messages";
inline constexpr char CONTENT_TYPE[] = "application/octet-stream";

/// The library as both want it: full encryption alone.
void startLibrary();

/// Throws std::runtime_error, as do all refusals here.
[[noreturn]] void refuse(const std::string& reason);

vorl::bytes octetsOf(const std::string& text);
std::string textOf(const vorl::bytes& octets);

/// Exactly so many lines, without their ends. Refuses a text of fewer or more.
std::vector<std::string> linesOf(const std::string& text, std::size_t count);

/// What the service signs to prove that an agreement is its own.
vorl::bytes agreementOf(const std::string& session, const std::string& deviceRecord,
                        const std::string& serviceRecord);

/// The keys of an agreement. Refuses a peer that fixes the secret at zero, which anybody knows.
vorl::ClientKeys keysOf(const vorl::DiffieHellman& own, const std::string& peerRecord);

/// What a receipt says.
std::string receiptFor(const vorl::bytes& message);

/// What the service signs to prove that a receipt is its own: alone, it would pass for one of another
/// session.
vorl::bytes signedReceiptOf(const std::string& session, const std::string& receipt);

/// Wiped when it goes.
class Secret {
public:
    explicit Secret(vorl::bytes octets) : octets_(std::move(octets)) {}
    ~Secret();

    Secret(const Secret&) = delete;
    Secret& operator=(const Secret&) = delete;

    const vorl::bytes& octets() const { return octets_; }

private:
    vorl::bytes octets_;
};

/// Between cpp-httplib and the library.
tarvik::http::IHttpStream::Fields fieldsOf(const httplib::Headers& headers);
httplib::Headers headersOf(const tarvik::http::IHttpStream::Fields& fields);

}  // namespace example

#endif
