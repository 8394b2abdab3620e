// Whether the functions of docs/security.md, which are compiled as they stand there, do what it says.
//
//     security_doc_test PRIVATE.pem PUBLIC.pem

#include "checks.h"

#include <vorl/vorl.h>

#include <brisclient/Base64.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <tarvik/crypto/HttpRequestSigner.h>

#include <cstdio>
#include <fstream>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

using example::check;
using example::refusalOf;
using tarvik::crypto::HttpRequestSigner;
using Request = tarvik::http::IHttpStream::Request;

vorl::bytes openRequest(vorl::VorlContext& context, HttpRequestSigner& signer, const std::string& keyid,
                        const Request& request);
bool isGenuine(const vorl::ClientKeys& keys, const vorl::bytes& envelope, const vorl::bytes& received);
std::string answerTo(vorl::VorlContext& context, HttpRequestSigner& signer, const std::string& keyid,
                     const Request& request, std::ostream& log);
void startUp();
vorl::ClientKeys keysFrom(const vorl::bytes& secret);
vorl::DiffieHellmanParams ownGroup(const std::string& fileName);
vorl::bytes secretOf(const vorl::bytes& number);
std::pair<vorl::bytes, vorl::bytes> signedAfresh(const std::shared_ptr<const vorl::PrivKey>& key,
                                                 const vorl::bytes& text);
std::string digestOf(const vorl::bytes& secret);
bool isQuiet();
vorl::ClientKeys agreedKeys(const vorl::DiffieHellman& own, const vorl::bytes& peer);

namespace {

// RFC 2409, section 6.2: it has a safe prime of 1024 bits.
const char GROUP[] = R"(-----BEGIN DH PARAMETERS-----
MIGHAoGBAP//////////yQ/aoiFowjTExmKLgNwc0SkCTgiKZ8x0Agu+pjsTmyJR
Sgh5jjQE3e+VGbPNOkMbMCsKbfJfFDdP4TVtbVHCReSFtXZiXn7G9ExC6aY37WsL
/1y29Aa37e44a/taiZ+lrp8kEXxLH+ZJKGZR7OZTgf//////////AgEC
-----END DH PARAMETERS-----
)";
const char KEYID[] = "00";

vorl::bytes octetsOf(const std::string& text) {
    return vorl::bytes(text.begin(), text.end());
}

void checkRequests() {
    const vorl::bytes key(16, 0x11);
    vorl::VorlContext context(key);
    HttpRequestSigner device(HttpRequestSigner::keyOfContext(key));
    HttpRequestSigner service(HttpRequestSigner::keyOfContext(key));
    Request good{"POST", "http://127.0.0.1/", {{"Content-Type", "text/plain"}}, {}};
    good.body = context.encrypt(octetsOf("hello"));
    const Request isUnsigned = good;
    Request malformed = good;
    malformed.body = octetsOf("AAAA");
    Request again = good;
    device.sign(KEYID, good);
    device.sign(KEYID, malformed);
    device.sign(KEYID, again);

    check(openRequest(context, service, KEYID, good) == octetsOf("hello"), "openRequest opens a signed one");
    check(refusalOf([&] { openRequest(context, service, KEYID, good); }) == "refused",
          "openRequest refuses a replay");
    check(refusalOf([&] { openRequest(context, service, KEYID, isUnsigned); }) == "refused",
          "openRequest refuses an unsigned one");

    std::ostringstream log;
    check(answerTo(context, service, KEYID, again, log) == "received 5 bytes", "answerTo accepts");
    check(log.str().empty(), "answerTo logs nothing then");
    std::ostringstream ofUnsigned;
    std::ostringstream ofMalformed;
    check(answerTo(context, service, KEYID, isUnsigned, ofUnsigned) == "refused",
          "answerTo to an unsigned one");
    check(answerTo(context, service, KEYID, malformed, ofMalformed) == "refused",
          "answerTo to a malformed one");
    check(ofUnsigned.str() == "refused\n", "answerTo verifies first");
    check(!ofMalformed.str().empty() && ofMalformed.str() != ofUnsigned.str(),
          "answerTo tells us the reason");
}

void checkCodes() {
    const vorl::ClientKeys keys(std::string("an identifier"));
    const vorl::bytes envelope = octetsOf("an envelope");
    vorl::bytes code(EVP_MAX_MD_SIZE);
    unsigned int size = 0;
    HMAC(EVP_sha256(), keys.hmacKey().data(), static_cast<int>(keys.hmacKey().size()), envelope.data(),
         envelope.size(), code.data(), &size);
    code.resize(size);
    const vorl::bytes right = Tarvik::BrisClient::Base64::encode(code);
    vorl::bytes wrong = right;
    wrong.front() ^= 1;
    check(isGenuine(keys, envelope, right), "isGenuine takes OpenSSL's code in Base64");
    check(!isGenuine(keys, envelope, wrong), "isGenuine refuses a wrong one");
    check(!isGenuine(keys, envelope, {}), "isGenuine refuses an empty one");
    check(!isGenuine(keys, envelope, vorl::bytes(right.begin(), right.end() - 1)),
          "isGenuine refuses a part");
    check(!isGenuine(keys, envelope, code), "isGenuine refuses one that is not Base64");
    check(!isGenuine(keys, octetsOf("another"), right), "isGenuine refuses another envelope");
}

bool isAccepted(const std::string& group) {
    const std::string fileName = "security_doc_group.pem";
    std::ofstream(fileName) << group;
    const std::string refusal = refusalOf([&] { ownGroup(fileName); });
    check(std::remove(fileName.c_str()) == 0, "the group is a file");
    check(refusal.empty() || refusal == "this is no group to use: " + fileName, "ownGroup says which group");
    return refusal.empty();
}

void checkAgreement() {
    check(refusalOf([] { keysFrom(vorl::bytes(128)); }) == "the peer has fixed the secret",
          "keysFrom refuses a secret of zeros");
    vorl::bytes secret(128);
    secret.at(100) = 1;
    check(keysFrom(secret) == vorl::ClientKeys(secret), "keysFrom gives the keys of any other secret");

    check(isAccepted(GROUP), "ownGroup takes a safe prime");
    std::string composite = GROUP;
    composite.replace(composite.find("aoiFowj"), 7, "aoiFowk");
    check(!isAccepted(composite), "ownGroup refuses a number that is no prime");
    check(!isAccepted(vorl::DiffieHellmanParams(std::string(GROUP)).toString()),
          "ownGroup refuses what is no PEM");
    check(refusalOf([] { ownGroup("missing"); }) == "this is no group to use: missing",
          "ownGroup reads a file");

    const vorl::DiffieHellmanParams group{std::string(GROUP)};
    const auto one = vorl::DiffieHellman::generate(group);
    const auto other = vorl::DiffieHellman::generate(group);
    check(agreedKeys(*one, other->getPubKey()) == agreedKeys(*other, one->getPubKey()), "agreedKeys agree");
    check(agreedKeys(*one, other->getPubKey()) == keysFrom(one->computeSharedSecret(other->getPubKey())),
          "agreedKeys are those of the secret");

    vorl::bytes expected(128);
    expected.at(0) = 1;
    expected.at(1) = 2;
    check(secretOf({0, 0, 1, 2}) == expected, "secretOf puts a short number in front");
    expected.assign(128, 0xff);
    expected.back() = 0;
    check(secretOf(vorl::bytes(128, 0xff)) == expected, "secretOf clears the last byte");
    check(refusalOf([] { secretOf(vorl::bytes(129, 1)); }) == "the number is of another group",
          "secretOf refuses a longer number");
}

void checkSignatures(const std::string& privateKey, const std::string& publicKey) {
    const auto key = vorl::PrivKey::loadFromPEMFile(privateKey);
    const vorl::bytes text = octetsOf("a text of theirs");
    const auto [sent, signature] = signedAfresh(key, text);
    check(vorl::PKSignatureProcessor::verify(vorl::PKSignature::decode(signature),
                                             vorl::PubKey::loadFromPEMFile(publicKey), sent),
          "signedAfresh signs what is sent");
    check(sent.size() == 16 + text.size() && vorl::bytes(sent.begin() + 16, sent.end()) == text,
          "signedAfresh sends the text");
    check(signedAfresh(key, text).first != sent, "signedAfresh signs nothing twice");
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.size() != 2) {
        std::cerr << "usage: security_doc_test PRIVATE.pem PUBLIC.pem\n";
        return 2;
    }
    return example::statusOf([&] {
        vorl::Random::init_ = false;
        startUp();
        check(vorl::Random::init_, "startUp finds the generator seeded");
        check(isQuiet(), "isQuiet before instrumentation is switched on");
        // FIPS 180-4, of "abc".
        check(digestOf(octetsOf("abc")) == "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad",
              "digestOf is SHA-256");
        checkRequests();
        checkCodes();
        checkAgreement();
        checkSignatures(arguments[0], arguments[1]);
    });
}
