#include "vorl/testkit/Conformance.h"

#include "checks.h"
#include "expectations.h"

#include <brisclient/Base64.h>
#include <brisclient/Mutex.h>
#include <tarvik/crypto/VorlCryptoFactory.h>

#include <cxxabi.h>

#include <cstdlib>

namespace vorl::testkit {

namespace {

std::vector<Check> allChecks() {
    std::vector<Check> all;
    for (const std::vector<Check>& some : {factoryChecks(), cipherChecks(), faultChecks(), sharingChecks(),
                                           base64Checks(), mutexChecks(), signerChecks()}) {
        all.insert(all.end(), some.begin(), some.end());
    }
    return all;
}

Finding examine(const Check& check, const Platform& platform) {
    try {
        doing("The platform", [&] { check.examine(platform); });
        return {Finding::HOLDS, ""};
    } catch (const Failure& failure) {
        return {Finding::FAILS, failure.what()};
    } catch (const LeftOut& reason) {
        return {Finding::LEFT_OUT, reason.what()};
    }
}

}  // namespace

std::string describe(const std::exception& fault) {
    const char* const mangled = typeid(fault).name();
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> name(
        abi::__cxa_demangle(mangled, nullptr, nullptr, &status), std::free);
    return std::string(status == 0 ? name.get() : mangled) + ": " + fault.what();
}

Platform linkedPlatform() {
    Platform linked;
    linked.name = "LinkedPlatform";
    linked.init = tarvik::crypto::VorlCryptoFactory::init;
    linked.cleanup = tarvik::crypto::VorlCryptoFactory::cleanup;
    linked.cryptContext = tarvik::crypto::VorlCryptoFactory::cryptContext;
    linked.provision = [](const bytes& value) { return value; };
    linked.encode = Tarvik::BrisClient::Base64::encode;
    linked.decode = Tarvik::BrisClient::Base64::decode;
    linked.makeMutex = [](bool recursive) {
        const auto mutex = std::make_shared<Tarvik::BrisClient::Mutex>(recursive);
        return Mutex{[mutex] { mutex->lock(); }, [mutex] { mutex->unlock(); }};
    };
    return linked;
}

const std::vector<Check>& checks() {
    static const std::vector<Check> all = allChecks();
    return all;
}

Finding run(const Check& check, const Platform& platform) {
    Finding finding = examine(check, platform);
    // A fault of the check is told before one of tidying up behind it.
    try {
        doing("cleanup()", platform.cleanup);
    } catch (const Failure& failure) {
        if (finding.outcome != Finding::FAILS) {
            finding = {Finding::FAILS, failure.what()};
        }
    }
    return finding;
}

}  // namespace vorl::testkit
