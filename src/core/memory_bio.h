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

/// The password callback for PEM readers: it refuses, so that a text that is encrypted fails at once. Without
/// a callback OpenSSL would ask for a password at the terminal, or read standard input. An empty password
/// instead would be tried: whoever wrote the text also says how many rounds the key takes to derive, and that
/// can be hours.
int refusePassword(char* buffer, int size, int forWriting, void* userData);

}  // namespace vorl

#endif
