#include "commands/commands.h"
#include "http/HttpOptions.h"
#include "http/signatures.h"

#include <CLI/CLI.hpp>

#include <memory>

namespace vorl::tool {

Run declareHttpSign(CLI::App& command) {
    const auto options = std::make_shared<HttpOptions>();
    options->declareKey(command);
    options->declareSignature(command, "Name of the key, which the other side finds it by");
    command.add_option("-o,--output", options->output, "File to write; '-' is standard output, the default")
        ->type_name("FILE");
    options->declareMessage(command);
    return [options] { return signHttpMessage(*options); };
}

}  // namespace vorl::tool
