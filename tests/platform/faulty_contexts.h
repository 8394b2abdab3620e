#ifndef VORL_TESTS_FAULTY_CONTEXTS_H
#define VORL_TESTS_FAULTY_CONTEXTS_H

#include "octets.h"
#include "raw_cipher.h"

#include <tarvik/crypto/ICipherContext.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <stdexcept>
#include <utility>

// Cipher contexts with one fault each, as their names say.

namespace vorl::test {

using tarvik::crypto::ICipherContext;
using CipherContext = std::shared_ptr<ICipherContext>;

// Lets another context do the work, but for what a fault overrides.
class FaultyContext : public ICipherContext {
public:
    explicit FaultyContext(CipherContext inner) : inner_(std::move(inner)) {}

    Spec id() override { return inner_->id(); }
    void encryptInit(const bytes& iv) override { start(true, iv); }
    void decryptInit(const bytes& iv) override { start(false, iv); }
    bytes update(const bytes& data) override { return inner_->update(data); }
    bytes final() override { return inner_->final(); }

protected:
    virtual void start(bool encrypting, const bytes& iv) {
        encrypting_ = encrypting;
        if (encrypting) {
            inner_->encryptInit(iv);
        } else {
            inner_->decryptInit(iv);
        }
    }

    CipherContext inner_;
    bool encrypting_ = true;
};

class WrongId : public FaultyContext {
public:
    using FaultyContext::FaultyContext;
    Spec id() override { return static_cast<Spec>(inner_->id() + 1); }
};

class LosesTheLastByte : public FaultyContext {
public:
    using FaultyContext::FaultyContext;
    bytes update(const bytes& data) override { return data.empty() ? data : slice(data, 0, data.size() - 1); }
};

class LosesTheLastBlock : public FaultyContext {
public:
    using FaultyContext::FaultyContext;
    bytes final() override {
        const bytes rest = inner_->final();
        return encrypting_ ? bytes() : rest;
    }
};

class LosesTheEndOfAMessage : public FaultyContext {
public:
    using FaultyContext::FaultyContext;
    bytes final() override {
        bytes rest = inner_->final();
        if (!encrypting_ && !rest.empty()) {
            rest.pop_back();
        }
        return rest;
    }
};

// An engine with a buffer of a fixed size: for what goes in, or for what comes out.
inline const std::size_t SMALL_BUFFER_BYTES = 65536;

inline bytes cutToBuffer(const bytes& data) {
    return slice(data, 0, std::min(data.size(), SMALL_BUFFER_BYTES));
}

class HasASmallBufferIn : public FaultyContext {
public:
    using FaultyContext::FaultyContext;
    bytes update(const bytes& data) override { return inner_->update(cutToBuffer(data)); }
};

class HasASmallBufferOut : public FaultyContext {
public:
    using FaultyContext::FaultyContext;
    bytes update(const bytes& data) override { return cutToBuffer(inner_->update(data)); }
};

class KeepsTheLastPieceOnly : public FaultyContext {
public:
    using FaultyContext::FaultyContext;
    bytes update(const bytes& data) override {
        piece_ = data;
        return {};
    }
    bytes final() override {
        bytes out = inner_->update(piece_);
        return std::move(out) + inner_->final();
    }

private:
    bytes piece_;
};

class KeepsItsFirstIv : public FaultyContext {
public:
    using FaultyContext::FaultyContext;

protected:
    void start(bool encrypting, const bytes& iv) override {
        if (first_.empty()) {
            first_ = iv;
        }
        FaultyContext::start(encrypting, first_);
    }

private:
    bytes first_;
};

class IgnoresTheIv : public FaultyContext {
public:
    using FaultyContext::FaultyContext;

protected:
    void start(bool encrypting, const bytes& iv) override {
        FaultyContext::start(encrypting, bytes(iv.size()));
    }
};

class EncryptsABlockOfZeros : public FaultyContext {
public:
    using FaultyContext::FaultyContext;
    bytes update(const bytes& data) override {
        return inner_->update(encrypting_ ? bytes(data.size()) : data);
    }
};

// It takes an empty piece behind others for the end.
class EndsAtAnEmptyPiece : public FaultyContext {
public:
    using FaultyContext::FaultyContext;
    bytes update(const bytes& data) override {
        isOver_ = isOver_ || (isFed_ && data.empty());
        isFed_ = isFed_ || !data.empty();
        return isOver_ ? bytes() : inner_->update(data);
    }

protected:
    void start(bool encrypting, const bytes& iv) override {
        isFed_ = false;
        isOver_ = false;
        FaultyContext::start(encrypting, iv);
    }

private:
    bool isFed_ = false;
    bool isOver_ = false;
};

// The cipher of one spec under the number of another, without an IV or with one of zeros.
class PassesForAnother : public FaultyContext {
public:
    PassesForAnother(CipherContext inner, Spec spec) : FaultyContext(std::move(inner)), spec_(spec) {}
    Spec id() override { return spec_; }

protected:
    void start(bool encrypting, const bytes& /*iv*/) override {
        FaultyContext::start(encrypting, bytes(inner_->id() == SPEC_AES_128_CBC ? 16 : 0));
    }

private:
    const Spec spec_;
};

// Whole blocks, enciphered or deciphered.
using BlockCipher = bytes (*)(bool enciphering, const bytes& key, const bytes& blocks);

inline bytes addTheKey(bool /*enciphering*/, const bytes& key, const bytes& blocks) {
    bytes out = blocks;
    for (std::size_t i = 0; i < out.size(); ++i) {
        out[i] = static_cast<unsigned char>(out[i] ^ key[i % key.size()]);
    }
    return out;
}

// Triple DES, whose blocks have 64 bits. OpenSSL is left to add a block of padding behind the others, and to
// take it off again.
inline bytes encipherHalves(bool enciphering, const bytes& key, const bytes& blocks) {
    const EVP_CIPHER* const cipher = EVP_des_ede3_ecb();
    const bytes threeKeys = key + slice(key, 0, 8);
    if (enciphering) {
        return slice(rawCipher(cipher, true, threeKeys, {}, blocks), 0, blocks.size());
    }
    return rawCipher(cipher, false, threeKeys, {}, blocks + rawCipher(cipher, true, threeKeys, {}, {}));
}

// Padded as it should be, but encrypted by another cipher than AES, block by block.
class HasACipherOfItsOwn : public ICipherContext {
public:
    HasACipherOfItsOwn(BlockCipher cipher, Spec spec, bytes key)
        : cipher_(cipher), spec_(spec), key_(std::move(key)) {}

    Spec id() override { return spec_; }
    void encryptInit(const bytes& /*iv*/) override { start(true); }
    void decryptInit(const bytes& /*iv*/) override { start(false); }
    bytes update(const bytes& data) override {
        fed_ = fed_ + data;
        return {};
    }
    bytes final() override { return encrypting_ ? sealed() : opened(); }

private:
    void start(bool encrypting) {
        encrypting_ = encrypting;
        fed_.clear();
    }
    bytes sealed() const {
        const std::size_t count = 16 - fed_.size() % 16;
        return cipher_(true, key_, fed_ + bytes(count, static_cast<unsigned char>(count)));
    }
    bytes opened() const {
        const bytes plain = cipher_(false, key_, fed_);
        const std::size_t count = plain.empty() ? 0 : plain.back();
        if (plain.size() % 16 != 0 || count < 1 || count > 16 || count > plain.size() ||
            slice(plain, plain.size() - count, count) != bytes(count, plain.back())) {
            throw std::runtime_error("this is no ciphertext");
        }
        return slice(plain, 0, plain.size() - count);
    }

    const BlockCipher cipher_;
    const Spec spec_;
    const bytes key_;
    bool encrypting_ = true;
    bytes fed_;
};

class AcceptsAnyPadding : public FaultyContext {
public:
    using FaultyContext::FaultyContext;
    bytes final() override {
        try {
            return inner_->final();
        } catch (const std::exception&) {
            return {};
        }
    }
};

class TakesNothingForACiphertext : public FaultyContext {
public:
    using FaultyContext::FaultyContext;
    bytes update(const bytes& data) override {
        isEmpty_ = data.empty();
        return inner_->update(data);
    }
    bytes final() override { return !encrypting_ && isEmpty_ ? bytes() : inner_->final(); }

private:
    bool isEmpty_ = true;
};

class KeepsItsDirection : public FaultyContext {
public:
    using FaultyContext::FaultyContext;

protected:
    void start(bool encrypting, const bytes& iv) override {
        if (!isStarted_) {
            first_ = encrypting;
            isStarted_ = true;
        }
        FaultyContext::start(first_, iv);
    }

private:
    bool isStarted_ = false;
    bool first_ = true;
};

class KeepsWhatWasUnfinished : public FaultyContext {
public:
    using FaultyContext::FaultyContext;
    bytes update(const bytes& data) override {
        fed_ = fed_ + data;
        return {};
    }
    bytes final() override {
        bytes out = inner_->update(std::exchange(fed_, bytes()));
        return std::move(out) + inner_->final();
    }

private:
    bytes fed_;
};

class DoesNotRecover : public FaultyContext {
public:
    using FaultyContext::FaultyContext;
    bytes final() override {
        if (isBroken_) {
            throw std::runtime_error("the engine has stopped");
        }
        isBroken_ = true;
        bytes rest = inner_->final();
        isBroken_ = false;
        return rest;
    }

private:
    bool isBroken_ = false;
};

class ThrowsANumber : public FaultyContext {
public:
    using FaultyContext::FaultyContext;
    bytes final() override {
        try {
            return inner_->final();
        } catch (const std::exception&) {
            throw 17;
        }
    }
};

class ThrowsAlways : public FaultyContext {
public:
    using FaultyContext::FaultyContext;
    bytes final() override { throw std::domain_error("no engine"); }
};

// One engine for all contexts, which works on for whoever started it last.
class SharesAnEngine : public FaultyContext {
public:
    using FaultyContext::FaultyContext;
    bytes update(const bytes& data) override { return engine->update(data); }
    bytes final() override { return engine->final(); }
    inline static CipherContext engine;

protected:
    void start(bool encrypting, const bytes& iv) override {
        FaultyContext::start(encrypting, iv);
        engine = inner_;
    }
};

// Not a fault: all output comes with final().
class DelaysItsOutput : public FaultyContext {
public:
    using FaultyContext::FaultyContext;
    bytes update(const bytes& data) override {
        held_ = held_ + inner_->update(data);
        return {};
    }
    bytes final() override { return std::exchange(held_, bytes()) + inner_->final(); }

protected:
    void start(bool encrypting, const bytes& iv) override {
        held_.clear();
        FaultyContext::start(encrypting, iv);
    }

private:
    bytes held_;
};

// It encrypts each block into itself.
class EncryptsNothing : public FaultyContext {
public:
    using FaultyContext::FaultyContext;
    bytes update(const bytes& data) override {
        inner_->update(data);
        return data;
    }
};

}  // namespace vorl::test

#endif
