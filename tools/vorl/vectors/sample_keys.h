#ifndef VORL_TOOL_VECTORS_SAMPLE_KEYS_H
#define VORL_TOOL_VECTORS_SAMPLE_KEYS_H

namespace vorl::tool {

/// RFC 2409, section 6.2: the second Oakley group, of 1024 bits.
extern const char* const SAMPLE_GROUP;
/// 512 bits, too few for a secret to be agreed on.
extern const char* const SAMPLE_SMALL_GROUP;

/// Private keys that everybody knows, and with which nothing but samples is signed.
extern const char* const SAMPLE_RSA_1024;
extern const char* const SAMPLE_RSA_2048;
/// The public halves.
extern const char* const SAMPLE_RSA_1024_PUBLIC;
extern const char* const SAMPLE_RSA_2048_PUBLIC;

}  // namespace vorl::tool

#endif
