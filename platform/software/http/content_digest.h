#ifndef TARVIK_SOFTWARE_CONTENT_DIGEST_H
#define TARVIK_SOFTWARE_CONTENT_DIGEST_H

#include <string>
#include <vector>

namespace tarvik::http {

/// The value of a Content-Digest field (RFC 9530) with the SHA-256 of a body.
std::string contentDigest(const std::vector<unsigned char>& body);

/// Whether a Content-Digest field has the SHA-256 of the body. Digests by other algorithms are passed over.
bool isContentDigestOf(const std::string& field, const std::vector<unsigned char>& body);

}  // namespace tarvik::http

#endif
