#include "commands/commands.h"
#include "linked_service.h"
#include "shared/CommandOptions.h"
#include "shared/input.h"
#include "shared/output.h"
#include "shared/terminal.h"
#include "vorl/Random.h"

#include <openssl/rand.h>
#include <vorl/testkit/Conformance.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <memory>

namespace vorl::tool {

namespace {

using testkit::Finding;

struct PlatformOptions {
    std::vector<std::string> ownKeys;
    bool isJson = false;
};

struct Result {
    const testkit::Check* check;
    Finding finding;
};

std::vector<Result> runAll(const testkit::Platform& platform) {
    std::vector<Result> results;
    for (const testkit::Check& check : testkit::checks()) {
        results.push_back({&check, run(check, platform)});
    }
    return results;
}

auto count(const std::vector<Result>& results, Finding::Outcome outcome) {
    return std::count_if(results.begin(), results.end(),
                         [outcome](const Result& result) { return result.finding.outcome == outcome; });
}

std::string resultText(const Result& result, const Painter& paint) {
    const std::string requirement = result.check->requirement;
    const std::string name = result.check->name;
    switch (result.finding.outcome) {
        case Finding::HOLDS:
            return paint(Style::GOOD, "ok   ") + "  " + name + ": " + requirement + "\n";
        case Finding::LEFT_OUT:
            return "-      " + name + ": " + result.finding.sentence + "\n";
        default:
            return paint(Style::BAD, "FAULT") + "  " + name + ": " + result.finding.sentence +
                   "\n       what must hold: " + requirement + "\n";
    }
}

std::string resultsText(const std::vector<Result>& results) {
    const Painter paint;
    std::string text;
    for (const Result& result : results) {
        text += resultText(result, paint);
    }
    const auto leftOut = count(results, Finding::LEFT_OUT);
    const auto faults = count(results, Finding::FAILS);
    const std::string all = std::to_string(results.size()) + " checks";
    return text +
           (faults == 0 ? "The platform passes" : std::to_string(faults) + " of " + all + " found a fault") +
           (leftOut == 0 ? ".\n" : "; " + std::to_string(leftOut) + " of " + all + " left out.\n");
}

const char* outcomeName(Finding::Outcome outcome) {
    switch (outcome) {
        case Finding::HOLDS:
            return "holds";
        case Finding::LEFT_OUT:
            return "left out";
        default:
            return "fails";
    }
}

std::string resultsJson(const std::vector<Result>& results) {
    nlohmann::ordered_json json = {{"version", VORL_TOOL_VERSION},
                                   {"ok", count(results, Finding::FAILS) == 0}};
    json["checks"] = nlohmann::ordered_json::array();
    for (const Result& result : results) {
        json["checks"].push_back({{"name", result.check->name},
                                  {"outcome", outcomeName(result.finding.outcome)},
                                  {"requirement", result.check->requirement},
                                  {"detail", result.finding.sentence}});
    }
    // A platform may throw any text.
    return json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

ExitStatus checkPlatform(const PlatformOptions& options) {
    // As before the start of the library, which starts the platform: that is for each check to do.
    Random::init_ = RAND_status() == 1;
    testkit::Platform platform = testkit::linkedPlatform();
    platform.respond = testkit::linkedService();
    if (!options.ownKeys.empty()) {
        platform.provision = nullptr;
        for (const std::string& path : options.ownKeys) {
            platform.ownKeys.push_back(readSmallInput(path));
        }
    }
    const std::vector<Result> results = runAll(platform);
    writeStandardOutput(options.isJson ? resultsJson(results) : resultsText(results));
    return count(results, Finding::FAILS) == 0 ? ExitStatus::SUCCESS : ExitStatus::FAULT;
}

}  // namespace

Run declarePlatformCheck(CommandOptions& command) {
    const auto options = std::make_shared<PlatformOptions>();
    command.flag("--json", options->isJson, "Write JSON");
    command.twoValues(
        "--own-keys", "FILE FILE", options->ownKeys,
        "Two files, each with the bytes that the platform takes for a key of its own, for one that takes "
        "no key by its value");
    return [options] { return checkPlatform(*options); };
}

}  // namespace vorl::tool
