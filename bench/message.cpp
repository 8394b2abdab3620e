// What protecting and opening a message costs, beside the floor: the same by hand-written calls of OpenSSL.
//
// scripts/bench runs this and prints the ratios. Read them only within one run: the machine's speed moves,
// and so does everything in it.

#include "floor.h"

#include "vorl/CipherSpec.h"
#include "vorl/CipherWrapper.h"
#include "vorl/Random.h"
#include "vorl/SoftwareKeyCipher.h"
#include "vorl/VORLLib.h"
#include "vorl/VorlContext.h"

#include <brisclient/Base64.h>

#include <benchmark/benchmark.h>

#include <stdexcept>

namespace vorl::bench {

namespace {

using benchmark::State;
using Tarvik::BrisClient::Base64;

const bytes KEY(16, 0x2a);

bytes messageOf(const State& state) {
    bytes message(static_cast<std::size_t>(state.range(0)));
    for (std::size_t i = 0; i < message.size(); ++i) {
        message[i] = static_cast<unsigned char>(i * 31 + (i >> 8));
    }
    return message;
}

void count(State& state) {
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

// A context that the library does not know: it goes through the virtual calls alone.
class ForeignCipher : public SoftwareKeyCipher {
public:
    ForeignCipher() : SoftwareKeyCipher(CipherSpec::AES_128_CBC_PKCS5(), KEY) {}
};

void floorEncrypt(State& state) {
    Floor floor(KEY);
    const bytes message = messageOf(state);
    for (auto _ : state) {
        benchmark::DoNotOptimize(floor.encrypt(message).data.get());
    }
    count(state);
}

void vorlEncrypt(State& state) {
    VorlContext context(KEY);
    const bytes message = messageOf(state);
    for (auto _ : state) {
        benchmark::DoNotOptimize(context.encrypt(message).data());
    }
    count(state);
}

void foreignEncrypt(State& state) {
    ForeignCipher cipher;
    const auto wrapper = CipherWrapper::FULL_CIPHER();
    const bytes message = messageOf(state);
    for (auto _ : state) {
        benchmark::DoNotOptimize(Base64::encode(wrapper->encrypt(message, cipher)).data());
    }
    count(state);
}

void floorDecrypt(State& state) {
    Floor floor(KEY);
    const bytes text = VorlContext(KEY).encrypt(messageOf(state));
    for (auto _ : state) {
        benchmark::DoNotOptimize(floor.decrypt(text).data.get());
    }
    count(state);
}

void vorlDecrypt(State& state) {
    VorlContext context(KEY);
    const bytes text = context.encrypt(messageOf(state));
    for (auto _ : state) {
        benchmark::DoNotOptimize(context.decrypt(text).data());
    }
    count(state);
}

void foreignDecrypt(State& state) {
    ForeignCipher cipher;
    const bytes text = VorlContext(KEY).encrypt(messageOf(state));
    for (auto _ : state) {
        benchmark::DoNotOptimize(CipherWrapper::decrypt(Base64::decode(text), cipher).data());
    }
    count(state);
}

const std::int64_t KIB = 1024;

// Neither 1 KiB nor any of the others is a size that the format cannot read back.
void sizes(benchmark::internal::Benchmark* b) {
    for (const std::int64_t size : {std::int64_t{64}, KIB, 16 * KIB, 1024 * KIB, 16 * 1024 * KIB}) {
        b->Arg(size);
    }
}

BENCHMARK(floorEncrypt)->Apply(sizes);
BENCHMARK(vorlEncrypt)->Apply(sizes);
BENCHMARK(foreignEncrypt)->Apply(sizes);
BENCHMARK(floorDecrypt)->Apply(sizes);
BENCHMARK(vorlDecrypt)->Apply(sizes);
BENCHMARK(foreignDecrypt)->Apply(sizes);

// A context for each thread: what they share must not slow them down.
BENCHMARK(vorlEncrypt)->Arg(KIB)->Threads(1)->Threads(2)->UseRealTime();
BENCHMARK(vorlDecrypt)->Arg(KIB)->Threads(1)->Threads(2)->UseRealTime();
BENCHMARK(floorEncrypt)->Arg(KIB)->Threads(1)->Threads(2)->UseRealTime();
BENCHMARK(floorDecrypt)->Arg(KIB)->Threads(1)->Threads(2)->UseRealTime();

// A floor that makes another message would be no floor.
void checkFloor() {
    for (const std::size_t size : {0U, 5U, 64U, 16384U, 70000U, 200000U}) {
        bytes message(size, 0x61);
        Floor floor(KEY);
        VorlContext context(KEY);
        const auto made = floor.encrypt(message);
        const auto opened = floor.decrypt(context.encrypt(message));
        if (context.decrypt(bytes(made.data.get(), made.data.get() + made.size)) != message ||
            bytes(opened.data.get(), opened.data.get() + opened.size) != message) {
            throw std::logic_error("the floor and the library do not agree");
        }
    }
}

}  // namespace

void start() {
    Random::init_ = true;
    VORLLib::init();
    checkFloor();
}

}  // namespace vorl::bench

int main(int argc, char** argv) {
    vorl::bench::start();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 2;
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    vorl::VORLLib::cleanup();
    return 0;
}
