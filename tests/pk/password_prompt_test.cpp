#include "messageOf.h"
#include "raw_pem.h"

#include "vorl/OpenSSLException.h"
#include "vorl/PrivKey.h"
#include "vorl/PubKey.h"
#include "vorl/X509Cert.h"

#include <gtest/gtest.h>
#include <openssl/pem.h>
#include <unistd.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <string>

// What is encrypted fails at once: nobody is asked for a password, and standard input is the application's.
// Each load happens in a process of its own, without a terminal and with a pipe for its standard input.

namespace vorl::test {
namespace {

// What reads from the idle pipe never returns, and is ended by the alarm.
const unsigned int SECONDS_TO_FAIL = 30;

void replaceStandardInput(const std::string& waitingText) {
    int ends[2];
    if (::setsid() < 0 || ::pipe(ends) != 0 || ::dup2(ends[0], STDIN_FILENO) != STDIN_FILENO ||
        ::write(ends[1], waitingText.data(), waitingText.size()) !=
            static_cast<ssize_t>(waitingText.size())) {
        std::perror("replaceStandardInput");
        std::_Exit(2);
    }
    ::alarm(SECONDS_TO_FAIL);
}

struct LoadCase {
    const char* name;
    std::string (*pem)();
    void (*load)(const std::string& pem);
    const char* message;
};

const char* const NO_KEY = "PEM_read_bio_PUBKEY() in PubKey::loadFromPEMBIO()";

const LoadCase LOADS[] = {
    {"PrivateKey", [] { return privatePem(rsa1024(), EVP_aes_128_cbc(), PASSWORD); },
     [](const std::string& pem) { PrivKey::loadFromPEMStr(pem); }, NO_KEY},
    {"TraditionalPrivateKey", [] { return traditionalPem(rsa1024(), EVP_aes_128_cbc(), PASSWORD); },
     [](const std::string& pem) { PrivKey::loadFromPEMStr(pem); }, NO_KEY},
    {"PublicKey", [] { return encryptedPem(derOfPublicKey, PEM_STRING_PUBLIC, rsa1024().get()); },
     [](const std::string& pem) { PubKey::loadFromPEMStr(pem); }, NO_KEY},
    {"Certificate", [] { return encryptedPem(derOfCertificate, PEM_STRING_X509, rawCert(CertForm()).get()); },
     [](const std::string& pem) { X509Cert::loadFromPEMStr(pem); }, "PEM_read_bio_X509()"},
};

class PasswordPromptDeathTest : public ::testing::TestWithParam<LoadCase> {
protected:
    // Ends the process with 0 where the text is refused as it should be.
    [[noreturn]] static void loadWith(const std::string& pem, const std::string& waitingText) {
        replaceStandardInput(waitingText);
        const std::string message = messageOf<OpenSSLException>([&] { GetParam().load(pem); });
        std::fprintf(stderr, "%s", message.c_str());
        char next = 0;
        // An input that was touched would be at its end, or in the middle of a line.
        const bool untouched =
            waitingText.empty() || (::read(STDIN_FILENO, &next, 1) == 1 && next == waitingText[0]);
        std::_Exit(message == GetParam().message && untouched ? 0 : 1);
    }
};

TEST_P(PasswordPromptDeathTest, IsNotWaitedFor) {
    const std::string pem = GetParam().pem();

    EXPECT_EXIT(loadWith(pem, ""), ::testing::ExitedWithCode(0), "^PEM_read_bio_[A-Z0-9]+\\(\\)");
}

TEST_P(PasswordPromptDeathTest, TakesNoPasswordFromStandardInput) {
    const std::string pem = GetParam().pem();

    EXPECT_EXIT(loadWith(pem, std::string(PASSWORD) + "\n"), ::testing::ExitedWithCode(0),
                "^PEM_read_bio_[A-Z0-9]+\\(\\)");
}

INSTANTIATE_TEST_SUITE_P(Kinds, PasswordPromptDeathTest, ::testing::ValuesIn(LOADS),
                         [](const auto& test) { return test.param.name; });

// What the tests above would show if OpenSSL were left to itself.
TEST(PasswordPromptControlDeathTest, PlainReaderTakesThePasswordFromStandardInput) {
    const std::string pem = privatePem(rsa1024(), EVP_aes_128_cbc(), PASSWORD);
    const auto readPlainly = [&] {
        replaceStandardInput(std::string(PASSWORD) + "\n");
        const RawKey key(PEM_read_bio_PrivateKey(bioWith(pem).get(), nullptr, nullptr, nullptr),
                         EVP_PKEY_free);
        std::_Exit(key ? 0 : 1);
    };

    EXPECT_EXIT(readPlainly(), ::testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace vorl::test
