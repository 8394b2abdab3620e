#include "vorl/PKSignatureProcessor.h"

#include "core/ErrorQueueMark.h"
#include "vorl/DigestAlgo.h"
#include "vorl/OpenSSLException.h"
#include "vorl/PKAlgo.h"
#include "vorl/PKSignature.h"
#include "vorl/PKSignatureAlgo.h"
#include "vorl/PrivKey.h"
#include "vorl/PubKey.h"
#include "vorl/VORLException.h"
#include "vorl/X509Cert.h"

#include <openssl/rsa.h>

#include <cstddef>
#include <limits>
#include <utility>

namespace vorl {

namespace {

[[noreturn]] void refuseKey(const PKSignatureAlgo& algo, const char* half, const std::string& key) {
    // No blank before "with": logs have always been searched for it so.
    throw VORLException("Cannot initialize PKSignatureProcessor(" + algo.toString() + ")" + "with " + half +
                        " key:\n" + key);
}

void checkMode(PKSignatureProcessor::Mode mode, PKSignatureProcessor::Mode wanted, const char* operation) {
    if (mode != wanted) {
        throw VORLException(std::string("Attempted to do ") + operation +
                            " operation in mode: " + PKSignatureProcessor::modeToString(mode));
    }
}

// What only another public-key algorithm than RSA could bring about.
void requireRsa(const OpenSSLPKey& key) {
    if (key.algo() != PKAlgo::RSA()) {
        throw VORLException("Unknown public key algorithm: " + key.algo()->name);
    }
}

}  // namespace

PKSignatureProcessor::PKSignatureProcessor(std::shared_ptr<const PKSignatureAlgo> algo)
    : algo_(std::move(algo)), digester_(algo_->digestAlgo()) {
    digester_.init();
}

std::shared_ptr<PKSignatureProcessor> PKSignatureProcessor::create(
    const std::shared_ptr<const PKSignatureAlgo>& algo) {
    return std::make_shared<PKSignatureProcessor>(algo);
}

std::shared_ptr<PKSignatureProcessor> PKSignatureProcessor::create() {
    return create(PKSignatureAlgo::SHA1withRSA());
}

void PKSignatureProcessor::initSign(const std::shared_ptr<const PrivKey>& key) {
    if (!key) {
        throw VORLException("PrivKey parameter is null in PKSignatureProcessor::initSign()");
    }
    // Deliberately before the key is judged: after a refused key the mode is SIGN all the same.
    mode_ = SIGN;
    if (key->algo() != algo_->pkAlgo()) {
        refuseKey(*algo_, "private", key->toString());
    }
    privKey_ = std::make_shared<const PrivKey>(*key);
}

void PKSignatureProcessor::initVerify(const std::shared_ptr<const PubKey>& key) {
    mode_ = VERIFY;
    if (key->algo() != algo_->pkAlgo()) {
        refuseKey(*algo_, "public", key->toString());
    }
    pubKey_ = std::make_shared<const PubKey>(*key);
}

void PKSignatureProcessor::update(const bytes& data) {
    digester_.update(data);
}

std::shared_ptr<const PKSignature> PKSignatureProcessor::sign() {
    checkMode(mode_, SIGN, "sign");
    if (!privKey_) {
        throw VORLException("privkey is NULL in sign()");
    }
    if (privKey_->getEVP_PKEY() == nullptr) {
        throw VORLException("privkey empty in sign()");
    }
    const bytes digest = digester_.final();
    requireRsa(*privKey_);
    const std::shared_ptr<RSA> rsa = privKey_->toRSA();
    if (!rsa) {
        throw VORLException("Unable to get RSA from private key:\n" + privKey_->toString());
    }
    bytes val(static_cast<std::size_t>(RSA_size(rsa.get())));
    unsigned int length = 0;
    if (RSA_sign(algo_->digestAlgo()->nid, digest.data(), static_cast<unsigned int>(digest.size()),
                 val.data(), &length, rsa.get()) == 0) {
        OpenSSLException::throw_message("RSA_sign() in PKSignatureProcessor::sign()", "PKSignatureProcessor",
                                        __LINE__, __func__);
    }
    val.resize(length);
    return PKSignature::create(val, algo_);
}

bool PKSignatureProcessor::verify(const std::shared_ptr<const PKSignature>& signature) {
    checkMode(mode_, VERIFY, "verify");
    if (!pubKey_) {
        throw VORLException("pubkey is NULL in verify()");
    }
    if (pubKey_->getEVP_PKEY() == nullptr) {
        throw VORLException("pubkey empty in verify()");
    }
    const bytes digest = digester_.final();
    const bytes val = signature->val();
    requireRsa(*pubKey_);
    const std::shared_ptr<RSA> rsa = pubKey_->toRSA();
    // A signature that does not match leaves entries in the queue, but is no error.
    const ErrorQueueMark mark;
    return val.size() <= std::numeric_limits<unsigned int>::max() &&
           RSA_verify(algo_->digestAlgo()->nid, digest.data(), static_cast<unsigned int>(digest.size()),
                      val.data(), static_cast<unsigned int>(val.size()), rsa.get()) == 1;
}

PKSignatureProcessor::~PKSignatureProcessor() = default;

void PKSignatureProcessor::initVerify(const std::shared_ptr<const X509Cert>& cert) {
    initVerify(std::shared_ptr<const PubKey>(cert->getPubKey()));
}

std::shared_ptr<const PKSignature> PKSignatureProcessor::sign(const std::shared_ptr<const PrivKey>& privKey,
                                                              const bytes& data) {
    const std::shared_ptr<PKSignatureProcessor> processor = create(PKSignatureAlgo::SHA1withRSA());
    processor->initSign(privKey);
    processor->update(data);
    return processor->sign();
}

bool PKSignatureProcessor::verify(const std::shared_ptr<const PKSignature>& signature,
                                  const std::shared_ptr<const PubKey>& pubKey, const bytes& data) {
    const std::shared_ptr<PKSignatureProcessor> processor = create(signature->algo());
    processor->initVerify(pubKey);
    processor->update(data);
    return processor->verify(signature);
}

std::string PKSignatureProcessor::modeToString(Mode mode) {
    switch (mode) {
        case SIGN:
            return "Signature Creation";
        case VERIFY:
            return "Signature Verification";
        case UNINITIALIZED:
            return "Uninitialized";
    }
    throw VORLException("Unknown signature mode");
}

}  // namespace vorl
