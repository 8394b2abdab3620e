// Whether the functions of docs/security.md, which are compiled as they stand there, do what it says.
//
//     security_doc_test PRIVATE.pem PUBLIC.pem

#include "SecretWatch.h"
#include "checks.h"
#include "unsafe_groups.h"

#include <vorl/vorl.h>

#include <brisclient/Base64.h>
#include <openssl/asn1.h>
#include <openssl/bn.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <openssl/pem.h>
#include <tarvik/crypto/HttpRequestSigner.h>

#include <algorithm>
#include <cstddef>
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
void keepQuiet();
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

const char NO_GROUP_TO_USE[] = "this is no group to use: security_doc_group.pem";

// Why ownGroup() refuses a file of that text; nothing where it gives the group that is in it.
std::string refusalOfGroup(const std::string& text) {
    const std::string fileName = "security_doc_group.pem";
    std::ofstream(fileName) << text;
    std::string refusal = refusalOf([&] {
        check(ownGroup(fileName) == vorl::DiffieHellmanParams(text), "ownGroup gives what is in the file");
    });
    check(std::remove(fileName.c_str()) == 0, "the group is a file");
    return refusal;
}

using Number = std::unique_ptr<BIGNUM, decltype(&BN_free)>;

// A number of so many more or fewer.
Number near(const BIGNUM* number, int difference) {
    Number other(BN_dup(number), BN_free);
    check((difference < 0 ? BN_sub_word(other.get(), static_cast<BN_ULONG>(-difference))
                          : BN_add_word(other.get(), static_cast<BN_ULONG>(difference))) == 1,
          "BN_add_word()");
    return other;
}

vorl::bytes derOf(const BIGNUM* number) {
    const std::unique_ptr<ASN1_INTEGER, decltype(&ASN1_INTEGER_free)> integer(
        BN_to_ASN1_INTEGER(number, nullptr), ASN1_INTEGER_free);
    vorl::bytes der(static_cast<std::size_t>(i2d_ASN1_INTEGER(integer.get(), nullptr)));
    unsigned char* end = der.data();
    check(i2d_ASN1_INTEGER(integer.get(), &end) == static_cast<int>(der.size()), "i2d_ASN1_INTEGER()");
    return der;
}

// PKCS #3, DHParameter, as PEM.
std::string groupOf(const Number& p, const Number& g) {
    vorl::bytes numbers = derOf(p.get());
    const vorl::bytes generator = derOf(g.get());
    numbers.insert(numbers.end(), generator.begin(), generator.end());
    vorl::bytes der(
        static_cast<std::size_t>(ASN1_object_size(1, static_cast<int>(numbers.size()), V_ASN1_SEQUENCE)));
    unsigned char* content = der.data();
    ASN1_put_object(&content, 1, static_cast<int>(numbers.size()), V_ASN1_SEQUENCE, V_ASN1_UNIVERSAL);
    std::copy(numbers.begin(), numbers.end(), content);
    const std::unique_ptr<BIO, decltype(&BIO_free)> file(BIO_new(BIO_s_mem()), BIO_free);
    check(PEM_write_bio(file.get(), "DH PARAMETERS", "", der.data(), static_cast<long>(der.size())) > 0,
          "PEM_write_bio()");
    std::string text(BIO_ctrl_pending(file.get()), ' ');
    check(BIO_read(file.get(), text.data(), static_cast<int>(text.size())) > 0, "BIO_read()");
    return text;
}

void checkGroups() {
    check(refusalOfGroup(GROUP).empty(), "ownGroup takes a safe prime");
    const Number p(BN_get_rfc2409_prime_1024(nullptr), BN_free);
    const Number two = near(BN_value_one(), 1);
    check(groupOf(p, two) == GROUP, "groups are written as OpenSSL does");

    check(refusalOfGroup(groupOf(p, near(p.get(), -2))).empty(), "ownGroup takes the last generator");
    for (const int fromP : {-1, 0, 1}) {
        check(refusalOfGroup(groupOf(p, near(p.get(), fromP))) == NO_GROUP_TO_USE,
              "ownGroup refuses a generator behind the last one");
    }
    check(refusalOfGroup(groupOf(p, near(BN_value_one(), 0))) == NO_GROUP_TO_USE,
          "ownGroup refuses a generator of 1");
    check(!refusalOfGroup(groupOf(p, near(BN_value_one(), -1))).empty(), "ownGroup refuses a generator of 0");

    check(refusalOfGroup(groupOf(near(p.get(), 2), two)) == NO_GROUP_TO_USE,
          "ownGroup refuses a number that is no prime");
    // The next one of which (p - 1) / 2 is a prime.
    check(refusalOfGroup(groupOf(near(p.get(), 180), two)) == NO_GROUP_TO_USE,
          "ownGroup refuses a number that is no prime though its half is one");
    check(refusalOfGroup(groupOf(near(p.get(), -1), two)) == NO_GROUP_TO_USE,
          "ownGroup refuses an even number");
    for (BIGNUM* const other : {BN_get_rfc2409_prime_768(nullptr), BN_get_rfc3526_prime_1536(nullptr)}) {
        check(refusalOfGroup(groupOf(Number(other, BN_free), two)) == NO_GROUP_TO_USE,
              "ownGroup refuses a safe prime of another size");
    }
    for (const char* const unsafe :
         {example::SMALL_SUBGROUP, example::BEHIND_ANOTHER_BLOCK, example::KNOWN_BY_NAME}) {
        check(refusalOfGroup(unsafe) == NO_GROUP_TO_USE, "ownGroup refuses a prime that is not safe");
        check(refusalOfGroup(std::string(GROUP) + unsafe).empty(), "ownGroup goes by the block it loads");
    }

    check(refusalOfGroup(vorl::DiffieHellmanParams(std::string(GROUP)).toString()) ==
              "Unable to read DHParams from BIO",
          "ownGroup refuses what is no PEM");
    check(refusalOf([] { ownGroup("missing"); }) == "BIO_new_file()", "ownGroup reads a file");
}

// What a peer sends, of a number of 128 bytes: the version, the length and the number.
vorl::bytes recordOf(const vorl::bytes& number) {
    vorl::bytes record{0, 0, 0, 2, 0x80, 0x80};
    record.insert(record.end(), number.begin(), number.end());
    return Tarvik::BrisClient::Base64::encode(record);
}

void checkAgreement() {
    const char fixed[] = "the peer has fixed the secret";
    check(refusalOf([] { keysFrom(vorl::bytes(128)); }) == fixed, "keysFrom refuses a secret of zeros");
    vorl::bytes secret(128);
    secret.at(100) = 1;
    check(keysFrom(secret) == vorl::ClientKeys(secret), "keysFrom gives the keys of any other secret");

    const vorl::DiffieHellmanParams group{std::string(GROUP)};
    const auto one = vorl::DiffieHellman::generate(group);
    const auto other = vorl::DiffieHellman::generate(group);
    check(agreedKeys(*one, other->getPubKey()) == agreedKeys(*other, one->getPubKey()), "agreedKeys agree");
    secret = one->computeSharedSecret(other->getPubKey());
    check(agreedKeys(*one, other->getPubKey()) == keysFrom(secret), "agreedKeys are those of the secret");
    check(refusalOf([&] { agreedKeys(*one, recordOf(vorl::bytes(128))); }) == fixed,
          "agreedKeys refuse a number of 0");
    const vorl::test::SecretWatch watch(secret);
    agreedKeys(*one, other->getPubKey());
    check(watch.releasedWithSecret() == 0, "agreedKeys wipe the secret");

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
        vorl::Env::setInstrumentation(vorl::DIFFIE_HELLMAN, true);
        check(!isQuiet(), "it is not quiet after that");
        keepQuiet();
        check(isQuiet(), "keepQuiet switches it off");
        // FIPS 180-4, of "abc".
        check(digestOf(octetsOf("abc")) == "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad",
              "digestOf is SHA-256");
        checkRequests();
        checkCodes();
        checkGroups();
        checkAgreement();
        checkSignatures(arguments[0], arguments[1]);
    });
}
