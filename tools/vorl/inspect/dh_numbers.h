#ifndef VORL_TOOL_INSPECT_DH_NUMBERS_H
#define VORL_TOOL_INSPECT_DH_NUMBERS_H

#include "inspect/Report.h"
#include "shared/fingerprint.h"

namespace vorl {
class DiffieHellmanParams;
}

namespace vorl::tool {

/// How many bits an unsigned big-endian number has.
std::uint64_t bitsOf(const bytes& number);

/// Whether a shared secret can be agreed in a group with a prime of that size: the library's secrets have 128
/// bytes.
bool isAgreementSize(std::uint64_t primeBits);
/// "the group has 512 bits, and a secret is agreed in one of 1024".
std::string wrongSizeText(std::uint64_t primeBits);

/// A group, as numbers.
struct GroupNumbers {
    bytes prime;
    bytes generator;
};
GroupNumbers numbersOf(const DiffieHellmanParams& group);

/// Enters what can be told about a group into the report.
void addGroupFacts(const GroupNumbers& group, Report& report);

/// Enter the numbers of a group, or of a key pair, in the library's own encoding into the report.
void inspectDhParams(const bytes& record, Report& report);
void inspectDhState(const bytes& record, Report& report, Secrets secrets);

}  // namespace vorl::tool

#endif
