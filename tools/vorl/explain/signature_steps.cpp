#include "explain/records.h"
#include "inspect/FieldReader.h"
#include "inspect/numbers.h"
#include "vorl/PKSignature.h"
#include "vorl/Util.h"
#include "vorl/VORLException.h"

namespace vorl::tool {

namespace {

const unsigned char VERSION = 1;

std::vector<Step> signatureSteps() {
    return {
        {"version", "a version byte is there", ExitStatus::BAD_INPUT},
        {"known-version", "the version is known", ExitStatus::BAD_INPUT},
        {"value", "the value can be read", ExitStatus::BAD_INPUT},
        {"end", "nothing follows the value", ExitStatus::BAD_INPUT},
        {"value-length", "the value is as long as the modulus of the key", ExitStatus::REFUSED},
        {"match", "the value is the key's own over the input", ExitStatus::REFUSED},
    };
}

// Its place in that list.
const std::size_t END = 3;

std::string formFault(const bytes& record) {
    try {
        PKSignature::decode(record);
        return "";
    } catch (const VORLException& fault) {
        return fault.what();
    }
}

void walkThrough(const Explained& input, StepWalk& walk) {
    Report fields;
    FieldReader reader(input.record, fields);
    if (input.fault || reader.atEnd()) {
        walk.refuse(
            input.fault ? input.fault->offset : 0,
            input.fault ? input.fault->text + ", which leaves a record without a byte" : "there is none");
        return;
    }
    walk.pass();
    const unsigned char version = reader.readByte("version");
    if (version != VERSION) {
        walk.refuse(0, "no signature record has the version 0x" + Util::toHexString(version));
        return;
    }
    walk.pass("SHA1withRSA");
    const std::optional<std::uint64_t> valueBytes = reader.readBlock("value", "");
    if (!valueBytes) {
        walk.refuse(fields.problem->offset, fields.problem->text);
        return;
    }
    walk.pass(bytesText(*valueBytes));
    const std::uint64_t end = reader.offset();
    reader.readRest("trailing", "");
    if (reader.offset() > end) {
        walk.refuse(end, moreText(reader.offset() - end) +
                             "; the library does not look at them, and 'vorl verify' refuses them");
    }
    walk.pass();
    walk.need("the public key");
    walk.need("the public key and the input");
}

}  // namespace

Explanation explainSignature(const Explained& record) {
    StepWalk walk(signatureSteps());
    walkThrough(record, walk);
    const std::string text = formFault(record.record);
    return {walk.complete(text), text.empty() == (walk.passed() >= END)};
}

}  // namespace vorl::tool
