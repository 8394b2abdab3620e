#ifndef VORL_CIPHER_UNREAD_BYTES_H
#define VORL_CIPHER_UNREAD_BYTES_H

#include "vorl/Buffer.h"
#include "vorl/VORLException.h"

#include <string>

namespace vorl {

/// Throws VORLException where anything follows an envelope. `what` was just parsed.
inline void refuseUnreadBytes(const Buffer& in, const char* what) {
    const unsigned int unread = in.widx() - in.ridx();
    if (unread != 0) {
        // "1 bytes" too: the text does not bend.
        throw VORLException(std::string("Buffer is not empty after parsing ") + what + "; " +
                            std::to_string(unread) + " bytes remain");
    }
}

}  // namespace vorl

#endif
