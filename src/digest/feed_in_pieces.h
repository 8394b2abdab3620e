#ifndef VORL_DIGEST_FEED_IN_PIECES_H
#define VORL_DIGEST_FEED_IN_PIECES_H

#include <algorithm>
#include <cstddef>

namespace vorl {

/// Calls `feed(piece, size)` with at most 1 GiB of the data at a time, whatever a version of OpenSSL counts
/// in. Without data it is not called. Returns whether every call returned other than 0.
template <typename Feed>
bool feedInPieces(const unsigned char* data, std::size_t size, Feed feed) {
    const std::size_t maxPiece = std::size_t{1} << 30;
    bool succeeded = true;
    for (std::size_t done = 0; succeeded && done < size;) {
        const std::size_t piece = std::min(size - done, maxPiece);
        succeeded = feed(data + done, piece) != 0;
        done += piece;
    }
    return succeeded;
}

}  // namespace vorl

#endif
