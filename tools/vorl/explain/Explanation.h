#ifndef VORL_TOOL_EXPLAIN_EXPLANATION_H
#define VORL_TOOL_EXPLAIN_EXPLANATION_H

#include "inspect/Report.h"
#include "shared/exit_status.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vorl::tool {

/// What came of a check.
enum class Outcome {
    PASSES,
    /// The library goes on, and no reader should.
    WARNS,
    REFUSES,
    /// An earlier one has refused.
    NOT_REACHED,
    /// It takes what is not there, such as the key.
    NEEDS,
};

/// One of the checks that a receiver makes.
struct Step {
    /// For example "known-version". Stable: it is what JSON shows.
    std::string name;
    /// What must be so.
    std::string requirement;
    /// How a run ends where this check refuses or warns.
    ExitStatus refusal;
    Outcome outcome = Outcome::NOT_REACHED;
    /// What it takes, of NEEDS: for example "the key".
    std::string needed = std::string();
    /// Of REFUSES and WARNS, unless it is about something else than the record. In a text that is not Base64,
    /// it counts the characters.
    std::optional<std::uint64_t> offset = std::nullopt;
    /// Why it refuses or warns, or a remark on why it passes.
    std::string reason = std::string();
    /// The library's own words, of REFUSES; empty where it has none.
    std::string libraryText = std::string();
};

/// The checks that a receiver makes, in the order of the library, and what comes of them.
struct Explanation {
    std::vector<Step> steps;
    /// False where the library refuses what these checks pass, or refuses it elsewhere: a fault of the tool.
    bool agreesWithLibrary = true;
    /// What these checks do not say even where all of them pass.
    std::string caveat = std::string();

    /// The first of that outcome; null where there is none.
    const Step* first(Outcome outcome) const;
    const Step* refusing() const { return first(Outcome::REFUSES); }
};

/// Enters the outcomes of checks into their list, one after the other.
class StepWalk {
public:
    explicit StepWalk(std::vector<Step> steps);

    /// Each is about the next check, unless one has refused.
    void pass(const std::string& remark = "");
    void warn(std::uint64_t offset, const std::string& reason);
    /// Of something else than the record, which ends a run in its own way.
    void warnOfOther(const std::string& reason, ExitStatus status);
    void refuse(std::optional<std::uint64_t> offset, const std::string& reason);
    void need(const std::string& what);
    bool hasRefused() const { return refusing_.has_value(); }
    /// How many checks did not refuse.
    std::size_t passed() const { return next_; }

    /// The list, with the library's words where it refuses.
    std::vector<Step> complete(const std::string& libraryText) const;

private:
    std::vector<Step> steps_;
    std::size_t next_ = 0;
    std::optional<std::size_t> refusing_;
};

}  // namespace vorl::tool

#endif
