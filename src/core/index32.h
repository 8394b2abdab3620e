#ifndef VORL_CORE_INDEX32_H
#define VORL_CORE_INDEX32_H

#include <cstdint>
#include <limits>
#include <stdexcept>

namespace vorl {

/// `n` as one of the 32-bit counts that the public interfaces use.
/// Throws std::length_error, naming `what`, where it does not fit.
inline unsigned int index32(std::uint64_t n, const char* what) {
    if (n > std::numeric_limits<unsigned int>::max()) {
        throw std::length_error(what);
    }
    return static_cast<unsigned int>(n);
}

}  // namespace vorl

#endif
