#include "Subject.h"
#include "checks.h"
#include "expectations.h"

#include <algorithm>
#include <bitset>
#include <iterator>

// What contexts compute.

namespace vorl::testkit {

using tarvik::crypto::ICipherContext;

namespace {

// Up to three blocks, and around the sizes at which buffers, fragments of the envelope and engines change.
const std::size_t SHORT_SIZES = 50;
const std::size_t LONG_SIZES[] = {255,   256,   257,   1023,  1024,  1025,  4095,  4096,    4097,
                                  16367, 16368, 16383, 16384, 16385, 65535, 65536, 1048576, 1048593};

bytes fromHex(const std::string& digits) {
    bytes octets;
    for (std::size_t at = 0; at < digits.size(); at += 2) {
        octets.push_back(static_cast<unsigned char>(std::stoul(digits.substr(at, 2), nullptr, 16)));
    }
    return octets;
}

struct Vector {
    const char* source;
    unsigned int spec;
    const char* key;
    const char* iv;
    const char* plain;
    // Without the block of padding that these plaintexts, whole blocks, are given here.
    const char* ciphertext;
};

const char SP_800_38A_PLAIN[] =
    "6bc1bee22e409f96e93d7e117393172aae2d8a571e03ac9c9eb76fac45af8e51"
    "30c81c46a35ce411e5fbc1191a0a52eff69f2445df4f9b17ad2b417be66c3710";

const Vector VECTORS[] = {
    {"NIST SP 800-38A, F.1.1", 1, "2b7e151628aed2a6abf7158809cf4f3c", "", SP_800_38A_PLAIN,
     "3ad77bb40d7a3660a89ecaf32466ef97f5d3d58503b9699de785895a96fdbaaf"
     "43b1cd7f598ece23881b00e3ed0306887b0c785e27e8ad3f8223207104725dd4"},
    {"NIST SP 800-38A, F.2.1", 2, "2b7e151628aed2a6abf7158809cf4f3c", "000102030405060708090a0b0c0d0e0f",
     SP_800_38A_PLAIN,
     "7649abac8119b246cee98e9b12e9197d5086cb9b507219ee95db113a917678b2"
     "73bed6b8e3c1743b7116e69e222295163ff1caa1681fac09120eca307586e1a7"},
    {"RFC 3602, case 1", 2, "06a9214036b8a15b512e03d534120006", "3dafba429d9eb430b422da802c9fac41",
     "53696e676c6520626c6f636b206d7367", "e353779c1079aeb82708942dbe77181a"},
    {"RFC 3602, case 2", 2, "c286696d887c9aa0611bbb3e2025a45a", "562e17996d093d28ddb3ba695a2e6f58",
     "000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f",
     "d296cd94c2cccf8a3a863028b5e1dc0a7586602d253cfff91b8266bea6d61ab1"},
};

const Mode& modeOf(unsigned int spec) {
    return AES_MODES[spec - 1];
}

bytes encrypted(ICipherContext& context, const Mode& mode, const bytes& iv, const bytes& plain) {
    return doing(operation(mode, Direction::ENCRYPT, plain.size()),
                 [&] { return operate(context, Direction::ENCRYPT, iv, plain); });
}

void nullCipherIsTheIdentity(const Platform& platform) {
    const Subject subject(platform);
    const auto contexts = doing("cryptContext() with the spec 0",
                                [&] { return platform.cryptContext(ICipherContext::SPEC_NULL, bytes()); });
    require(contexts.first != nullptr, "cryptContext() with the spec 0 returns a null cipher context");
    for (const Direction direction : {Direction::ENCRYPT, Direction::DECRYPT}) {
        for (const std::size_t size : {0U, 1U, 16U, 33U, 65537U}) {
            const std::string what = "No cipher: passing " + std::to_string(size) + " bytes on";
            const bytes out =
                doing(what, [&] { return operate(*contexts.first, direction, bytes(), octets(size)); });
            require(out == octets(size), what + " changes them");
        }
    }
}

void agreesWithPublishedVectors(const Platform& platform) {
    const Subject subject(platform);
    subject.needsKnownKeys();
    for (const Vector& vector : VECTORS) {
        const Mode& mode = modeOf(vector.spec);
        const bytes published = fromHex(vector.ciphertext);
        const auto context = subject.contextFor(mode, subject.provisioned(fromHex(vector.key)));
        const bytes ciphertext = encrypted(*context, mode, fromHex(vector.iv), fromHex(vector.plain));
        require(ciphertext.size() == published.size() + BLOCK_BYTES,
                std::string(vector.source) + ": the ciphertext has " + std::to_string(ciphertext.size()) +
                    " bytes");
        require(std::equal(published.begin(), published.end(), ciphertext.begin()),
                std::string(vector.source) + ": the ciphertext is another");
    }
}

void encrypts(const Subject& subject, const Mode& mode, std::size_t size) {
    const bytes iv = ivOf(mode, static_cast<unsigned char>(size));
    const auto context = subject.context(mode);
    const bytes ciphertext = encrypted(*context, mode, iv, octets(size));
    subject.expectSealed(operation(mode, Direction::ENCRYPT, size), mode, FIRST_KEY, iv, octets(size),
                         ciphertext);
}

void decrypts(const Subject& subject, const Mode& mode, std::size_t size) {
    const bytes iv = ivOf(mode, static_cast<unsigned char>(size));
    const bytes ciphertext = subject.sealed(mode, FIRST_KEY, iv, octets(size));
    const auto context = subject.context(mode);
    const std::string what = operation(mode, Direction::DECRYPT, ciphertext.size());
    const bytes plain = doing(what, [&] { return operate(*context, Direction::DECRYPT, iv, ciphertext); });
    require(plain == octets(size),
            what + " does not yield the message of " + std::to_string(size) + " bytes");
}

using Test = void (*)(const Subject& subject, const Mode& mode, std::size_t size);

void forShortSizes(const Platform& platform, Test test) {
    const Subject subject(platform);
    for (const Mode& mode : AES_MODES) {
        for (std::size_t size = 0; size < SHORT_SIZES; ++size) {
            test(subject, mode, size);
        }
    }
}

void forLongSizes(const Platform& platform, Test test) {
    const Subject subject(platform);
    for (const Mode& mode : AES_MODES) {
        for (const std::size_t size : LONG_SIZES) {
            test(subject, mode, size);
        }
    }
}

void encryptsShortMessages(const Platform& platform) {
    forShortSizes(platform, encrypts);
}

void decryptsShortMessages(const Platform& platform) {
    forShortSizes(platform, decrypts);
}

void encryptsLongMessages(const Platform& platform) {
    forLongSizes(platform, encrypts);
}

void decryptsLongMessages(const Platform& platform) {
    forLongSizes(platform, decrypts);
}

// Empty pieces stand before and behind the first.
bytes inPieces(ICipherContext& context, Direction direction, const bytes& iv, const bytes& data,
               std::size_t piece) {
    init(context, direction, iv);
    bytes out = context.update(bytes());
    for (std::size_t done = 0; done < data.size(); done += piece) {
        const auto begin = data.begin() + static_cast<std::ptrdiff_t>(done);
        const std::size_t size = std::min(piece, data.size() - done);
        const bytes ready = context.update(bytes(begin, begin + static_cast<std::ptrdiff_t>(size)));
        out.insert(out.end(), ready.begin(), ready.end());
        if (done == 0) {
            const bytes more = context.update(bytes());
            out.insert(out.end(), more.begin(), more.end());
        }
    }
    const bytes rest = context.final();
    out.insert(out.end(), rest.begin(), rest.end());
    return out;
}

void takesAMessageInPieces(const Platform& platform) {
    const Subject subject(platform);
    const bytes plain = octets(100);
    for (const Mode& mode : AES_MODES) {
        const bytes iv = ivOf(mode, 0);
        const bytes ciphertext = subject.sealed(mode, FIRST_KEY, iv, plain);
        const auto context = subject.context(mode);
        for (const std::size_t piece : {1U, 7U, 15U, 16U, 17U, 32U, 33U, 99U}) {
            const std::string pieces = " in pieces of " + std::to_string(piece);
            const std::string encrypting = operation(mode, Direction::ENCRYPT, plain.size()) + pieces;
            subject.expectSealed(encrypting, mode, FIRST_KEY, iv, plain, doing(encrypting, [&] {
                                     return inPieces(*context, Direction::ENCRYPT, iv, plain, piece);
                                 }));
            const std::string decrypting = operation(mode, Direction::DECRYPT, ciphertext.size()) + pieces;
            require(
                doing(decrypting,
                      [&] { return inPieces(*context, Direction::DECRYPT, iv, ciphertext, piece); }) == plain,
                decrypting + " yields another message");
        }
    }
}

void eachInitTakesItsIv(const Platform& platform) {
    const Subject subject(platform);
    const Mode& mode = AES_MODES[1];
    const auto context = subject.context(mode);
    for (const unsigned char first : bytes{0, 1, 0, 200}) {
        const bytes iv = ivOf(mode, first);
        const bytes ciphertext = encrypted(*context, mode, iv, octets(20));
        subject.expectSealed("AES-128-CBC: encrypting under another IV than before", mode, FIRST_KEY, iv,
                             octets(20), ciphertext);
    }
}

// A block that comes again, and others.
bytes blocksThatComeAgain() {
    bytes plain;
    for (const unsigned char value : bytes{1, 2, 1, 1, 3, 2, 1, 4}) {
        plain.insert(plain.end(), BLOCK_BYTES, value);
    }
    return plain;
}

void ecbEncryptsEachBlockAlone(const Platform& platform) {
    const Subject subject(platform);
    const Mode& mode = AES_MODES[0];
    const bytes plain = blocksThatComeAgain();
    const std::string what = operation(mode, Direction::ENCRYPT, plain.size());
    expectCodebook(what, plain, encrypted(*subject.context(mode), mode, bytes(), plain));
}

void cbcChainsItsBlocks(const Platform& platform) {
    const Subject subject(platform);
    const Mode& mode = AES_MODES[1];
    const bytes plain = blocksThatComeAgain();
    const std::string what = operation(mode, Direction::ENCRYPT, plain.size());
    for (const bytes& iv : {bytes(BLOCK_BYTES), ivOf(mode, 0), ivOf(mode, 200)}) {
        subject.expectChained(what, FIRST_KEY, iv, plain, encrypted(*subject.context(mode), mode, iv, plain));
    }
}

const std::size_t HALF_BYTES = BLOCK_BYTES / 2;

std::size_t differingBits(const unsigned char* one, const unsigned char* other) {
    std::size_t count = 0;
    for (std::size_t i = 0; i < HALF_BYTES; ++i) {
        count += std::bitset<8>(static_cast<unsigned long>(one[i] ^ other[i])).count();
    }
    return count;
}

// Of the 64 bits of each half, 32 change on average. Fewer than 8 do with a probability of 3.8 * 10^-11, and
// so in any of the 256 halves that are looked at under one key of 10^8. A cipher of blocks of half the size,
// or less, always leaves the other half as it was; one that adds a stream changes a single bit.
const std::size_t LEAST_CHANGED_BITS = 8;

void expectChanged(const Mode& mode, const unsigned char* block, const unsigned char* changed) {
    for (const char* const half : {"first", "second"}) {
        const std::size_t count = differingBits(block, changed);
        require(count >= LEAST_CHANGED_BITS, std::string(mode.name) + ": changing a bit of a block changes " +
                                                 std::to_string(count) + " of the 64 bits in the " + half +
                                                 " half of its encryption");
        block += HALF_BYTES;
        changed += HALF_BYTES;
    }
}

void aBitChangesItsBlock(const Platform& platform) {
    const Subject subject(platform);
    const Mode& mode = AES_MODES[0];
    const std::size_t bits = BLOCK_BYTES * 8;
    bytes plain;
    for (std::size_t i = 0; i <= bits; ++i) {
        const bytes block = octets(BLOCK_BYTES);
        plain.insert(plain.end(), block.begin(), block.end());
    }
    for (std::size_t bit = 0; bit < bits; ++bit) {
        unsigned char& octet = plain[(bit + 1) * BLOCK_BYTES + bit / 8];
        octet = static_cast<unsigned char>(octet ^ (1U << bit % 8));
    }
    const bytes ciphertext = encrypted(*subject.context(mode), mode, bytes(), plain);
    require(ciphertext.size() == plain.size() + BLOCK_BYTES,
            operation(mode, Direction::ENCRYPT, plain.size()) + " yields " +
                std::to_string(ciphertext.size()) + " bytes");
    for (std::size_t bit = 0; bit < bits; ++bit) {
        expectChanged(mode, ciphertext.data(), ciphertext.data() + (bit + 1) * BLOCK_BYTES);
    }
}

}  // namespace

std::vector<Check> cipherChecks() {
    return {
        {"spec-0-is-the-identity", "The context of the spec 0 yields what it is fed, in both directions",
         nullCipherIsTheIdentity},
        {"agrees-with-published-vectors", "The ciphers are those of the published vectors",
         agreesWithPublishedVectors},
        {"encrypts-short-messages", "Messages of 0 to 49 bytes are encrypted, padded after PKCS #5",
         encryptsShortMessages},
        {"decrypts-short-messages", "Messages of 0 to 49 bytes come back", decryptsShortMessages},
        {"encrypts-long-messages", "Messages of up to 1 MiB are encrypted in one update",
         encryptsLongMessages},
        {"decrypts-long-messages", "Messages of up to 1 MiB come back", decryptsLongMessages},
        {"takes-a-message-in-pieces", "A message may be fed by any number of updates, empty ones too",
         takesAMessageInPieces},
        {"each-init-takes-its-iv", "Each init works under the IV that it is given", eachInitTakesItsIv},
        {"ecb-encrypts-each-block-alone",
         "AES-128-ECB encrypts equal blocks alike, and different ones differently",
         ecbEncryptsEachBlockAlone},
        {"cbc-chains-its-blocks",
         "AES-128-CBC is AES-128-ECB of each block after the IV, or the ciphertext before it, was added",
         cbcChainsItsBlocks},
        {"a-bit-changes-its-block", "A bit of a block changes both halves of what the block is encrypted to",
         aBitChangesItsBlock},
    };
}

}  // namespace vorl::testkit
