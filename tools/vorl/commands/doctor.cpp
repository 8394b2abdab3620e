#include "commands/commands.h"
#include "doctor/checks.h"
#include "shared/CommandOptions.h"
#include "shared/output.h"
#include "shared/terminal.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <memory>

namespace vorl::tool {

namespace {

bool isFault(const Finding& finding) {
    return finding.isFault;
}

std::string findingsText(const std::vector<Finding>& findings, const Painter& paint) {
    std::string text;
    for (const Finding& finding : findings) {
        text += (finding.isFault ? paint(Style::BAD, "FAULT") : paint(Style::GOOD, "ok   ")) + "  " +
                finding.name + ": " + finding.detail + "\n";
        if (finding.isFault) {
            text += "       what to do: " + finding.advice + "\n";
        }
    }
    const auto faults = std::count_if(findings.begin(), findings.end(), isFault);
    return text + (faults == 0 ? "Everything works.\n"
                               : std::to_string(faults) + " of " + std::to_string(findings.size()) +
                                     " checks found a fault.\n");
}

std::string findingsJson(const std::vector<Finding>& findings, bool isHealthy) {
    nlohmann::ordered_json json = {{"version", VORL_TOOL_VERSION}, {"ok", isHealthy}};
    json["checks"] = nlohmann::ordered_json::array();
    for (const Finding& finding : findings) {
        json["checks"].push_back({{"name", finding.name},
                                  {"ok", !finding.isFault},
                                  {"detail", finding.detail},
                                  {"advice", finding.advice}});
    }
    // A fault may bring along any text.
    return json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

ExitStatus examine(bool isJson) {
    const std::vector<Finding> findings = runChecks();
    const bool isHealthy = std::none_of(findings.begin(), findings.end(), isFault);
    writeStandardOutput(isJson ? findingsJson(findings, isHealthy) : findingsText(findings, Painter()));
    return isHealthy ? ExitStatus::SUCCESS : ExitStatus::FAULT;
}

}  // namespace

Run declareDoctor(CommandOptions& command) {
    const auto isJson = std::make_shared<bool>(false);
    command.flag("--json", *isJson, "Write JSON");
    return [isJson] { return examine(*isJson); };
}

}  // namespace vorl::tool
