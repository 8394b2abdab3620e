#include "vorl/VORLException.h"

namespace vorl {

namespace {

// A message is not optional. Some standard libraries refuse a null string and some crash on it;
// this throws what the careful ones throw, everywhere.
[[noreturn]] std::string refuseMissingMessage() {
    throw std::logic_error("VORLException: construction without a message is not valid");
}

}  // namespace

VORLException::VORLException() : VORLException(GENERAL_ERROR) {}

VORLException::VORLException(ErrorCode code) : std::runtime_error(refuseMissingMessage()), code_(code) {}

VORLException::VORLException(const std::string& msg) : VORLException(GENERAL_ERROR, msg) {}

VORLException::VORLException(ErrorCode code, const std::string& msg) : std::runtime_error(msg), code_(code) {}

VORLException::~VORLException() = default;

}  // namespace vorl
