#include "fetched_md.h"

#include <openssl/evp.h>
#include <openssl/opensslv.h>

#if OPENSSL_VERSION_NUMBER >= 0x30000000L

#include "core/ErrorQueueMark.h"

#include <atomic>

namespace vorl {

namespace {

struct FetchedOnce {
    const EVP_MD* (*md)();
    const char* name;
    // Never released: it is used as long as there is a thread.
    std::atomic<EVP_MD*> fetched;
};

FetchedOnce TABLE[] = {
    {EVP_sha1, "SHA1", {nullptr}},       {EVP_sha224, "SHA2-224", {nullptr}},
    {EVP_sha256, "SHA2-256", {nullptr}}, {EVP_sha384, "SHA2-384", {nullptr}},
    {EVP_sha512, "SHA2-512", {nullptr}},
};

// Threads that come first at the same time all fetch; one of them keeps what it got.
const EVP_MD* fetch(FetchedOnce& row) {
    const ErrorQueueMark mark;
    EVP_MD* const mine = EVP_MD_fetch(nullptr, row.name, nullptr);
    EVP_MD* kept = nullptr;
    if (mine == nullptr || row.fetched.compare_exchange_strong(kept, mine, std::memory_order_acq_rel)) {
        return mine;
    }
    EVP_MD_free(mine);
    return kept;
}

}  // namespace

const EVP_MD* fetchedMd(const EVP_MD* md) {
    for (FetchedOnce& row : TABLE) {
        if (row.md() == md) {
            const EVP_MD* fetched = row.fetched.load(std::memory_order_acquire);
            if (fetched == nullptr) {
                fetched = fetch(row);
            }
            return fetched != nullptr ? fetched : md;
        }
    }
    return md;
}

}  // namespace vorl

#else

namespace vorl {

const EVP_MD* fetchedMd(const EVP_MD* md) {
    return md;
}

}  // namespace vorl

#endif
