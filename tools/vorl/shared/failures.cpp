#include "shared/failures.h"

#include "shared/ToolError.h"
#include "shared/messages.h"
#include "vorl/OpenSSLException.h"

#include <exception>
#include <new>
#include <stdexcept>
#include <string>

namespace vorl::tool {

ExitStatus tellFailure() {
    try {
        throw;
    } catch (const ToolError& error) {
        sayError(error.what());
        sayHint(error.hint());
        return error.status();
    } catch (const std::bad_alloc&) {
        sayError("the input, and what becomes of it, does not fit in memory");
        return ExitStatus::BAD_INPUT;
    } catch (const std::length_error&) {
        // The library throws it for a whole of more than 32 bits can count.
        sayError("the input is too large: what becomes of it is more than the formats can hold");
        return ExitStatus::BAD_INPUT;
    } catch (const OpenSSLException& error) {
        sayError(std::string(error.what()) + " failed in OpenSSL");
        sayHint(error.errorStack());
    } catch (const std::exception& error) {
        sayError(error.what());
    }
    sayHint("'vorl doctor' checks what the tool depends on");
    return ExitStatus::FAULT;
}

}  // namespace vorl::tool
