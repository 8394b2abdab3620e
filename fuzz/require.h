#ifndef VORL_FUZZ_REQUIRE_H
#define VORL_FUZZ_REQUIRE_H

#include <cstdio>
#include <cstdlib>

namespace vorl::fuzz {

/// Stops the fuzzer at an input for which something that always holds does not.
inline void require(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "does not hold: %s\n", what);
        std::abort();
    }
}

}  // namespace vorl::fuzz

#endif
