#include "software_path.h"

#include "core/WipeUnlessKept.h"
#include "envelope.h"
#include "unread_bytes.h"
#include "vorl/Buffer.h"
#include "vorl/CipherSpec.h"
#include "vorl/SoftwareKeyCipher.h"

#include <openssl/crypto.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <typeinfo>
#include <utility>

namespace vorl {

namespace {

const std::size_t BLOCK = 16;

// Work goes in pieces that stay in the first-level cache between the pass that provides storage and the
// cipher's. A multiple of the block, and every fragment but the last is a multiple of it.
const std::size_t PIECE = std::size_t{4} * 1024;

}  // namespace

SoftwareKeyCipher* softwareCipher(tarvik::crypto::ICipherContext& ctx, const CipherSpec& spec) {
    if (typeid(ctx) != typeid(SoftwareKeyCipher)) {
        return nullptr;
    }
    static const CipherSpec* const ECB = CipherSpec::AES_128_ECB_PKCS5().get();
    static const CipherSpec* const CBC = CipherSpec::AES_128_CBC_PKCS5().get();
    auto& cipher = static_cast<SoftwareKeyCipher&>(ctx);
    return (&spec == CBC || &spec == ECB) && cipher.isBoundTo(spec) ? &cipher : nullptr;
}

bytes encryptIntoEnvelope(unsigned char version, const bytes& iv, const bytes& data,
                          SoftwareKeyCipher& cipher) {
    // PKCS #5 padding always adds: a whole block where the message ends with one.
    const std::uint64_t bodyOctets = (data.size() / BLOCK + std::uint64_t{1}) * BLOCK;
    bytes envelope = beginEnvelope(version, iv, bodyOctets);

    BodyWriter body(envelope, bodyOctets);
    std::size_t read = 0;
    while (body.rest() > 0) {
        const std::size_t piece = body.nextRun(PIECE);
        const std::size_t plain = std::min(piece, data.size() - read);
        const std::size_t at = envelope.size();
        envelope.resize(at + piece);
        const std::size_t written = cipher.update(data.data() + read, plain, envelope.data() + at);
        if (body.rest() == 0) {
            cipher.final(envelope.data() + at + written);
        }
        read += plain;
    }
    return envelope;
}

bytes decryptInPlace(Buffer& in, const OctetRuns& iv, SoftwareKeyCipher& cipher) {
    // All zero, and ignored, where the spec has no IV.
    unsigned char ivOctets[BLOCK] = {};
    iv.copyFrom(in, ivOctets);
    cipher.decryptInit(ivOctets);
    const OctetRuns body(in);
    refuseUnreadBytes(in, "decrypted data");

    bytes store = std::move(in).toByteArray();
    WipeUnlessKept wipe(store);
    // Each piece is copied out before it is decrypted to where it belongs. That never reaches what is still
    // to be read: the message has no determinants, and the cipher holds the last block back until more comes.
    unsigned char piece[PIECE];
    std::size_t decrypted = 0;
    body.forEach([&](const OctetRun& run) {
        for (std::size_t done = 0; done < run.octets;) {
            const std::size_t size = std::min(run.octets - done, PIECE);
            std::memcpy(piece, store.data() + run.offset + done, size);
            decrypted += cipher.update(piece, size, store.data() + decrypted);
            done += size;
        }
    });
    // Into a block of its own, which the store may not have; what comes out of it is less than was held back.
    unsigned char last[BLOCK];
    const std::size_t lastOctets = cipher.final(last);
    std::copy_n(last, lastOctets, store.data() + decrypted);
    OPENSSL_cleanse(last, sizeof last);
    store.resize(decrypted + lastOctets);
    wipe.keep();
    return store;
}

}  // namespace vorl
