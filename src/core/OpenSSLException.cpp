#include "vorl/OpenSSLException.h"

#include "memory_bio.h"

#include <openssl/err.h>

namespace vorl {

namespace {

// The calling thread's error queue as text, one line an error; the queue is empty afterwards.
std::string openssl_err() {
    const std::shared_ptr<BIO> bio = newMemoryBio();
    if (!bio) {
        // Nobody is to find these errors behind the next failure.
        ERR_clear_error();
        return std::string();
    }
    ERR_print_errors(bio.get());

    std::string text;
    copyContent(bio.get(), text);
    return text;
}

}  // namespace

OpenSSLException::OpenSSLException(const std::string& msg) : std::runtime_error(msg) {}

OpenSSLException::OpenSSLException(const std::string& msg, const std::string& errorStack)
    : std::runtime_error(msg), errorStack_(errorStack) {}

OpenSSLException::~OpenSSLException() = default;

void OpenSSLException::throw_message(const char* context, const char* /*file*/, int /*line*/,
                                     const char* /*function*/) {
    // First of all, before anything else can disturb the queue.
    const std::string errorStack = openssl_err();
    throw OpenSSLException(std::string(context), errorStack);
}

}  // namespace vorl
