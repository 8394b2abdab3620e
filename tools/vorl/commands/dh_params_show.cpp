#include "commands/commands.h"
#include "inspect/dh_numbers.h"
#include "shared/dh_files.h"
#include "shared/output.h"
#include "shared/start_up.h"

#include <CLI/CLI.hpp>

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

Run declareDhParamsShow(CLI::App& command) {
    const auto path = std::make_shared<std::string>("-");
    command
        .add_option("FILE", *path,
                    "Diffie-Hellman parameters: PEM text, DER or the library's own encoding; '-' is standard "
                    "input")
        ->required()
        ->type_name("");
    return [path] { return showGroup(*path); };
}

}  // namespace vorl::tool
