#include "commands/commands.h"
#include "inspect/dh_numbers.h"
#include "shared/CommandOptions.h"
#include "shared/ToolError.h"
#include "shared/dh_files.h"
#include "shared/dh_openssl.h"
#include "shared/input.h"
#include "shared/output.h"
#include "shared/start_up.h"
#include "shared/terminal.h"

#include <memory>

namespace vorl::tool {

namespace {

std::string findingsText(std::uint64_t primeBits, const std::vector<std::string>& faults,
                         const Painter& paint) {
    std::string text = "bits in the prime: " + std::to_string(primeBits) + "\n";
    if (!isAgreementSize(primeBits)) {
        text += "note: " + wrongSizeText(primeBits) + "\n";
    }
    if (faults.empty()) {
        text += paint(Style::GOOD, "ok   ") + "  the prime is a safe one, and the generator suits it\n";
    }
    for (const std::string& fault : faults) {
        text += paint(Style::BAD, "FAULT") + "  " + fault + "\n";
    }
    return text;
}

ExitStatus checkGroup(const std::string& path) {
    startLibrary();
    const auto group = loadGroup(path);
    const std::vector<std::string> faults = faultsOf(*group);
    writeStandardOutput(findingsText(bitsOf(numbersOf(*group).prime), faults, Painter()));
    if (!faults.empty()) {
        throw ToolError(ExitStatus::REFUSED, "the group in " + inputName(path) + " is not to be used");
    }
    return ExitStatus::SUCCESS;
}

}  // namespace

Run declareDhParamsCheck(CommandOptions& command) {
    const auto path = std::make_shared<std::string>("-");
    command
        .input("FILE", *path,
               "Diffie-Hellman parameters: PEM text, DER or the library's own encoding; '-' is standard "
               "input")
        .required();
    return [path] { return checkGroup(*path); };
}

}  // namespace vorl::tool
