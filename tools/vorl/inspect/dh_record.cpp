#include "inspect/dh_record.h"

#include "inspect/FieldReader.h"
#include "inspect/numbers.h"
#include "vorl/DHPubKey.h"
#include "vorl/VORLException.h"

#include <algorithm>

// A record, field by field:
//
//   version 2   version   UInt32           00 00 00 02
//               key       a block
//   version 1   key       125..129 bytes   nothing before them; told by the size of the record

namespace vorl::tool {

namespace {

const unsigned char VERSION_2[] = {0, 0, 0, 2};

const std::size_t MIN_RECORD_BYTES = 125;
const std::size_t MAX_BARE_KEY_BYTES = 129;

// What DiffieHellman::computeSharedSecret() takes.
const std::uint64_t MIN_KEY_BYTES = 120;
const std::uint64_t MAX_KEY_BYTES = 129;

// What the library says against the form of a record; empty where it reads it.
std::string dhRecordFault(const bytes& record) {
    try {
        Buffer in(record);
        DHPubKey().decode(in);
        return "";
    } catch (const VORLException& fault) {
        return fault.what();
    }
}

std::optional<std::uint64_t> readBareKey(FieldReader& reader, Report& report) {
    report.facts = {{"version", "version", std::uint64_t{1}}};
    reader.readRest("key", "the public value, all of the record");
    return report.recordBytes;
}

std::optional<std::uint64_t> readVersion2(FieldReader& reader, Report& report) {
    report.facts = {{"version", "version", std::uint64_t{2}}};
    const std::optional<std::uint64_t> keyBytes = reader.readBlock("key", "the public value");
    reader.readRest(keyBytes ? "trailing" : "unread",
                    keyBytes ? "not looked at" : "cannot be read because of the fault before it");
    return keyBytes;
}

// The size of the key; nothing where it cannot be read.
std::optional<std::uint64_t> readFields(FieldReader& reader, const bytes& record, Report& report) {
    if (isOfBareKeySize(record)) {
        return readBareKey(reader, report);
    }
    if (!reader.readBytes("version", sizeof VERSION_2)) {
        return std::nullopt;
    }
    if (beginsAsDhRecord(record)) {
        return readVersion2(reader, report);
    }
    reader.setProblem(0, record.size() < MIN_RECORD_BYTES ? "this is no record of a public key"
                                                          : "a record of this size has version 2");
    reader.readRest("unread", "cannot be read without knowing the version");
    return std::nullopt;
}

void askLibraryOfRecord(const bytes& record, Report& report) {
    report.libraryVerdict = dhRecordFault(record);
    report.agreesWithLibrary = report.libraryVerdict.empty() != report.problem.has_value();
}

// Where the form holds, and yet no agreement takes the key.
void checkKey(std::uint64_t keyBytes, FieldReader& reader) {
    if (keyBytes < MIN_KEY_BYTES || keyBytes > MAX_KEY_BYTES) {
        reader.setProblem(sizeof VERSION_2,
                          "the key has " + bytesText(keyBytes) + "; an agreement takes 120 to 129");
    }
}

void tellUnknownOfRecord(const bytes& record, Report& report) {
    report.unknown = {"which group the key is for, and whether OpenSSL takes it for one of that group",
                      "who made it, and whether it was changed since: a record carries no signature"};
    if (isOfBareKeySize(record)) {
        report.unknown.insert(
            report.unknown.begin(),
            "whether it is a key at all: any 125 to 129 bytes can be a record of version 1");
    }
}

}  // namespace

bool beginsAsDhRecord(const bytes& record) {
    return record.size() >= sizeof VERSION_2 &&
           std::equal(std::begin(VERSION_2), std::end(VERSION_2), record.begin());
}

bool isOfBareKeySize(const bytes& record) {
    return record.size() >= MIN_RECORD_BYTES && record.size() <= MAX_BARE_KEY_BYTES;
}

void inspectDhRecord(const bytes& record, Report& report) {
    report.kind = "dh-record";
    report.title = "Diffie-Hellman public key record";
    FieldReader reader(record, report);
    const std::optional<std::uint64_t> keyBytes = readFields(reader, record, report);
    if (record.size() < MIN_RECORD_BYTES) {
        reader.setProblem(record.size(), "the record ends here; it has " + bytesText(record.size()) +
                                             ", and none has fewer than 125");
    }
    askLibraryOfRecord(record, report);
    if (keyBytes) {
        report.facts.push_back({"keyBytes", "bytes in the key", *keyBytes});
        checkKey(*keyBytes, reader);
    }
    tellUnknownOfRecord(record, report);
}

}  // namespace vorl::tool
