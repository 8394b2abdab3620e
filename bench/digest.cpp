// What a digest and a message authentication code cost beside OpenSSL called by hand.

#include "vorl/DigestAlgo.h"
#include "vorl/Digester.h"
#include "vorl/HMAC.h"

#include <openssl/evp.h>
#include <openssl/hmac.h>

#include <benchmark/benchmark.h>

#include <memory>

namespace vorl::bench {

namespace {

using benchmark::State;

struct FreeDigestContext {
    void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
};
using DigestContext = std::unique_ptr<EVP_MD_CTX, FreeDigestContext>;

struct FreeHmacContext {
    void operator()(HMAC_CTX* context) const { HMAC_CTX_free(context); }
};
using HmacContext = std::unique_ptr<HMAC_CTX, FreeHmacContext>;

const bytes KEY(32, 0x2a);

// Fetched once, which is what OpenSSL advises.
const EVP_MD* sha256() {
    static const EVP_MD* const fetched = EVP_MD_fetch(nullptr, "SHA2-256", nullptr);
    return fetched;
}

bytes dataOf(const State& state) {
    return bytes(static_cast<std::size_t>(state.range(0)), 0x61);
}

void digestByHand(EVP_MD_CTX* context, const bytes& data) {
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    EVP_DigestInit_ex(context, sha256(), nullptr);
    EVP_DigestUpdate(context, data.data(), data.size());
    EVP_DigestFinal_ex(context, digest, &length);
    benchmark::DoNotOptimize(digest);
}

void floorKeptDigest(State& state) {
    const DigestContext context(EVP_MD_CTX_new());
    const bytes data = dataOf(state);
    for (auto _ : state) {
        digestByHand(context.get(), data);
    }
}

void vorlKeptDigest(State& state) {
    Digester digester(DigestAlgo::SHA256());
    const bytes data = dataOf(state);
    for (auto _ : state) {
        digester.init();
        digester.update(data);
        benchmark::DoNotOptimize(digester.final().data());
    }
}

void floorNewDigest(State& state) {
    const bytes data = dataOf(state);
    for (auto _ : state) {
        const DigestContext context(EVP_MD_CTX_new());
        digestByHand(context.get(), data);
    }
}

void vorlNewDigest(State& state) {
    const bytes data = dataOf(state);
    for (auto _ : state) {
        Digester digester(DigestAlgo::SHA256());
        digester.init();
        digester.update(data);
        benchmark::DoNotOptimize(digester.final().data());
    }
}

void floorKeptHmac(State& state) {
    const HmacContext context(HMAC_CTX_new());
    HMAC_Init_ex(context.get(), KEY.data(), static_cast<int>(KEY.size()), sha256(), nullptr);
    const bytes data = dataOf(state);
    for (auto _ : state) {
        unsigned char code[EVP_MAX_MD_SIZE];
        unsigned int length = 0;
        HMAC_Init_ex(context.get(), nullptr, 0, nullptr, nullptr);
        HMAC_Update(context.get(), data.data(), data.size());
        HMAC_Final(context.get(), code, &length);
        benchmark::DoNotOptimize(code);
    }
}

void vorlKeptHmac(State& state) {
    HMAC hmac(KEY);
    const bytes data = dataOf(state);
    for (auto _ : state) {
        hmac.init();
        hmac.update(data);
        benchmark::DoNotOptimize(hmac.final().data());
    }
}

const std::int64_t KIB = 1024;

void sizes(benchmark::internal::Benchmark* b) {
    b->Arg(64)->Arg(KIB)->Arg(KIB * KIB);
}

BENCHMARK(floorKeptDigest)->Apply(sizes);
BENCHMARK(vorlKeptDigest)->Apply(sizes);
BENCHMARK(floorNewDigest)->Apply(sizes);
BENCHMARK(vorlNewDigest)->Apply(sizes);
BENCHMARK(floorKeptHmac)->Apply(sizes);
BENCHMARK(vorlKeptHmac)->Apply(sizes);

}  // namespace

}  // namespace vorl::bench
