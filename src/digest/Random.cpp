#include "vorl/Random.h"

#include "core/ErrorQueueMark.h"
#include "vorl/OpenSSLException.h"

#include <openssl/rand.h>

#include <limits>

namespace vorl {

bool Random::init_ = false;

// The first 512 bits of the fractional part of pi: nothing up this sleeve.
unsigned char Random::NON_RANDOM_SEED[64] = {
    0x24, 0x3f, 0x6a, 0x88, 0x85, 0xa3, 0x08, 0xd3, 0x13, 0x19, 0x8a, 0x2e, 0x03, 0x70, 0x73, 0x44,
    0xa4, 0x09, 0x38, 0x22, 0x29, 0x9f, 0x31, 0xd0, 0x08, 0x2e, 0xfa, 0x98, 0xec, 0x4e, 0x6c, 0x89,
    0x45, 0x28, 0x21, 0xe6, 0x38, 0xd0, 0x13, 0x77, 0xbe, 0x54, 0x66, 0xcf, 0x34, 0xe9, 0x0c, 0x6c,
    0xc0, 0xac, 0x29, 0xb7, 0xc9, 0x7c, 0x50, 0xdd, 0x3f, 0x84, 0xd5, 0xb5, 0xb5, 0x47, 0x09, 0x17,
};

bytes Random::next(unsigned int n) {
    if (!init_) {
        throw OpenSSLException("Random must be initialized before use");
    }
    // OpenSSL counts in ints, so it is not even asked.
    if (n > static_cast<unsigned int>(std::numeric_limits<int>::max())) {
        throw OpenSSLException("RAND_bytes");
    }
    bytes random(n);
    // For the failure that passes as success.
    const ErrorQueueMark mark;
    if (RAND_bytes(random.data(), static_cast<int>(n)) == 0) {
        OpenSSLException::throw_message("RAND_bytes", "Random", __LINE__, __func__);
    }
    return random;
}

}  // namespace vorl
