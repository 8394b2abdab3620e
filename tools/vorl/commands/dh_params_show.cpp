#include "commands/commands.h"
#include "inspect/dh_numbers.h"
#include "shared/CommandOptions.h"
#include "shared/dh_files.h"
#include "shared/output.h"
#include "shared/start_up.h"

#include <memory>

namespace vorl::tool {

namespace {

ExitStatus showGroup(const std::string& path) {
    startLibrary();
    const auto group = loadGroup(path);
    writeStandardOutput("bits in the prime: " + std::to_string(bitsOf(numbersOf(*group).prime)) + "\n" +
                        group->toString());
    return ExitStatus::SUCCESS;
}

}  // namespace

Run declareDhParamsShow(CommandOptions& command) {
    const auto path = std::make_shared<std::string>("-");
    command
        .input("FILE", *path,
               "Diffie-Hellman parameters: PEM text, DER or the library's own encoding; '-' is standard "
               "input")
        .required();
    return [path] { return showGroup(*path); };
}

}  // namespace vorl::tool
