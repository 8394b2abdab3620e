#ifndef VORL_TOOL_VECTORS_VECTOR_JSON_H
#define VORL_TOOL_VECTORS_VECTOR_JSON_H

#include "vorl/bytes.h"

#include <nlohmann/json.hpp>

#include <functional>
#include <string>

namespace vorl::tool {

// The members stay in the order in which they are written.
using Json = nlohmann::ordered_json;

/// What every file begins with.
Json newVectors();

std::string hexOf(const bytes& data);
std::string textOf(const bytes& characters);
bytes bytesOf(const std::string& text);

/// Adds `name` with the bytes in hex or, where they are many, `nameSha256` with their digest.
void addBytes(Json& json, const std::string& name, const bytes& data);
/// The same for a text, as it is.
void addText(Json& json, const std::string& name, const bytes& text);

/// The class and the text of the exception with which the library refuses `action`. Throws std::logic_error
/// where it does not, or with another one: these vectors would be wrong.
Json refusalOf(const std::function<void()>& action);

}  // namespace vorl::tool

#endif
