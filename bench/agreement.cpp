// What a key agreement in a group of 1024 bits costs beside OpenSSL called by hand: a key pair, its text and
// the shared secret.

#include "vorl/DiffieHellman.h"
#include "vorl/DiffieHellmanParams.h"

#include <brisclient/Base64.h>
#include <openssl/bn.h>
#include <openssl/dh.h>

#include <benchmark/benchmark.h>

#include <memory>

namespace vorl::bench {

namespace {

using benchmark::State;
using Tarvik::BrisClient::Base64;

using Dh = std::shared_ptr<DH>;
using Number = std::unique_ptr<BIGNUM, decltype(&BN_free)>;

// The group of RFC 2409, section 6.2, without its name: OpenSSL would recognise it and take shorter private
// keys.
Dh group() {
    Dh dh(DH_new(), DH_free);
    BIGNUM* g = nullptr;
    BN_dec2bn(&g, "2");
    DH_set0_pqg(dh.get(), BN_get_rfc2409_prime_1024(nullptr), nullptr, g);
    return dh;
}

Dh pairIn(const DH* group) {
    Dh pair(DH_new(), DH_free);
    DH_set0_pqg(pair.get(), BN_dup(DH_get0_p(group)), nullptr, BN_dup(DH_get0_g(group)));
    DH_generate_key(pair.get());
    return pair;
}

// What follows the version and the length in a record whose key is 128 bytes, or 129.
const std::size_t HEADER = 6;

void floorAgreement(State& state) {
    const Dh params = group();
    const bytes peer = DiffieHellman::generate(DiffieHellmanParams(params))->getPubKey();
    for (auto _ : state) {
        const Dh pair = pairIn(params.get());
        bytes own(HEADER + 129);
        BN_bn2binpad(DH_get0_pub_key(pair.get()), own.data() + HEADER, 129);
        benchmark::DoNotOptimize(Base64::encode(own).data());

        const bytes record = Base64::decode(peer);
        const Number key(BN_bin2bn(record.data() + HEADER, static_cast<int>(record.size() - HEADER), nullptr),
                         BN_free);
        unsigned char secret[128] = {};
        DH_compute_key(secret, key.get(), pair.get());
        benchmark::DoNotOptimize(secret);
    }
}

void vorlAgreement(State& state) {
    const DiffieHellmanParams params(group());
    const bytes peer = DiffieHellman::generate(params)->getPubKey();
    for (auto _ : state) {
        const auto pair = DiffieHellman::generate(params);
        benchmark::DoNotOptimize(pair->getPubKey().data());
        benchmark::DoNotOptimize(pair->computeSharedSecret(peer).data());
    }
}

BENCHMARK(floorAgreement);
BENCHMARK(vorlAgreement);

}  // namespace

}  // namespace vorl::bench
