#include "Token.h"
#include "softtoken.h"

#include <tarvik/crypto/ICipherContext.h>
#include <tarvik/crypto/IRequestSigner.h>
#include <tarvik/crypto/VorlCryptoFactory.h>

#include <cstring>
#include <utility>

// The factory and what it hands out. A context belongs to one thread at a time; the factory may be asked by
// any.

namespace tarvik::softtoken {

namespace {

using crypto::ICipherContext;

const std::size_t BLOCK_BYTES = 16;

/// Collects a message and has the token do all of it in final(): until then nothing is under way there, so
/// that an init has nothing to take back.
class TokenContext : public ICipherContext {
public:
    TokenContext(Spec spec, std::shared_ptr<Token> token, const Octets& handle)
        : spec_(spec), session_(std::move(token)), key_(session_.keyOf(handle)) {}
    ~TokenContext() override { forget(); }
    TokenContext(const TokenContext&) = delete;
    TokenContext& operator=(const TokenContext&) = delete;

    Spec id() override { return spec_; }
    void encryptInit(const Octets& iv) override { start(ENCRYPTING, iv); }
    void decryptInit(const Octets& iv) override { start(DECRYPTING, iv); }
    Octets update(const Octets& data) override {
        collected_.insert(collected_.end(), data.begin(), data.end());
        return {};
    }
    Octets final() override {
        const State state = std::exchange(state_, IDLE);
        if (state == IDLE) {
            throw Fault("final() without an init");
        }
        const Octets out = state == ENCRYPTING ? encrypt() : decrypt();
        forget();
        return out;
    }

private:
    enum State { IDLE, ENCRYPTING, DECRYPTING };

    void start(State state, const Octets& iv) {
        forget();
        iv_ = iv;
        state_ = state;
    }

    void forget() {
        explicit_bzero(collected_.data(), collected_.size());
        collected_.clear();
    }

    CK_MECHANISM mechanism() {
        return spec_ == SPEC_AES_128_CBC ? CK_MECHANISM{CKM_AES_CBC_PAD, iv_.data(), iv_.size()}
                                         : CK_MECHANISM{CKM_AES_ECB, nullptr, 0};
    }

    // The token pads in CBC mode only.
    Octets encrypt() {
        if (spec_ == SPEC_AES_128_ECB) {
            const std::size_t padding = BLOCK_BYTES - collected_.size() % BLOCK_BYTES;
            collected_.insert(collected_.end(), padding, static_cast<unsigned char>(padding));
        }
        return session_.encrypt(mechanism(), key_, collected_);
    }

    Octets decrypt() {
        if (collected_.empty() || collected_.size() % BLOCK_BYTES != 0) {
            throw Fault("a ciphertext is one or more whole blocks");
        }
        Octets plain = session_.decrypt(mechanism(), key_, collected_);
        if (spec_ == SPEC_AES_128_ECB) {
            removePadding(plain);
        }
        return plain;
    }

    // Looks at the whole last block, whatever it finds there.
    static void removePadding(Octets& plain) {
        const std::size_t padding = plain.back();
        bool isPadding = padding >= 1 && padding <= BLOCK_BYTES;
        for (std::size_t i = 1; i <= BLOCK_BYTES; ++i) {
            isPadding &= i > padding || plain[plain.size() - i] == padding;
        }
        if (!isPadding) {
            explicit_bzero(plain.data(), plain.size());
            throw Fault("the padding is wrong");
        }
        plain.resize(plain.size() - padding);
    }

    const Spec spec_;
    const Session session_;
    const CK_OBJECT_HANDLE key_;
    State state_ = IDLE;
    Octets iv_;
    Octets collected_;
};

/// Needs neither a key nor the token.
class NoCipher : public ICipherContext {
public:
    Spec id() override { return SPEC_NULL; }
    void encryptInit(const Octets& /*iv*/) override {}
    void decryptInit(const Octets& /*iv*/) override {}
    Octets update(const Octets& data) override { return data; }
    Octets final() override { return {}; }
};

/// A key that encrypts should not sign as well, and the library knows of one key only.
class NoSigner : public crypto::IRequestSigner {
public:
    void sign(const std::string& /*s*/, http::IHttpStream::Request& /*request*/) override { refuse(); }
    bool verify(const std::string& /*s*/, http::IHttpStream& /*stream*/) override { refuse(); }

private:
    [[noreturn]] static void refuse() { throw Fault("this platform does not sign"); }
};

// What init() holds. Never destroyed: at the end of a process, the module may end before this would.
std::shared_ptr<Token>& opened() {
    static auto* const token = new std::shared_ptr<Token>();
    return *token;
}

}  // namespace

}  // namespace tarvik::softtoken

namespace tarvik::crypto {

void VorlCryptoFactory::init() {
    softtoken::opened() = softtoken::Token::shared();
}

void VorlCryptoFactory::cleanup() {
    softtoken::opened().reset();
}

std::pair<std::shared_ptr<ICipherContext>, std::shared_ptr<IRequestSigner>> VorlCryptoFactory::cryptContext(
    ICipherContext::Spec spec, const std::vector<unsigned char>& key) {
    const std::shared_ptr<softtoken::Token> token = softtoken::opened();
    if (!token) {
        throw softtoken::Fault("the platform was not started");
    }
    const auto signer = std::make_shared<softtoken::NoSigner>();
    switch (spec) {
        case ICipherContext::SPEC_NULL:
            return {std::make_shared<softtoken::NoCipher>(), signer};
        case ICipherContext::SPEC_AES_128_ECB:
        case ICipherContext::SPEC_AES_128_CBC:
            return {std::make_shared<softtoken::TokenContext>(spec, token, key), signer};
    }
    throw softtoken::Fault("there is no cipher " + std::to_string(static_cast<unsigned int>(spec)));
}

}  // namespace tarvik::crypto
