#include "inspect/envelope.h"

#include "inspect/FieldReader.h"
#include "inspect/levels.h"
#include "inspect/numbers.h"
#include "inspect/signature.h"
#include "inspect/structure.h"
#include "vorl/CipherSpec.h"
#include "vorl/Util.h"

// An envelope, field by field:
//
//   version   1 byte     names the level
//   iv        a block    at the level full only
//   body      a block    the ciphertext; at the level none, the message itself

namespace vorl::tool {

namespace {

struct Body {
    std::uint64_t offset;
    std::uint64_t bytes;
};

bool readIv(FieldReader& reader, const CipherSpec& spec) {
    if (spec.ivSize == 0) {
        return true;
    }
    const std::uint64_t begin = reader.offset();
    const std::optional<std::uint64_t> size = reader.readBlock("iv", "initialisation vector");
    if (size && *size != spec.ivSize) {
        reader.setProblem(
            begin, "the iv has " + bytesText(*size) + ", " + std::to_string(spec.ivSize) + " are needed");
    }
    return size.has_value();
}

void addSizes(std::uint64_t bodyBytes, const CipherSpec& spec, Report& report) {
    report.facts.push_back({"bodyBytes", "bytes in the body", bodyBytes});
    if (spec.blockSize == 0) {
        report.facts.push_back({"messageBytes", "bytes in the message", Range{bodyBytes, bodyBytes}});
    } else if (bodyBytes >= spec.blockSize) {
        // The padding is one byte to a whole block.
        report.facts.push_back(
            {"messageBytes", "bytes in the message", Range{bodyBytes - spec.blockSize, bodyBytes - 1}});
    }
}

// Where the structure holds and yet no key can open the body.
void checkBlocks(const Body& body, const CipherSpec& spec, Report& report) {
    const std::optional<std::string> fault = blockFault(body.bytes, spec);
    if (fault && !report.problem) {
        report.problem = Problem{body.offset, *fault};
    }
}

void tellUnknown(const CipherSpec& spec, Report& report) {
    if (spec.blockSize == 0) {
        report.unknown = {"who made it, and whether it was changed since: nothing in it is secret or signed"};
        return;
    }
    report.unknown = {
        "whether it opens: that takes the key, and a damaged body looks like a whole one",
        "the message, and how many of the bytes above are padding",
        "who made it, and whether it was changed since: not even the key tells, since an envelope is "
        "encrypted but carries no signature",
    };
}

// Nothing where the body cannot be read to its end.
std::optional<Body> readBody(FieldReader& reader, const CipherSpec& spec) {
    const std::uint64_t begin = reader.offset();
    if (reader.atEnd() && spec.blockSize == 0) {
        reader.setProblem(begin,
                          "no body follows: an empty message at the level none, which this format "
                          "writes but cannot read");
        return std::nullopt;
    }
    const std::optional<std::uint64_t> size =
        reader.readBlock("body", spec.blockSize == 0 ? "the message" : "ciphertext");
    return size ? std::optional<Body>({begin, *size}) : std::nullopt;
}

void readTrailer(FieldReader& reader) {
    const std::uint64_t end = reader.offset();
    reader.readRest("trailing", "belongs to nothing");
    if (reader.offset() > end) {
        reader.setProblem(end, "the envelope ends here, but " + moreText(reader.offset() - end));
    }
}

// All that stands behind the version byte.
std::optional<Body> readParts(FieldReader& reader, const CipherSpec& spec) {
    if (readIv(reader, spec)) {
        if (const std::optional<Body> body = readBody(reader, spec)) {
            readTrailer(reader);
            return body;
        }
    }
    reader.readRest("unread", "cannot be read because of the fault before it");
    return std::nullopt;
}

void askLibrary(const bytes& envelope, Report& report) {
    const std::optional<std::string> fault = structureFault(envelope);
    report.libraryVerdict = fault.value_or("");
    report.agreesWithLibrary = fault.has_value() == report.problem.has_value();
}

void inspectUnknown(FieldReader& reader, unsigned char version) {
    reader.setMeaning("no level has this version");
    reader.setProblem(0, "unknown version 0x" + Util::toHexString(version));
    reader.readRest("unread", "cannot be read without knowing the version");
}

}  // namespace

void inspectEnvelope(const bytes& envelope, Report& report) {
    FieldReader reader(envelope, report);
    const unsigned char version = reader.readByte("version");
    const Level* const level = levelOfVersion(version);
    if (level == nullptr) {
        inspectUnknown(reader, version);
        askLibrary(envelope, report);
        return;
    }
    report.kind = "envelope";
    reader.setMeaning("level " + level->name);
    report.facts = {{"version", "version", std::uint64_t{version}},
                    {"level", "level", level->name},
                    {"protection", "protection", level->description}};
    const std::optional<Body> body = readParts(reader, level->spec());
    askLibrary(envelope, report);
    if (body) {
        addSizes(body->bytes, level->spec(), report);
        checkBlocks(*body, level->spec(), report);
    }
    tellUnknown(level->spec(), report);
    if (!report.problem && canBeReadAsSignature(envelope)) {
        report.unknown.insert(report.unknown.begin(),
                              "whether it is an envelope at all: a signature record can look the same, which "
                              "--as signature shows");
    }
}

}  // namespace vorl::tool
