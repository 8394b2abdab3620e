// What an RSA-2048 signature costs, made and verified, beside OpenSSL called by hand.

#include "vorl/PKSignature.h"
#include "vorl/PKSignatureProcessor.h"
#include "vorl/PrivKey.h"
#include "vorl/PubKey.h"
#include "vorl/bytes.h"

#include <openssl/evp.h>
#include <openssl/rsa.h>

#include <benchmark/benchmark.h>

#include <memory>

namespace vorl::bench {

namespace {

using benchmark::State;

const bytes DATA(1024, 0x61);

const std::shared_ptr<EVP_PKEY>& key() {
    static const std::shared_ptr<EVP_PKEY> pkey(EVP_RSA_gen(2048), EVP_PKEY_free);
    return pkey;
}

std::shared_ptr<RSA> rsa() {
    return {EVP_PKEY_get1_RSA(key().get()), RSA_free};
}

// Fetched once, which is what OpenSSL advises.
const EVP_MD* sha1() {
    static const EVP_MD* const fetched = EVP_MD_fetch(nullptr, "SHA1", nullptr);
    return fetched;
}

struct Digest {
    unsigned char octets[EVP_MAX_MD_SIZE];
    unsigned int length;
};

Digest digestOf(const bytes& data) {
    Digest digest;
    EVP_Digest(data.data(), data.size(), digest.octets, &digest.length, sha1(), nullptr);
    return digest;
}

void floorSign(State& state) {
    const std::shared_ptr<RSA> plain = rsa();
    for (auto _ : state) {
        const Digest digest = digestOf(DATA);
        unsigned char value[256];
        unsigned int length = 0;
        RSA_sign(NID_sha1, digest.octets, digest.length, value, &length, plain.get());
        benchmark::DoNotOptimize(value);
    }
}

void vorlSign(State& state) {
    const auto priv = std::make_shared<const PrivKey>(key());
    for (auto _ : state) {
        benchmark::DoNotOptimize(PKSignatureProcessor::sign(priv, DATA).get());
    }
}

void floorVerify(State& state) {
    const std::shared_ptr<RSA> plain = rsa();
    const bytes value = PKSignatureProcessor::sign(std::make_shared<const PrivKey>(key()), DATA)->val();
    for (auto _ : state) {
        const Digest digest = digestOf(DATA);
        benchmark::DoNotOptimize(RSA_verify(NID_sha1, digest.octets, digest.length, value.data(),
                                            static_cast<unsigned int>(value.size()), plain.get()));
    }
}

void vorlVerify(State& state) {
    const auto pub = std::make_shared<const PubKey>(key());
    const auto signature = PKSignatureProcessor::sign(std::make_shared<const PrivKey>(key()), DATA);
    for (auto _ : state) {
        benchmark::DoNotOptimize(PKSignatureProcessor::verify(signature, pub, DATA));
    }
}

BENCHMARK(floorSign);
BENCHMARK(vorlSign);
BENCHMARK(floorVerify);
BENCHMARK(vorlVerify);

}  // namespace

}  // namespace vorl::bench
