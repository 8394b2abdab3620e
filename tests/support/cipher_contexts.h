#ifndef VORL_TESTS_CIPHER_CONTEXTS_H
#define VORL_TESTS_CIPHER_CONTEXTS_H

#include "octets.h"

#include <tarvik/crypto/ICipherContext.h>

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace vorl::test {

/// What a device's cipher context may throw: nothing that the library knows.
class DeviceFault : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// One call of a cipher context.
struct ContextCall {
    std::string operation;
    bytes argument;

    bool operator==(const ContextCall& other) const {
        return operation == other.operation && argument == other.argument;
    }
};

/// A foreign cipher context that writes down its calls and answers as it was told.
class RecordingContext : public tarvik::crypto::ICipherContext {
public:
    explicit RecordingContext(unsigned int id) : id_(static_cast<Spec>(id)) {}

    Spec id() override {
        ++idCalls;
        return id_;
    }
    void encryptInit(const bytes& iv) override { record("encryptInit", iv); }
    void decryptInit(const bytes& iv) override { record("decryptInit", iv); }
    bytes update(const bytes& data) override {
        record("update", data);
        return updateOutput;
    }
    bytes final() override {
        record("final", bytes());
        return finalOutput;
    }

    /// Without those of id().
    std::vector<ContextCall> calls;
    int idCalls = 0;
    bytes updateOutput;
    bytes finalOutput;
    /// The operation that throws a DeviceFault; empty for none.
    std::string faultIn;

private:
    void record(const char* operation, const bytes& argument) {
        calls.push_back({operation, argument});
        if (faultIn == operation) {
            throw DeviceFault("fault in " + faultIn);
        }
    }

    const Spec id_;
};

/// A foreign cipher context that lets another one do the work, so that messages pass through the virtual
/// calls, and returns from update() no more than `readyAtMost` octets at a time: the others come with
/// final().
class ForwardingContext : public tarvik::crypto::ICipherContext {
public:
    explicit ForwardingContext(std::shared_ptr<tarvik::crypto::ICipherContext> inner,
                               std::size_t readyAtMost = static_cast<std::size_t>(-1))
        : inner_(std::move(inner)), readyAtMost_(readyAtMost) {}

    Spec id() override { return inner_->id(); }
    void encryptInit(const bytes& iv) override {
        held_.clear();
        inner_->encryptInit(iv);
    }
    void decryptInit(const bytes& iv) override {
        held_.clear();
        inner_->decryptInit(iv);
    }
    bytes update(const bytes& data) override {
        bytes ready = inner_->update(data);
        if (ready.size() > readyAtMost_) {
            held_ = slice(ready, readyAtMost_, ready.size() - readyAtMost_);
            ready.resize(readyAtMost_);
        }
        return ready;
    }
    bytes final() override { return std::exchange(held_, bytes()) + inner_->final(); }

private:
    const std::shared_ptr<tarvik::crypto::ICipherContext> inner_;
    const std::size_t readyAtMost_;
    bytes held_;
};

}  // namespace vorl::test

#endif
