// DHPubKey on any bytes, as a record and as its text: only the library's exceptions, and what was read is
// written again as the format has it. An exchange on such a text gives the secret that plain arithmetic
// gives.

#include "attempt.h"
#include "block_encoder.h"
#include "power.h"
#include "vorl/Buffer.h"
#include "vorl/DHPubKey.h"
#include "vorl/DiffieHellman.h"

#include <brisclient/Base64.h>

#include <cstddef>
#include <cstdint>
#include <optional>

namespace vorl::fuzz {

namespace {

using Tarvik::BrisClient::Base64;
using test::block;
using test::operator+;
using test::slice;

const bytes VERSION_2{0x00, 0x00, 0x00, 0x02};
const bytes PRIVATE_KEY(128, 0x5a);

// The second group of RFC 2409.
const BIGNUM* prime() {
    static const BIGNUM* const p = BN_get_rfc2409_prime_1024(nullptr);
    return p;
}

const DiffieHellman& ourSide() {
    static const bytes generator{0x02};
    static const auto publicKey = power(numberOf(generator).get(), numberOf(PRIVATE_KEY).get(), prime());
    static Buffer state(block(octetsOf(prime())) + block(generator) + block(octetsOf(publicKey.get())) +
                        block(PRIVATE_KEY));
    static const DiffieHellman& side = *DiffieHellman::decode(state).release();
    return side;
}

// An empty block has no encoding, and a multiple of 16384 octets is not closed.
bool canBeReadBack(std::size_t octets) {
    return octets % 16384 != 0;
}

void checkBareKey(const DHPubKey& record, const bytes& raw, const Buffer& in) {
    require(raw.size() >= 125 && raw.size() <= 129, "a bare key has 125 to 129 bytes");
    require(record.version().val() == 1 && record.key() == raw && in.ridx() == 0,
            "a bare key is all there is");
}

void checkRecord(const DHPubKey& record, const bytes& raw, const Buffer& in) {
    require(raw.size() >= 130 && slice(raw, 0, 4) == VERSION_2, "a longer one begins with the version");
    require(in.ridx() > 4 && in.ridx() <= raw.size(), "reading goes forward and stays inside");
    const bytes canonical = VERSION_2 + block(record.key());
    if (canBeReadBack(record.key().size()) && slice(raw, 0, canonical.size()) == canonical) {
        require(in.ridx() == canonical.size(), "a record ends with its key");
    }
}

std::optional<DHPubKey> readRecord(const bytes& raw) {
    DHPubKey record;
    Buffer in(raw);
    const bool read = attempt([&] { record.decode(in); });
    if (!read) {
        require(record.key().empty() && record.version().val() == 0, "a failure leaves the record alone");
        return std::nullopt;
    }
    const bool written = attempt([&] {
        const bool bare = raw.size() < 130;
        bare ? checkBareKey(record, raw, in) : checkRecord(record, raw, in);
        Buffer out;
        record.encode(out);
        require(out.toByteArray() == (bare ? raw : VERSION_2 + block(record.key())),
                "a record is written as its format has it");
        require(!record.toString().empty(), "a record has a text");
    });
    require(written, "what was read can be written");
    return record;
}

void readText(const bytes& text, const std::optional<DHPubKey>& expected) {
    std::optional<DHPubKey> record;
    const bool read = attempt([&] { record = *DHPubKey::decodeB64(text); });
    require(read == expected.has_value(), "a text is read where its bytes are");
    require(
        !read || (record->key() == expected->key() && record->version().val() == expected->version().val()),
        "a text says what its bytes say");

    bytes secret;
    const bool agreed = attempt([&] { secret = ourSide().computeSharedSecret(text); });
    require(agreed == (read && record->key().size() >= 120 && record->key().size() <= 129),
            "exactly keys of 120 to 129 bytes are agreed with");
    require(
        !agreed || secret == secretOf(numberOf(record->key()).get(), numberOf(PRIVATE_KEY).get(), prime()),
        "the secret is the peer's number to the power of the private key");
}

}  // namespace

void readAnything(const bytes& input) {
    const std::optional<DHPubKey> record = readRecord(input);
    readText(Base64::encode(input), record);
    const bytes decoded = Base64::decode(input);
    readText(input, decoded.empty() ? std::nullopt : readRecord(decoded));
}

}  // namespace vorl::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    vorl::fuzz::readAnything(vorl::bytes(data, data + size));
    return 0;
}
