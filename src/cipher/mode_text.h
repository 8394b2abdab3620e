#ifndef VORL_CIPHER_MODE_TEXT_H
#define VORL_CIPHER_MODE_TEXT_H

#include "vorl/CipherMode.h"

#include <string>

namespace vorl {

/// A mode as it stands in texts, with brackets of its own: "[CipherMode:CBC]".
inline std::string modeText(const CipherMode& mode) {
    return "[CipherMode:" + mode.name + "]";
}

}  // namespace vorl

#endif
