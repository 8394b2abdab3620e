#include "explain/Explanation.h"

#include <algorithm>
#include <utility>

namespace vorl::tool {

const Step* Explanation::first(Outcome outcome) const {
    const auto step = std::find_if(steps.begin(), steps.end(),
                                   [outcome](const Step& each) { return each.outcome == outcome; });
    return step != steps.end() ? &*step : nullptr;
}

StepWalk::StepWalk(std::vector<Step> steps) : steps_(std::move(steps)) {}

void StepWalk::pass(const std::string& remark) {
    if (!hasRefused()) {
        steps_[next_].outcome = Outcome::PASSES;
        steps_[next_].reason = remark;
        ++next_;
    }
}

void StepWalk::warn(std::uint64_t offset, const std::string& reason) {
    if (!hasRefused()) {
        steps_[next_].outcome = Outcome::WARNS;
        steps_[next_].offset = offset;
        steps_[next_].reason = reason;
        ++next_;
    }
}

void StepWalk::warnOfOther(const std::string& reason, ExitStatus status) {
    if (!hasRefused()) {
        steps_[next_].outcome = Outcome::WARNS;
        steps_[next_].refusal = status;
        steps_[next_].reason = reason;
        ++next_;
    }
}

void StepWalk::refuse(std::optional<std::uint64_t> offset, const std::string& reason) {
    if (!hasRefused()) {
        steps_[next_].outcome = Outcome::REFUSES;
        steps_[next_].offset = offset;
        steps_[next_].reason = reason;
        refusing_ = next_;
    }
}

void StepWalk::need(const std::string& what) {
    if (!hasRefused()) {
        steps_[next_].outcome = Outcome::NEEDS;
        steps_[next_].needed = what;
        ++next_;
    }
}

std::vector<Step> StepWalk::complete(const std::string& libraryText) const {
    std::vector<Step> steps = steps_;
    if (refusing_) {
        steps[*refusing_].libraryText = libraryText;
    }
    return steps;
}

}  // namespace vorl::tool
