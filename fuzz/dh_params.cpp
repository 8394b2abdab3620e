// DiffieHellmanParams on any bytes, as the first of them says: from DER, from PEM, as the library's own
// encoding, or by way of an OpenSSL DH. Only the library's exceptions, also from what is done with the group,
// and always the numbers that OpenSSL reads.

#include "attempt.h"
#include "block_encoder.h"
#include "power.h"
#include "vorl/Buffer.h"
#include "vorl/DiffieHellman.h"
#include "vorl/DiffieHellmanParams.h"

#include <openssl/bio.h>
#include <openssl/dh.h>
#include <openssl/pem.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace vorl::fuzz {

namespace {

using test::block;
using test::operator+;

// '0' to '3' in the seeds.
enum Source : unsigned int { DER, PEM, ENCODED, X942_DER, SOURCES };

const std::size_t MAX_GENERATION_BYTES = 128;

struct Numbers {
    bytes p;
    bytes g;
};

std::shared_ptr<DH> opensslGroup(Source source, const bytes& content) {
    const unsigned char* at = content.data();
    const long size = static_cast<long>(content.size());
    if (source == DER) {
        return safe_ptr(d2i_DHparams(nullptr, &at, size));
    }
    if (source == X942_DER) {
        return safe_ptr(d2i_DHxparams(nullptr, &at, size));
    }
    const std::shared_ptr<BIO> bio = safe_ptr(BIO_new_mem_buf(content.data(), static_cast<int>(size)));
    // Without a callback OpenSSL would read standard input.
    pem_password_cb* const refuse = [](char*, int, int, void*) { return -1; };
    return safe_ptr(PEM_read_bio_DHparams(bio.get(), nullptr, refuse, nullptr));
}

std::optional<Numbers> opensslNumbers(const DH* dh) {
    if (dh == nullptr) {
        return std::nullopt;
    }
    return Numbers{octetsOf(DH_get0_p(dh)), octetsOf(DH_get0_g(dh))};
}

std::optional<Numbers> encodedNumbers(const bytes& content) {
    Numbers numbers;
    const bool read = attempt([&] {
        Buffer in(content);
        numbers.p = octetsOf(numberOf(in.nextOctetString().toByteArray()).get());
        numbers.g = octetsOf(numberOf(in.nextOctetString().toByteArray()).get());
    });
    return read ? std::optional<Numbers>(numbers) : std::nullopt;
}

std::unique_ptr<DiffieHellmanParams> readGroup(Source source, const bytes& content,
                                               const std::shared_ptr<DH>& dh) {
    switch (source) {
        case DER:
            return std::make_unique<DiffieHellmanParams>(content);
        case PEM:
            return std::make_unique<DiffieHellmanParams>(std::string(content.begin(), content.end()));
        case ENCODED: {
            Buffer in(content);
            return DiffieHellmanParams::decode(in);
        }
        default:
            return std::make_unique<DiffieHellmanParams>(dh);
    }
}

// A number of no bytes is not written, and a multiple of 16384 is not closed.
bool canBeReadBack(const bytes& number) {
    return number.size() % 16384 != 0;
}

void checkValue(const DiffieHellmanParams& group, const Numbers& numbers) {
    DiffieHellmanParams copy(group);
    require(copy == group, "a copy is equal");
    copy = DiffieHellmanParams(group);
    require(copy == group, "what was assigned is equal");

    Buffer out;
    group.encode(out);
    require(out.toByteArray() == block(numbers.p) + block(numbers.g),
            "a group has the numbers that were read");
    require(
        !canBeReadBack(numbers.p) || !canBeReadBack(numbers.g) || *DiffieHellmanParams::decode(out) == group,
        "what was written reads back");
    require(group.toString().compare(0, 27, "Diffie-Hellman-Parameters:\n") == 0, "a group has a text");
}

void checkPair(const DiffieHellman& pair, const DiffieHellmanParams& group) {
    require(DiffieHellmanParams(pair) == group, "a pair is in the group that it was generated in");
    require(!pair.getPubKey().empty(), "a public key of up to 128 bytes is exported");
}

}  // namespace

void readAnything(Source source, const bytes& content) {
    std::shared_ptr<DH> dh;
    if (source != ENCODED) {
        dh = opensslGroup(source, content);
    }
    const std::optional<Numbers> numbers =
        source == ENCODED ? encodedNumbers(content) : opensslNumbers(dh.get());

    std::unique_ptr<DiffieHellmanParams> group;
    const bool read = attempt([&] { group = readGroup(source, content, dh); });
    require(read == numbers.has_value(), "exactly what OpenSSL reads is read");
    if (!read) {
        return;
    }
    require(attempt([&] { checkValue(*group, *numbers); }), "a group can be copied and written");
    if (dh) {
        require(attempt([&] { DiffieHellman::toString(dh); }), "every DH can be dumped");
    }
    if (numbers->p.size() <= MAX_GENERATION_BYTES) {
        std::unique_ptr<DiffieHellman> pair;
        if (attempt([&] { pair = DiffieHellman::generate(*group); })) {
            require(attempt([&] { checkPair(*pair, *group); }), "what was generated can be used");
        }
    }
}

}  // namespace vorl::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using vorl::fuzz::Source;
    if (size > 0) {
        vorl::fuzz::readAnything(static_cast<Source>(data[0] % vorl::fuzz::SOURCES),
                                 vorl::bytes(data + 1, data + size));
    }
    return 0;
}
