#include "inspect/dh_group.h"

#include "inspect/base64_text.h"
#include "inspect/der.h"
#include "inspect/dh_numbers.h"
#include "inspect/number_blocks.h"
#include "inspect/pem_text.h"
#include "vorl/Buffer.h"
#include "vorl/DiffieHellmanParams.h"
#include "vorl/OpenSSLException.h"
#include "vorl/VORLException.h"

#include <utility>

namespace vorl::tool {

namespace {

template <class Read>
ReadGroup attemptGroup(const Read& read) {
    ReadGroup result;
    try {
        result.group = read();
    } catch (const VORLException& fault) {
        result.fault = fault.what();
    } catch (const OpenSSLException& fault) {
        result.fault = std::string(fault.what()) + " failed in OpenSSL";
    }
    return result;
}

ReadGroup groupInPem(const bytes& text) {
    return attemptGroup(
        [&text] { return std::make_unique<DiffieHellmanParams>(std::string(text.begin(), text.end())); });
}

ReadGroup groupInDer(const bytes& record) {
    return attemptGroup([&record] { return std::make_unique<DiffieHellmanParams>(record); });
}

ReadGroup groupInBlocks(const bytes& record) {
    return attemptGroup([&record] {
        Buffer in(record);
        return DiffieHellmanParams::decode(in);
    });
}

void enter(const ReadGroup& read, const std::string& encoding, Report& report) {
    report.kind = "dh-params";
    report.title = "Diffie-Hellman parameters";
    report.facts = {{"encoding", "encoding", encoding}};
    report.libraryVerdict = read.fault;
    if (read.group) {
        addGroupFacts(numbersOf(*read.group), report);
    } else {
        report.problem = Problem{0, "no group can be read from this"};
    }
    report.unknown = {"whether the prime is one, and a safe one: 'vorl dh params check' tells"};
}

}  // namespace

bool isGroupLabel(const std::string& label) {
    return label == "DH PARAMETERS" || label == "X9.42 DH PARAMETERS";
}

bool isGroupInDer(const bytes& record) {
    return beginsSequence(record) && groupInDer(record).group != nullptr;
}

void inspectGroupInPem(const bytes& text, Report& report) {
    enter(groupInPem(text), "pem", report);
}

void inspectGroupInDer(const bytes& record, Report& report) {
    enter(groupInDer(record), "der", report);
}

ReadGroup readGroup(const bytes& input) {
    if (!pemBlocksIn(input).empty()) {
        return groupInPem(input);
    }
    const DecodedText text = decodeBase64Text(input);
    const bytes& record = text.problem ? input : text.data;
    if (isGroupInDer(record)) {
        return groupInDer(record);
    }
    if (numberBlocksIn(record) == 2) {
        return groupInBlocks(record);
    }
    return {nullptr, "it is neither PEM text nor DER nor the encoding of a group"};
}

}  // namespace vorl::tool
