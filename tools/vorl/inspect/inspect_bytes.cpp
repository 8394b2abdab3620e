#include "inspect/inspect_bytes.h"

#include "inspect/base64_text.h"
#include "inspect/certificate.h"
#include "inspect/dh_group.h"
#include "inspect/dh_numbers.h"
#include "inspect/dh_record.h"
#include "inspect/envelope.h"
#include "inspect/key.h"
#include "inspect/levels.h"
#include "inspect/number_blocks.h"
#include "inspect/pem_text.h"
#include "inspect/signature.h"
#include "inspect/structure.h"
#include "shared/SecretBytes.h"
#include "vorl/VORLLib.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace vorl::tool {

namespace {

// What is asked of an input, and where the answer goes.
struct Inspection {
    Report& report;
    Secrets secrets;
};

bool isWholeEnvelope(const bytes& record) {
    return !structureFault(record).has_value();
}

// A version, and the length of the IV that it goes with.
bool beginsAsFullEnvelope(const bytes& record) {
    return record.size() >= 2 && record[0] == 0x02 && record[1] == 0x10;
}

bool isAnything(const bytes& /*record*/) {
    return true;
}

bool isEncodedGroup(const bytes& record) {
    return numberBlocksIn(record) == 2;
}

bool isEncodedPair(const bytes& record) {
    return numberBlocksIn(record) == 4;
}

void takeEnvelope(const bytes& record, const Inspection& to) {
    inspectEnvelope(record, to.report);
}

void takeDhRecord(const bytes& record, const Inspection& to) {
    inspectDhRecord(record, to.report);
}

void takeDerGroup(const bytes& record, const Inspection& to) {
    inspectGroupInDer(record, to.report);
}

void takeGroup(const bytes& record, const Inspection& to) {
    inspectDhParams(record, to.report);
}

void takePair(const bytes& record, const Inspection& to) {
    inspectDhState(record, to.report, to.secrets);
}

void takeCertificate(const bytes& record, const Inspection& to) {
    inspectCertificateInDer(record, to.report);
}

void takePublicKey(const bytes& record, const Inspection& to) {
    inspectPublicKeyInDer(record, to.report);
}

void takePrivateKey(const bytes& record, const Inspection& to) {
    inspectPrivateKeyInDer(record, to.report, to.secrets);
}

void takeSignature(const bytes& record, const Inspection& to) {
    inspectSignature(record, to.report);
}

// No group, key or certificate is larger; OpenSSL reads hostile DER in a time that grows with the square of
// its size.
const std::size_t MAX_DER_BYTES = std::size_t{1024} * 1024;

template <bool (*Fits)(const bytes&)>
bool isDer(const bytes& record) {
    return record.size() <= MAX_DER_BYTES && Fits(record);
}

struct RecordForm {
    const char* kind;
    bool (*fits)(const bytes& record);
    void (*take)(const bytes& record, const Inspection& to);
};

// The first that fits is what a record is taken for: forms that show themselves stand before those that any
// bytes could be, which a bare key is by its size alone. A signature of a usual size stands before the
// envelope of the level test that could have it, since such envelopes are for tests.
const RecordForm RECORD_FORMS[] = {
    {"dh-record", beginsAsDhRecord, takeDhRecord},
    {"dh-params", isDer<isGroupInDer>, takeDerGroup},
    {"certificate", isDer<isCertificateInDer>, takeCertificate},
    {"public-key", isDer<isPublicKeyInDer>, takePublicKey},
    {"private-key", isDer<isPrivateKeyInDer>, takePrivateKey},
    {"signature", isSignatureOfUsualSize, takeSignature},
    {"envelope", isWholeEnvelope, takeEnvelope},
    {"envelope", beginsAsFullEnvelope, takeEnvelope},
    {"dh-record", isOfBareKeySize, takeDhRecord},
    {"dh-params", isEncodedGroup, takeGroup},
    {"dh-state", isEncodedPair, takePair},
    {"envelope", isAnything, takeEnvelope},
};

// Of the forms of one kind the last one takes what none fits, too.
const RecordForm& formOf(const bytes& record, const std::string& kind) {
    const RecordForm* last = nullptr;
    for (const RecordForm& form : RECORD_FORMS) {
        if (kind.empty() || kind == form.kind) {
            last = &form;
            if (form.fits(record)) {
                break;
            }
        }
    }
    return *last;
}

// Nothing is known of it but that it could be an envelope of a version to come.
bool fitsNothing(const bytes& record) {
    return &formOf(record, "") == std::end(RECORD_FORMS) - 1 && levelOfVersion(record.front()) == nullptr;
}

// DER and blocks of numbers may be cut to a few bytes that can be printed; these begin with bytes that
// cannot.
bool isNeverPrintable(const std::string& kind) {
    return kind == "envelope" || kind == "dh-record" || kind == "signature";
}

// Of an input that does not decode. A text that is not printable may have a byte order mark or a damaged
// character in it.
bool isMeantAsBase64(const bytes& input, const std::string& kind) {
    if (resemblesBase64(input)) {
        return true;
    }
    if (!kind.empty() && !isNeverPrintable(kind)) {
        return false;
    }
    return isPrintableText(input) ? !kind.empty() : isNearlyBase64(input) && fitsNothing(input);
}

struct PemForm {
    const char* kind;
    bool (*fits)(const std::string& label);
    void (*take)(const bytes& text, const Inspection& to);
};

void takePemGroup(const bytes& text, const Inspection& to) {
    inspectGroupInPem(text, to.report);
}

void takePemCertificate(const bytes& text, const Inspection& to) {
    inspectCertificateInPem(text, to.report);
}

void takePemPublicKey(const bytes& text, const Inspection& to) {
    inspectPublicKeyInPem(text, to.report);
}

void takePemPrivateKey(const bytes& text, const Inspection& to) {
    inspectPrivateKeyInPem(text, to.report, to.secrets);
}

const PemForm PEM_FORMS[] = {
    {"dh-params", isGroupLabel, takePemGroup},
    {"certificate", isCertificateLabel, takePemCertificate},
    {"public-key", isPublicKeyLabel, takePemPublicKey},
    {"private-key", isPrivateKeyLabel, takePemPrivateKey},
};

// The first block of a kind that is known, or of the one that is asked for; texts often hold others around
// it.
void inspectPem(const bytes& text, const std::vector<PemBlock>& blocks, const std::string& kind,
                const Inspection& to) {
    to.report.isPem = true;
    to.report.recordBytes = text.size();
    for (const PemBlock& block : blocks) {
        const auto* const form =
            std::find_if(std::begin(PEM_FORMS), std::end(PEM_FORMS), [&](const PemForm& each) {
                return each.fits(block.label) && (kind.empty() || kind == each.kind);
            });
        if (form != std::end(PEM_FORMS)) {
            form->take(text, to);
            return;
        }
    }
    to.report.problem =
        Problem{blocks.front().offset, "PEM text of an unknown kind: " + blocks.front().label};
}

}  // namespace

std::vector<std::string> recordKinds() {
    std::vector<std::string> kinds;
    for (const RecordForm& form : RECORD_FORMS) {
        if (std::find(kinds.begin(), kinds.end(), form.kind) == kinds.end()) {
            kinds.emplace_back(form.kind);
        }
    }
    return kinds;
}

Report inspectBytes(const bytes& input, Secrets secrets, const std::string& kind) {
    VORLLib::checkInit();
    Report report;
    report.inputBytes = input.size();
    if (input.empty()) {
        report.problem = Problem{0, "the input is empty"};
        return report;
    }
    const std::vector<PemBlock> blocks = pemBlocksIn(input);
    if (!blocks.empty()) {
        inspectPem(input, blocks, kind, {report, secrets});
        return report;
    }
    DecodedText text = decodeBase64Text(input);
    // Records have bytes that Base64 has not, so a text that decodes, or nearly does, was meant as a text.
    report.isBase64 = !text.problem || isMeantAsBase64(input, kind);
    if (report.isBase64 && text.problem) {
        report.problem = std::move(text.problem);
        return report;
    }
    const SecretBytes decoded(std::move(text.data));
    const bytes& record = report.isBase64 ? decoded.get() : input;
    report.recordBytes = record.size();
    formOf(record, kind).take(record, {report, secrets});
    return report;
}

}  // namespace vorl::tool
