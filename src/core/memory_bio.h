#ifndef VORL_CORE_MEMORY_BIO_H
#define VORL_CORE_MEMORY_BIO_H

#include <openssl/ossl_typ.h>

#include <memory>
#include <string>

namespace vorl {

// Texts that OpenSSL prints into a memory BIO, and texts that it reads from one. Every failure is returned;
// the caller reports it in its own words.

/// An empty memory BIO to print into. Null where OpenSSL has no memory.
std::shared_ptr<BIO> newMemoryBio();

/// A BIO that reads from `text`, which must outlive it. Null where OpenSSL cannot make one.
std::shared_ptr<BIO> memoryBioOver(const std::string& text);

/// Reads all that is pending in `bio`. False where BIO_read() returns 0.
bool readPending(BIO* bio, std::string& text);

/// Copies what `bio` holds, as BIO_get_mem_data() tells it. False where that is nothing.
bool copyContent(BIO* bio, std::string& text);

/// The user data with which PEM readers fail at once on a text that is encrypted with a password: an empty
/// one. With neither a callback nor user data OpenSSL would ask for it at the terminal, or read standard
/// input.
char* noPassword();

}  // namespace vorl

#endif
