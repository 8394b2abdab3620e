#include "shared/explanation_text.h"

#include "shared/report_json.h"
#include "shared/terminal.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace vorl::tool {

using Json = nlohmann::ordered_json;

namespace {

std::string outcomeText(const Step& step) {
    switch (step.outcome) {
        case Outcome::PASSES:
            return "passed";
        case Outcome::WARNS:
            return "WARNING";
        case Outcome::REFUSES:
            return "REFUSED";
        case Outcome::NEEDS:
            return "needs " + step.needed;
        default:
            return "not reached";
    }
}

std::string painted(const Step& step, const std::string& text, const Painter& paint) {
    return step.outcome == Outcome::PASSES                                      ? paint(Style::GOOD, text)
           : step.outcome == Outcome::REFUSES || step.outcome == Outcome::WARNS ? paint(Style::BAD, text)
                                                                                : text;
}

// Some of the library's texts end with a dump of the input.
std::string firstLine(const std::string& text) {
    const std::size_t end = text.find('\n');
    return end == std::string::npos ? text : text.substr(0, end) + " ...";
}

std::string stepText(const Step& step, std::size_t width, const Painter& paint) {
    const std::string outcome = outcomeText(step);
    const std::string column(width - outcome.size() + 2, ' ');
    std::string text = painted(step, outcome, paint) + column + step.requirement;
    if (step.offset) {
        text += "; at " + std::to_string(*step.offset) + ": " + step.reason;
    } else if (!step.reason.empty()) {
        text += ": " + step.reason;
    }
    text += "\n";
    if (!step.libraryText.empty()) {
        text += std::string(width + 2, ' ') + "the library says: " + firstLine(step.libraryText) + "\n";
    }
    return text;
}

std::string receptionText(const Reception& reception) {
    std::string accepted;
    for (const std::string& level : reception.accepted) {
        accepted += (accepted.empty() ? "" : ", ") + level;
    }
    return "levels that the policy accepts: " + accepted + "\nlevel of the context: " + reception.level +
           "\n\n";
}

// What nobody should take for more than it is.
std::string conclusion(const Explanation& explanation) {
    if (explanation.refusing() != nullptr) {
        return "";
    }
    if (explanation.first(Outcome::WARNS) != nullptr) {
        return "\nThe library refuses nothing here, and no keys should be derived all the same.\n";
    }
    return (explanation.first(Outcome::NEEDS) != nullptr ? "\nNo check that was made refuses it, which does "
                                                           "not make it valid: others were not made, and\n"
                                                         : "\nAll checks pass, but ") +
           explanation.caveat + ".\n";
}

Json stepJson(const Step& step) {
    Json json = {{"name", step.name}, {"requirement", step.requirement}};
    json["outcome"] = step.outcome == Outcome::PASSES    ? "passes"
                      : step.outcome == Outcome::WARNS   ? "warns"
                      : step.outcome == Outcome::REFUSES ? "refuses"
                      : step.outcome == Outcome::NEEDS   ? "needs"
                                                         : "not reached";
    json["needs"] = nullptr;
    if (step.outcome == Outcome::NEEDS) {
        json["needs"] = step.needed;
    }
    json["offset"] = nullptr;
    if (step.offset) {
        json["offset"] = *step.offset;
    }
    json["reason"] = step.reason;
    json["libraryText"] = step.libraryText;
    return json;
}

}  // namespace

std::string explanationText(const Explanation& explanation, const std::optional<Reception>& reception,
                            const Painter& paint) {
    std::size_t width = 0;
    for (const Step& step : explanation.steps) {
        width = std::max(width, outcomeText(step).size());
    }
    std::string text = reception ? receptionText(*reception) : "";
    text += "Checks, in the order of the library:\n";
    for (const Step& step : explanation.steps) {
        text += stepText(step, width, paint);
    }
    return text + conclusion(explanation);
}

std::string explanationJson(const Report& report, const Explanation& explanation,
                            const std::optional<Reception>& reception) {
    Json json = Json::parse(reportJson(report));
    if (reception) {
        json["accept"] = reception->accepted;
        json["level"] = reception->level;
    }
    json["steps"] = Json::array();
    for (const Step& step : explanation.steps) {
        json["steps"].push_back(stepJson(step));
    }
    return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace vorl::tool
