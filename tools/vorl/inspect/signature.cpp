#include "inspect/signature.h"

#include "inspect/FieldReader.h"
#include "inspect/levels.h"
#include "inspect/numbers.h"
#include "inspect/structure.h"
#include "vorl/CipherSpec.h"
#include "vorl/PKSignature.h"
#include "vorl/PKSignatureAlgo.h"
#include "vorl/Util.h"
#include "vorl/VORLException.h"

#include <algorithm>
#include <iterator>

// A signature record, field by field:
//
//   version   1 byte    01, which stands for the algorithm
//   value     a block   as long as the modulus of the key

namespace vorl::tool {

namespace {

const unsigned char VERSION = 1;

const std::size_t USUAL_VALUE_BYTES[] = {128, 256, 384, 512};

// What the library says against a record; empty where it reads it, whatever follows.
std::string signatureFault(const bytes& record) {
    try {
        PKSignature::decode(record);
        return "";
    } catch (const VORLException& fault) {
        return fault.what();
    }
}

void readVersion(FieldReader& reader, Report& report) {
    const unsigned char version = reader.readByte("version");
    if (version == VERSION) {
        const std::string algorithm = PKSignatureAlgo::SHA1withRSA()->toString();
        reader.setMeaning(algorithm);
        report.facts = {{"version", "version", std::uint64_t{version}},
                        {"algorithm", "algorithm", algorithm}};
    } else {
        reader.setMeaning("no signature record has this version");
        reader.setProblem(0, "unknown version 0x" + Util::toHexString(version));
    }
}

void addSizes(std::uint64_t valueBytes, Report& report) {
    report.facts.push_back({"valueBytes", "bytes in the value", valueBytes});
    if (valueBytes > 0) {
        report.facts.push_back(
            {"keyBits", "bits in the key that made it", Range{valueBytes * 8 - 7, valueBytes * 8}});
    }
}

void readSignatureTrailer(FieldReader& reader) {
    const std::uint64_t end = reader.offset();
    reader.readRest("trailing", "belongs to nothing");
    if (reader.offset() > end) {
        reader.setProblem(end, "the record ends here, but " + moreText(reader.offset() - end));
    }
}

void askLibraryOfSignature(const bytes& record, Report& report) {
    report.libraryVerdict = signatureFault(record);
    report.agreesWithLibrary = report.libraryVerdict.empty() != report.problem.has_value();
}

void tellUnknownOfSignature(const bytes& record, Report& report) {
    const Level* const level = levelOfVersion(record.front());
    if (level != nullptr && !openingFault(record, level->spec())) {
        report.unknown.push_back("whether it is a signature at all: an envelope of the level " + level->name +
                                 " can look the same, which --as envelope shows");
    }
    report.unknown.emplace_back(
        "what was signed, by whom, and whether the signature matches: 'vorl verify' judges that");
}

}  // namespace

bool isSignatureOfUsualSize(const bytes& record) {
    return std::any_of(std::begin(USUAL_VALUE_BYTES), std::end(USUAL_VALUE_BYTES),
                       [&record](std::size_t size) {
                           const auto high = static_cast<unsigned char>(0x80U | size >> 8);
                           return record.size() == 3 + size && record[0] == VERSION && record[1] == high &&
                                  record[2] == (size & 0xffU);
                       });
}

bool canBeReadAsSignature(const bytes& record) {
    return signatureFault(record).empty();
}

void inspectSignature(const bytes& record, Report& report) {
    report.kind = "signature";
    report.title = "signature record";
    FieldReader reader(record, report);
    readVersion(reader, report);
    std::optional<std::uint64_t> valueBytes;
    if (!report.problem) {
        valueBytes = reader.readBlock("value", "signature value");
    }
    askLibraryOfSignature(record, report);
    if (valueBytes) {
        addSizes(*valueBytes, report);
        readSignatureTrailer(reader);
    } else {
        reader.readRest("unread", "cannot be read because of the fault before it");
    }
    tellUnknownOfSignature(record, report);
}

}  // namespace vorl::tool
