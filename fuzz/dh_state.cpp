// DiffieHellman::decode() on any bytes: only the library's exceptions, also from what is done with the key
// pair afterwards; it is written as its format has it, and gives the secret that plain arithmetic gives.

#include "attempt.h"
#include "block_encoder.h"
#include "power.h"
#include "vorl/Buffer.h"
#include "vorl/DHPubKey.h"
#include "vorl/DiffieHellman.h"
#include "vorl/DiffieHellmanParams.h"

#include <brisclient/Base64.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace vorl::fuzz {

namespace {

using Tarvik::BrisClient::Base64;
using test::block;
using test::operator+;

// Larger numbers take their time and no other way.
const std::size_t MAX_ARITHMETIC_BYTES = 256;

const bytes PEER_KEY(128, 0x5b);
const bytes PEER_TEXT = Base64::encode(bytes{0x00, 0x00, 0x00, 0x02} + block(PEER_KEY));

enum Number : std::size_t { P, G, PUB_KEY, PRIV_KEY, NUMBERS };

// The four numbers that a pair was read from, without their leading zeros.
std::vector<bytes> numbersIn(Buffer in) {
    std::vector<bytes> numbers;
    while (numbers.size() < NUMBERS) {
        numbers.push_back(octetsOf(numberOf(in.nextOctetString().toByteArray()).get()));
    }
    return numbers;
}

// A number of no bytes is not written, and a multiple of 16384 is not closed.
bool canBeReadBack(const std::vector<bytes>& numbers) {
    bool can = true;
    for (const bytes& number : numbers) {
        can = can && number.size() % 16384 != 0;
    }
    return can;
}

void checkValue(const DiffieHellman& pair, const std::vector<bytes>& numbers) {
    DiffieHellman copy(pair);
    require(copy == pair, "a copy is equal");
    copy = DiffieHellman(pair);
    require(copy == pair, "what was assigned is equal");

    Buffer out;
    pair.encode(out);
    require(out.toByteArray() ==
                block(numbers[P]) + block(numbers[G]) + block(numbers[PUB_KEY]) + block(numbers[PRIV_KEY]),
            "a pair is written as its format has it");
    require(!canBeReadBack(numbers) || *DiffieHellman::decode(out) == pair, "what was written reads back");
    require(pair.toString().compare(0, 26, "Diffie-Hellman-Structure:\n") == 0, "a pair has a text");
}

void checkGroup(const DiffieHellman& pair, const std::vector<bytes>& numbers) {
    Buffer out;
    DiffieHellmanParams(pair).encode(out);
    require(out.toByteArray() == block(numbers[P]) + block(numbers[G]), "the group is that of the pair");
}

void checkPubKey(const DiffieHellman& pair, const bytes& pubKey) {
    bytes text;
    const bool exported = attempt([&] { text = pair.getPubKey(); });
    const bytes sign(!pubKey.empty() && pubKey[0] >= 0x80 ? 1 : 0, 0x00);
    require(exported == (sign.size() + pubKey.size() <= 129), "a public key of up to 129 bytes is exported");
    if (exported) {
        const bytes padded = DHPubKey::decodeB64(text)->key();
        const bytes number = sign + pubKey;
        const bytes padding(number.size() < 128 ? 128 - number.size() : 0, 0x00);
        require(padded == padding + number, "a public key is positive and has 128 bytes or more");
    }
}

void checkSecret(const DiffieHellman& pair, const std::vector<bytes>& numbers) {
    bytes secret;
    const bool agreed = attempt([&] { secret = pair.computeSharedSecret(PEER_TEXT); });
    // OpenSSL may refuse the rest of a group of the right size, but does it in silence.
    require(agreed == (numbers[P].size() == 128), "exactly a group of 128 bytes has a secret");
    require(!agreed || secret == secretOf(numberOf(PEER_KEY).get(), numberOf(numbers[PRIV_KEY]).get(),
                                          numberOf(numbers[P]).get()),
            "the secret is the peer's number to the power of the private key");
}

}  // namespace

void readAnything(const bytes& input) {
    std::unique_ptr<DiffieHellman> pair;
    Buffer in(input);
    if (!attempt([&] { pair = DiffieHellman::decode(in); })) {
        return;
    }
    const std::vector<bytes> numbers = numbersIn(Buffer(input));
    require(attempt([&] { checkValue(*pair, numbers); }), "a pair can be copied and written");
    require(attempt([&] { checkGroup(*pair, numbers); }), "a pair has a group");
    checkPubKey(*pair, numbers[PUB_KEY]);
    if (numbers[P].size() <= MAX_ARITHMETIC_BYTES && numbers[PRIV_KEY].size() <= MAX_ARITHMETIC_BYTES) {
        checkSecret(*pair, numbers);
    }
}

}  // namespace vorl::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    vorl::fuzz::readAnything(vorl::bytes(data, data + size));
    return 0;
}
