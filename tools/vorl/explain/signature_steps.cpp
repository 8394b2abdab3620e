#include "explain/records.h"
#include "inspect/FieldReader.h"
#include "inspect/numbers.h"
#include "vorl/PKSignature.h"
#include "vorl/PKSignatureProcessor.h"
#include "vorl/PubKey.h"
#include "vorl/Util.h"
#include "vorl/VORLException.h"

#include <brisclient/Base64.h>
#include <openssl/evp.h>

namespace vorl::tool {

using Tarvik::BrisClient::Base64;

namespace {

const unsigned char VERSION = 1;
const std::uint64_t VERSION_BYTES = 1;

std::vector<Step> signatureSteps() {
    return {
        {"version", "a version byte must be there", ExitStatus::BAD_INPUT},
        {"known-version", "the version must be known", ExitStatus::BAD_INPUT},
        {"value", "the value must be readable", ExitStatus::BAD_INPUT},
        {"end", "nothing must follow the value", ExitStatus::BAD_INPUT},
        {"value-length", "the value must be as long as the modulus of the key", ExitStatus::REFUSED},
        {"match", "the value must have been made with this key over this input", ExitStatus::REFUSED},
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

// The size of the value.
std::uint64_t walkThroughSignature(const Explained& input, StepWalk& walk) {
    Report fields;
    FieldReader reader(input.record, fields);
    if (input.fault || reader.atEnd()) {
        walk.refuse(
            input.fault ? input.fault->offset : 0,
            input.fault ? input.fault->text + ", which leaves a record without a byte" : "there is none");
        return 0;
    }
    walk.pass(newlineRemark(input));
    const unsigned char version = reader.readByte("version");
    if (version != VERSION) {
        walk.refuse(0, "no signature record has the version 0x" + Util::toHexString(version));
        return 0;
    }
    walk.pass("SHA1withRSA");
    const std::optional<std::uint64_t> valueBytes = reader.readBlock("value", "");
    if (!valueBytes) {
        walk.refuse(fields.problem->offset, fields.problem->text);
        return 0;
    }
    walk.pass(bytesText(*valueBytes));
    const std::uint64_t end = reader.offset();
    reader.readRest("trailing", "");
    if (reader.offset() > end) {
        walk.refuse(end, moreText(reader.offset() - end) +
                             "; the library does not look at them, and 'vorl verify' refuses them");
    }
    walk.pass();
    return *valueBytes;
}

// Whether the library takes it for the key's own.
bool isVerified(const bytes& record, const Verification& verification) {
    const auto processor = verification.processor ? verification.processor : PKSignatureProcessor::create();
    processor->initVerify(verification.key);
    return processor->verify(PKSignature::decode(record));
}

void checkLength(std::uint64_t valueBytes, const Verification& verification, StepWalk& walk) {
    if (!verification.key) {
        walk.need("the public key");
        return;
    }
    const auto modulusBytes = static_cast<std::uint64_t>(EVP_PKEY_size(verification.key->getEVP_PKEY()));
    if (valueBytes != modulusBytes) {
        walk.refuse(VERSION_BYTES,
                    "it has " + bytesText(valueBytes) + ", and the modulus " + bytesText(modulusBytes));
    }
    walk.pass();
}

void checkMatch(bool isVerified, const Verification& verification, StepWalk& walk) {
    if (!verification.key) {
        walk.need(verification.processor ? "the public key" : "the public key and the input");
    } else if (!verification.processor) {
        walk.need("the input");
    } else if (isVerified) {
        walk.pass();
    } else {
        walk.refuse(VERSION_BYTES, "the key has not made it over this input");
    }
}

}  // namespace

Explanation explainSignature(const Explained& record, const Verification& verification) {
    StepWalk walk(signatureSteps());
    const std::uint64_t valueBytes = walkThroughSignature(record, walk);
    // A text is asked about as it is.
    const std::string text = formFault(record.fault ? Base64::decode(record.text) : record.record);
    bool agrees = text.empty() == (walk.passed() >= END);
    if (!walk.hasRefused()) {
        checkLength(valueBytes, verification, walk);
        const bool verified = verification.key && isVerified(record.record, verification);
        agrees = agrees && !(verified && walk.hasRefused());
        checkMatch(verified, verification, walk);
    }
    return {walk.complete(text), agrees, "whose key that is, they do not say"};
}

}  // namespace vorl::tool
