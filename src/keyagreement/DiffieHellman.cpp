#include "vorl/DiffieHellman.h"

#include "core/ErrorQueueMark.h"
#include "core/WholeAppend.h"
#include "core/WipeUnlessKept.h"
#include "core/length_determinant.h"
#include "dh_fields.h"
#include "vorl/BigNum.h"
#include "vorl/Buffer.h"
#include "vorl/DHPubKey.h"
#include "vorl/DiffieHellmanParams.h"
#include "vorl/Env.h"
#include "vorl/OpenSSLException.h"
#include "vorl/Util.h"
#include "vorl/VORLException.h"
#include "vorl/safe_ptr.h"

#include <brisclient/Base64.h>
#include <openssl/bn.h>
#include <openssl/dh.h>

#include <cstddef>
#include <string>
#include <utility>

// An encoded key pair, block by block:
//
//   p          OctetString   unsigned, big-endian, no leading zeros
//   g          OctetString   the same
//   pub_key    OctetString   the same
//   priv_key   OctetString   the same

namespace vorl {

namespace {

const std::size_t SECRET_BYTES = 128;
const std::size_t MIN_PEER_KEY_BYTES = 120;
const std::size_t MAX_PEER_KEY_BYTES = 129;

[[noreturn]] void fail(const char* context, int line, const char* function) {
    OpenSSLException::throw_message(context, "DiffieHellman", line, function);
}

std::shared_ptr<DH> newDh(int line, const char* function) {
    std::shared_ptr<DH> dh = safe_ptr(DH_new());
    if (!dh) {
        fail("DH_new()", line, function);
    }
    return dh;
}

OwnedNumber copyOrFail(const BIGNUM* number, const char* context, int line, const char* function) {
    OwnedNumber copy = copyOf(number);
    if (!copy) {
        fail(context, line, function);
    }
    return copy;
}

// What the calls of BN_dup() are named after in the messages.
struct CopyContexts {
    const char* p;
    const char* g;
    const char* pubKey;
    const char* privKey;
};

void setNumbers(DH* dh, const DhNumbers& numbers, const CopyContexts& contexts, const char* function) {
    OwnedNumber p = copyOrFail(numbers.p, contexts.p, __LINE__, function);
    OwnedNumber g = copyOrFail(numbers.g, contexts.g, __LINE__, function);
    OwnedNumber pubKey = copyOrFail(numbers.pubKey, contexts.pubKey, __LINE__, function);
    OwnedNumber privKey = copyOrFail(numbers.privKey, contexts.privKey, __LINE__, function);
    setGroup(dh, std::move(p), std::move(g));
    setKeys(dh, std::move(pubKey), std::move(privKey));
}

// A complete copy, or the exception for the first number that is missing.
std::shared_ptr<DH> copyOfPair(const DH* dh, const char* function) {
    const DhNumbers numbers = numbersOf(dh);
    if (numbers.p == nullptr) {
        throw VORLException("DH prime is NULL");
    }
    if (numbers.g == nullptr) {
        throw VORLException("DH generator is NULL");
    }
    if (numbers.pubKey == nullptr) {
        throw VORLException("DH pub_key is NULL");
    }
    if (numbers.privKey == nullptr) {
        throw VORLException("DH priv_key is NULL");
    }
    std::shared_ptr<DH> copy = newDh(__LINE__, function);
    setNumbers(copy.get(), numbers,
               {"BN_dup(DH->p)", "BN_dup(DH->g)", "BN_dup(DH->pub_key)", "BN_dup(DH->priv_key)"}, function);
    return copy;
}

void putNumber(Buffer& out, const BIGNUM* number) {
    out.put(OctetString(BigNum(number).encode()));
}

// The same OctetString, without the copies that one leaves in freed memory while it is written.
void putSecretNumber(Buffer& out, const BIGNUM* number) {
    bytes octets = BigNum(number).encode();
    const WipeUnlessKept wipe(octets);
    std::size_t done = 0;
    for (Fragment fragment{}; done < octets.size(); done += fragment.units) {
        fragment = nextFragment(octets.size() - done);
        const LengthDeterminant determinant = determinantOf(fragment);
        out.put(determinant.octets, determinant.size);
        out.put(octets.data() + done, fragment.units);
    }
}

BigNum nextNumber(Buffer& in) {
    bytes octets = in.nextOctetString().takeBytes();
    const WipeUnlessKept wipe(octets);
    return BigNum(octets);
}

bool isInstrumented() {
    return Env::getInstrumentation(DIFFIE_HELLMAN);
}

void saveForDiagnosis(const DiffieHellman& pair) {
    Buffer encoded;
    pair.encode(encoded);
    bytes content = std::move(encoded).toByteArray();
    const WipeUnlessKept wipe(content);
    Util::saveInstrumentationFile("DiffieHellman", content);
}

// The public key as the service reads it: a positive number in two's complement, of 128 bytes at the least.
bytes paddedKey(const BIGNUM* pubKey) {
    bytes key = BigNum(pubKey).encode();
    if (!key.empty() && key.front() >= 0x80) {
        key.insert(key.begin(), 0x00);
    }
    if (key.size() < SECRET_BYTES) {
        key.insert(key.begin(), SECRET_BYTES - key.size(), 0x00);
    }
    return key;
}

}  // namespace

std::unique_ptr<DiffieHellman> DiffieHellman::generate(const DiffieHellmanParams& params) {
    const DhNumbers group = numbersOf(params.dh_.get());
    const std::shared_ptr<DH> dh = newDh(__LINE__, __func__);
    OwnedNumber p = copyOrFail(group.p, "BN_dup(DHParams->p)", __LINE__, __func__);
    OwnedNumber g = copyOrFail(group.g, "BN_dup(DHParams->g)", __LINE__, __func__);
    setGroup(dh.get(), std::move(p), std::move(g));
    if (DH_generate_key(dh.get()) == 0) {
        fail("DH_generate_key()", __LINE__, __func__);
    }
    auto pair = std::make_unique<DiffieHellman>(dh);
    if (isInstrumented()) {
        saveForDiagnosis(*pair);
    }
    return pair;
}

DiffieHellman::DiffieHellman(const std::shared_ptr<DH>& dh) : dh_(copyOfPair(dh.get(), __func__)) {}

DiffieHellman::DiffieHellman(const DiffieHellman& other) : dh_(copyOfPair(other.dh_.get(), __func__)) {}

DiffieHellman& DiffieHellman::operator=(const DiffieHellman& other) {
    if (this != &other) {
        dh_ = copyOfPair(other.dh_.get(), __func__);
    }
    return *this;
}

DiffieHellman::~DiffieHellman() = default;

bytes DiffieHellman::getPubKey() const {
    Buffer record;
    DHPubKey::create(paddedKey(numbersOf(dh_.get()).pubKey))->encode(record);
    return Tarvik::BrisClient::Base64::encode(std::move(record).toByteArray());
}

bytes DiffieHellman::computeSharedSecret(const bytes& serverPubKeyB64) const {
    const DhNumbers own = numbersOf(dh_.get());
    if (own.pubKey == nullptr || own.privKey == nullptr) {
        throw VORLException("Unitialized DiffieHellman object");
    }
    const bytes key = DHPubKey::decodeB64(serverPubKeyB64)->key();
    if (isInstrumented()) {
        Util::saveInstrumentationFile("DHRemotePubKey", key);
    }
    if (key.size() < MIN_PEER_KEY_BYTES || key.size() > MAX_PEER_KEY_BYTES) {
        throw VORLException("DH public key from server is " + std::to_string(key.size()) +
                            "bytes, expected 120-129");
    }
    const BigNum peer(key);
    const int groupBytes = DH_size(dh_.get());
    if (groupBytes != static_cast<int>(SECRET_BYTES)) {
        throw VORLException("DH shared secret size (" + std::to_string(groupBytes) + ") != 128");
    }

    bytes secret(SECRET_BYTES);
    WipeUnlessKept wipe(secret);
    {
        // A refused peer is -1, which passes as success and leaves the zeros; its entry is taken off the
        // queue. Not the padded form of the call: services expect a short secret at the front.
        const ErrorQueueMark mark;
        if (DH_compute_key(secret.data(), peer.getBIGNUM(), dh_.get()) == 0) {
            fail("DH_compute_key()", __LINE__, __func__);
        }
    }
    // Deliberate: all parties derive their keys from a secret whose last byte is overwritten.
    secret.back() = 0;
    if (isInstrumented()) {
        Util::saveInstrumentationFile("DHSharedSecret", secret);
    }
    wipe.keep();
    return secret;
}

void DiffieHellman::encode(Buffer& out) const {
    const DhNumbers numbers = numbersOf(dh_.get());
    WholeAppend append(out);
    putNumber(out, numbers.p);
    putNumber(out, numbers.g);
    putNumber(out, numbers.pubKey);
    putSecretNumber(out, numbers.privKey);
    append.complete();
}

std::unique_ptr<DiffieHellman> DiffieHellman::decode(Buffer& in) {
    const std::shared_ptr<DH> dh = newDh(__LINE__, __func__);
    const BigNum p = nextNumber(in);
    const BigNum g = nextNumber(in);
    const BigNum pubKey = nextNumber(in);
    const BigNum privKey = nextNumber(in);
    setNumbers(dh.get(), {p.getBIGNUM(), g.getBIGNUM(), pubKey.getBIGNUM(), privKey.getBIGNUM()},
               {"BN_dup(p_bn.getBIGNUM())", "BN_dup(g_bn.getBIGNUM())", "BN_dup(pubkey_bn.getBIGNUM())",
                "BN_dup(privkey_bn.getBIGNUM())"},
               __func__);
    return std::make_unique<DiffieHellman>(dh);
}

bool DiffieHellman::operator==(const DiffieHellman& other) const {
    if (this == &other) {
        return true;
    }
    const DhNumbers mine = numbersOf(dh_.get());
    const DhNumbers theirs = numbersOf(other.dh_.get());
    return BN_cmp(mine.p, theirs.p) == 0 && BN_cmp(mine.g, theirs.g) == 0 &&
           BN_cmp(mine.pubKey, theirs.pubKey) == 0 && BN_cmp(mine.privKey, theirs.privKey) == 0;
}

std::string DiffieHellman::toString() const {
    const DhNumbers numbers = numbersOf(dh_.get());
    const Env& env = *Env::instance();
    return "Diffie-Hellman-Structure:\n" +
           BigNum(numbers.p).toFormatString("prime", env.fmtWidth(), env.fmtLevel()) +
           BigNum(numbers.g).toFormatString("generator", env.fmtWidth(), env.fmtLevel()) +
           BigNum(numbers.pubKey).toFormatString("public-key") +
           BigNum(numbers.privKey).toFormatString("private-key");
}

std::string DiffieHellman::toString(const std::shared_ptr<DH>& dh) {
    return dumpOf(dh.get());
}

}  // namespace vorl
