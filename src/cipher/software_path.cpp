#include "software_path.h"

#include "core/length_determinant.h"
#include "envelope.h"
#include "vorl/CipherSpec.h"
#include "vorl/SoftwareKeyCipher.h"

#include <openssl/crypto.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <typeinfo>

namespace vorl {

namespace {

const std::size_t BLOCK = 16;

// Work goes in pieces that stay in the first-level cache between the pass that provides storage and the
// cipher's. A multiple of the block, and every fragment but the last is a multiple of it.
const std::size_t PIECE = std::size_t{8} * 1024;

// Wipes its bytes at the end of the scope unless told that they have become the result.
class WipeUnlessKept {
public:
    explicit WipeUnlessKept(bytes& storage) : storage_(storage) {}
    ~WipeUnlessKept() {
        if (!kept_) {
            OPENSSL_cleanse(storage_.data(), storage_.size());
        }
    }
    WipeUnlessKept(const WipeUnlessKept&) = delete;
    WipeUnlessKept& operator=(const WipeUnlessKept&) = delete;

    void keep() { kept_ = true; }

private:
    bytes& storage_;
    bool kept_ = false;
};

}  // namespace

SoftwareKeyCipher* softwareCipher(tarvik::crypto::ICipherContext& ctx, const CipherSpec& spec) {
    if (typeid(ctx) != typeid(SoftwareKeyCipher)) {
        return nullptr;
    }
    auto& cipher = static_cast<SoftwareKeyCipher&>(ctx);
    return cipher.isBoundTo(spec) ? &cipher : nullptr;
}

bytes encryptIntoEnvelope(unsigned char version, const bytes& iv, const bytes& data,
                          SoftwareKeyCipher& cipher) {
    // PKCS #5 padding always adds: a whole block where the message ends with one.
    const std::uint64_t bodyOctets = (data.size() / BLOCK + std::uint64_t{1}) * BLOCK;
    bytes envelope = beginEnvelope(version, iv, bodyOctets);

    std::size_t read = 0;
    std::size_t fragmentRest = 0;
    for (std::uint64_t rest = bodyOctets; rest > 0;) {
        if (fragmentRest == 0) {
            fragmentRest = appendDeterminant(envelope, rest).units;
        }
        const std::size_t piece = std::min(fragmentRest, PIECE);
        const std::size_t at = envelope.size();
        envelope.resize(at + piece);
        const std::size_t plain = std::min(piece, data.size() - read);
        const std::size_t written = cipher.update(data.data() + read, plain, envelope.data() + at);
        if (piece == rest) {
            cipher.final(envelope.data() + at + written);
        }
        read += plain;
        fragmentRest -= piece;
        rest -= piece;
    }
    return envelope;
}

bytes decryptInPlace(bytes store, const std::vector<OctetRun>& runs, SoftwareKeyCipher& cipher) {
    WipeUnlessKept wipe(store);
    // The ciphertext is moved together at the front of the store piece by piece, and decrypted where it then
    // lies. The cipher holds the last block back until more comes, so its output stays a block behind and
    // lands on what is already decrypted.
    std::size_t joined = 0;
    std::size_t decrypted = 0;
    for (const OctetRun& run : runs) {
        for (std::size_t done = 0; done < run.octets;) {
            const std::size_t piece = std::min(run.octets - done, PIECE);
            unsigned char* const at = store.data() + joined;
            std::memmove(at, store.data() + run.offset + done, piece);
            decrypted += cipher.update(at, piece, store.data() + decrypted);
            done += piece;
            joined += piece;
        }
    }
    store.resize(decrypted + BLOCK);
    decrypted += cipher.final(store.data() + decrypted);
    store.resize(decrypted);
    wipe.keep();
    return store;
}

}  // namespace vorl
