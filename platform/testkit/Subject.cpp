#include "Subject.h"

#include "expectations.h"

#include <openssl/evp.h>

#include <algorithm>
#include <map>
#include <numeric>

namespace vorl::testkit {

using tarvik::crypto::ICipherContext;

namespace {

// NIST SP 800-38A, appendix F, and FIPS-197, appendix B, use the first one; the second is RFC 3602's.
const unsigned char KEY_VALUES[][BLOCK_BYTES] = {
    {0x2b, 0x7e, 0x15, 0x16, 0x28, 0xae, 0xd2, 0xa6, 0xab, 0xf7, 0x15, 0x88, 0x09, 0xcf, 0x4f, 0x3c},
    {0x06, 0xa9, 0x21, 0x40, 0x36, 0xb8, 0xa1, 0x5b, 0x51, 0x2e, 0x03, 0xd5, 0x34, 0x12, 0x00, 0x06},
};

bytes valueNamed(KeyName name) {
    return bytes(std::begin(KEY_VALUES[name]), std::end(KEY_VALUES[name]));
}

bytes padded(bytes plain) {
    const std::size_t count = BLOCK_BYTES - plain.size() % BLOCK_BYTES;
    plain.insert(plain.end(), count, static_cast<unsigned char>(count));
    return plain;
}

void expectSize(const std::string& subject, const bytes& plain, const bytes& ciphertext) {
    require(ciphertext.size() == padded(plain).size(),
            subject + " yields " + std::to_string(ciphertext.size()) + " bytes");
}

bytes blockAt(const bytes& all, std::size_t at) {
    const auto begin = all.begin() + static_cast<std::ptrdiff_t>(at);
    return bytes(begin, begin + static_cast<std::ptrdiff_t>(BLOCK_BYTES));
}

}  // namespace

Subject::Subject(const Platform& platform) : platform_(platform) {
    doing("init()", platform.init);
    require(
        platform.provision || (platform.ownKeys.size() >= 2 && platform.ownKeys[0] != platform.ownKeys[1]),
        "The platform is described without a way to provision keys and without two keys of its own");
    // Here, so that threads need not ask for them.
    for (const KeyName name : {FIRST_KEY, SECOND_KEY}) {
        keys_.push_back(platform.provision ? provisioned(valueNamed(name)) : platform.ownKeys[name]);
    }
}

void Subject::needsKnownKeys() const {
    if (!platform_.provision) {
        throw LeftOut("The platform has only keys of its own, and this takes one of known value");
    }
}

bytes Subject::provisioned(const bytes& value) const {
    return doing("provision()", [&] { return platform_.provision(value); });
}

std::optional<bytes> Subject::valueOf(KeyName name) const {
    return platform_.provision ? std::optional<bytes>(valueNamed(name)) : std::nullopt;
}

std::shared_ptr<ICipherContext> Subject::context(const Mode& mode, KeyName name) const {
    return contextFor(mode, key(name));
}

std::shared_ptr<ICipherContext> Subject::contextFor(const Mode& mode, const bytes& key) const {
    const std::string subject = std::string("cryptContext() for ") + mode.name;
    const auto contexts = doing(subject, [&] { return platform_.cryptContext(mode.spec, key); });
    require(contexts.first != nullptr, subject + " returns a null cipher context");
    return contexts.first;
}

bytes Subject::sealed(const Mode& mode, KeyName name, const bytes& iv, const bytes& plain) const {
    if (const std::optional<bytes> value = valueOf(name)) {
        return rawSealed(mode, *value, iv, plain);
    }
    return doing(operation(mode, Direction::ENCRYPT, plain.size()),
                 [&] { return operate(*context(mode, name), Direction::ENCRYPT, iv, plain); });
}

void Subject::expectSealed(const std::string& subject, const Mode& mode, KeyName name, const bytes& iv,
                           const bytes& plain, const bytes& ciphertext) const {
    expectSize(subject, plain, ciphertext);
    if (valueOf(name)) {
        require(ciphertext == sealed(mode, name, iv, plain), subject + " yields a wrong ciphertext");
        return;
    }
    require(doing(subject + " and decrypting the result",
                  [&] { return operate(*context(mode, name), Direction::DECRYPT, iv, ciphertext); }) == plain,
            subject + " yields a ciphertext that opens to something else");
    if (mode.hasIv) {
        expectChained(subject, name, iv, plain, ciphertext);
    } else {
        expectCodebook(subject, plain, ciphertext);
    }
}

void Subject::expectChained(const std::string& subject, KeyName name, const bytes& iv, const bytes& plain,
                            const bytes& ciphertext) const {
    expectSize(subject, plain, ciphertext);
    bytes blocks = padded(plain);
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        const unsigned char before = i < BLOCK_BYTES ? iv[i] : ciphertext[i - BLOCK_BYTES];
        blocks[i] = static_cast<unsigned char>(blocks[i] ^ before);
    }
    const std::string comparing = operation(AES_MODES[0], Direction::ENCRYPT, blocks.size());
    const bytes expected = doing(comparing, [&] {
        return operate(*context(AES_MODES[0], name), Direction::ENCRYPT, bytes(), blocks);
    });
    expectSize(comparing, blocks, expected);
    require(std::equal(ciphertext.begin(), ciphertext.end(), expected.begin()),
            subject + " yields blocks that are not chained, the first one to the IV");
}

bytes octets(std::size_t n) {
    bytes pattern(n);
    for (std::size_t i = 0; i < n; ++i) {
        pattern[i] = static_cast<unsigned char>(i * 31 + (i >> 8) * 7 + 1);
    }
    return pattern;
}

void expectCodebook(const std::string& subject, const bytes& plain, const bytes& ciphertext) {
    expectSize(subject, plain, ciphertext);
    const bytes blocks = padded(plain);
    std::map<bytes, bytes> encrypted;
    std::map<bytes, bytes> decrypted;
    for (std::size_t at = 0; at < blocks.size(); at += BLOCK_BYTES) {
        const bytes from = blockAt(blocks, at);
        const bytes to = blockAt(ciphertext, at);
        require(encrypted.emplace(from, to).first->second == to,
                subject + " yields different blocks for equal ones");
        require(decrypted.emplace(to, from).first->second == from,
                subject + " yields equal blocks for different ones");
    }
}

bytes ivOf(const Mode& mode, unsigned char first) {
    bytes iv(mode.hasIv ? BLOCK_BYTES : 0);
    std::iota(iv.begin(), iv.end(), first);
    return iv;
}

bytes rawSealed(const Mode& mode, const bytes& key, const bytes& iv, const bytes& plain) {
    const std::unique_ptr<EVP_CIPHER_CTX, decltype(&EVP_CIPHER_CTX_free)> ctx(EVP_CIPHER_CTX_new(),
                                                                              EVP_CIPHER_CTX_free);
    const EVP_CIPHER* const cipher = mode.hasIv ? EVP_aes_128_cbc() : EVP_aes_128_ecb();
    bytes out(plain.size() + 2 * BLOCK_BYTES);
    int updated = 0;
    int finished = 0;
    if (!ctx ||
        EVP_EncryptInit_ex(ctx.get(), cipher, nullptr, key.data(), mode.hasIv ? iv.data() : nullptr) != 1 ||
        EVP_EncryptUpdate(ctx.get(), out.data(), &updated, plain.data(), static_cast<int>(plain.size())) !=
            1 ||
        EVP_EncryptFinal_ex(ctx.get(), out.data() + updated, &finished) != 1) {
        throw Failure("OpenSSL, whose results the platform's are compared with, does not encrypt");
    }
    out.resize(static_cast<std::size_t>(updated) + static_cast<std::size_t>(finished));
    return out;
}

void init(ICipherContext& context, Direction direction, const bytes& iv) {
    if (direction == Direction::ENCRYPT) {
        context.encryptInit(iv);
    } else {
        context.decryptInit(iv);
    }
}

bytes finish(ICipherContext& context, const bytes& data) {
    bytes out = context.update(data);
    const bytes rest = context.final();
    out.insert(out.end(), rest.begin(), rest.end());
    return out;
}

bytes operate(ICipherContext& context, Direction direction, const bytes& iv, const bytes& data) {
    init(context, direction, iv);
    return finish(context, data);
}

std::string operation(const Mode& mode, Direction direction, std::size_t size) {
    return std::string(mode.name) + ": " + (direction == Direction::ENCRYPT ? "encrypting " : "decrypting ") +
           std::to_string(size) + " bytes";
}

}  // namespace vorl::testkit
