#ifndef VORL_TOOL_DOCTOR_CHECKS_H
#define VORL_TOOL_DOCTOR_CHECKS_H

#include <stdexcept>
#include <string>
#include <vector>

namespace vorl::tool {

/// What a check has found.
struct Finding {
    /// Stable: it is what JSON shows.
    std::string name;
    bool isFault;
    std::string detail;
    /// What to do about a fault; empty where there is none.
    std::string advice;
};

/// Makes the library ready and checks what it stands on. Faults are findings; nothing is thrown for them.
std::vector<Finding> runChecks();

// What the checks are made of. Each returns what it has seen, and throws where that is a fault.

std::string checkOpenSSL();
std::string checkRandom();
std::string checkStartUp();
std::string checkPlatform();
std::string checkBase64();
std::string checkMachine();
std::string checkRoundTrips();
std::string checkKnownEnvelopes();
std::string checkWrongKey();
std::string checkDamage();

/// Throws std::runtime_error with `finding` where `holds` is false.
inline void expect(bool holds, const std::string& finding) {
    if (!holds) {
        throw std::runtime_error(finding);
    }
}

}  // namespace vorl::tool

#endif
