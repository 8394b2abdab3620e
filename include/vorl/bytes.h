#ifndef VORL_BYTES_H
#define VORL_BYTES_H

#include <vector>

namespace vorl {

/// A string of octets: every key, IV, message, envelope and encoded record is one.
using bytes = std::vector<unsigned char>;

}  // namespace vorl

#endif
