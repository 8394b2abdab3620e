#ifndef VORL_TOOL_VECTORS_VECTORS_H
#define VORL_TOOL_VECTORS_VECTORS_H

#include <nlohmann/json_fwd.hpp>

namespace vorl::tool {

// What the library makes of fixed inputs, for other implementations to be held against. Each of these is the
// content of one file, the same on every machine. The library must be ready.

nlohmann::ordered_json envelopeVectors();
nlohmann::ordered_json agreementVectors();
nlohmann::ordered_json clientKeyVectors();
nlohmann::ordered_json signatureVectors();
nlohmann::ordered_json digestVectors();
nlohmann::ordered_json textVectors();

}  // namespace vorl::tool

#endif
