#include "OpenSSLFaults.h"

#include <dlfcn.h>
#include <openssl/bio.h>
#include <openssl/bn.h>
#include <openssl/evp.h>

#include <algorithm>

namespace {

thread_local bool printFails = false;
thread_local bool readFails = false;
thread_local const vorl::bytes* fixedDigest = nullptr;

// OpenSSL's own function, of the same type as the one here that takes its place.
template <typename Function>
Function* opensslsOwn(Function* /*same*/, const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

// Each takes the place of OpenSSL's function for all but OpenSSL itself.

extern "C" int BN_print(BIO* out, const BIGNUM* number) {
    return printFails ? 0 : opensslsOwn(BN_print, "BN_print")(out, number);
}

extern "C" int BIO_read(BIO* in, void* data, int size) {
    return readFails ? 0 : opensslsOwn(BIO_read, "BIO_read")(in, data, size);
}

extern "C" int EVP_DigestFinal_ex(EVP_MD_CTX* ctx, unsigned char* out, unsigned int* size) {
    if (fixedDigest == nullptr) {
        return opensslsOwn(EVP_DigestFinal_ex, "EVP_DigestFinal_ex")(ctx, out, size);
    }
    std::copy(fixedDigest->begin(), fixedDigest->end(), out);
    *size = static_cast<unsigned int>(fixedDigest->size());
    return 1;
}

namespace vorl::test {

UnprintableNumbers::UnprintableNumbers() {
    printFails = true;
}

UnprintableNumbers::~UnprintableNumbers() {
    printFails = false;
}

UnreadableBios::UnreadableBios() {
    readFails = true;
}

UnreadableBios::~UnreadableBios() {
    readFails = false;
}

FixedDigest::FixedDigest(const bytes& digest) {
    fixedDigest = &digest;
}

FixedDigest::~FixedDigest() {
    fixedDigest = nullptr;
}

}  // namespace vorl::test
