#include "explain/records.h"
#include "inspect/FieldReader.h"
#include "inspect/dh_record.h"
#include "inspect/numbers.h"
#include "vorl/DHPubKey.h"
#include "vorl/DiffieHellman.h"
#include "vorl/VORLException.h"

#include <brisclient/Base64.h>

namespace vorl::tool {

using Tarvik::BrisClient::Base64;

namespace {

const std::uint64_t MIN_RECORD_BYTES = 125;
const unsigned int VERSION_BYTES = 4;
const std::uint64_t MIN_KEY_BYTES = 120;
const std::uint64_t MAX_KEY_BYTES = 129;

std::vector<Step> dhRecordSteps() {
    return {
        {"base64", "the text is Base64, of one byte or more", ExitStatus::BAD_INPUT},
        {"length", "the record has 125 bytes or more", ExitStatus::BAD_INPUT},
        {"version", "a record of 130 bytes or more has version 2", ExitStatus::BAD_INPUT},
        {"key", "the key can be read", ExitStatus::BAD_INPUT},
        {"key-length", "the key has 120 to 129 bytes", ExitStatus::BAD_INPUT},
        {"group", "the group has 1024 bits", ExitStatus::BAD_INPUT},
        {"number", "OpenSSL takes the number for one of the group", ExitStatus::CANNOT_OPEN},
    };
}

// Places in that list.
const std::size_t BASE64 = 0;
const std::size_t KEY = 3;
const std::size_t KEY_LENGTH = 4;

const char SMALL_GROUP_TEXT[] = "DH shared secret size (1) != 128";

// What the library says to the text of a peer. With a key pair in the group of 23 it looks at all of the
// record before it finds that no secret comes of such a group.
std::string agreementFault(const bytes& text) {
    try {
        Buffer in(bytes{1, 23, 1, 5, 1, 8, 1, 6});
        DiffieHellman::decode(in)->computeSharedSecret(text);
        return "";
    } catch (const VORLException& fault) {
        return fault.what();
    }
}

bool isReadable(const bytes& record) {
    try {
        Buffer in(record);
        DHPubKey().decode(in);
        return true;
    } catch (const VORLException&) {
        return false;
    }
}

void readVersion(FieldReader& reader, const bytes& record, StepWalk& walk) {
    reader.readBytes("version", VERSION_BYTES);
    if (beginsAsDhRecord(record)) {
        walk.pass();
    } else {
        walk.refuse(0, "it begins with another number");
    }
}

// The size of the key.
std::uint64_t readKey(const bytes& record, StepWalk& walk) {
    if (isOfBareKeySize(record)) {
        walk.pass("it has " + bytesText(record.size()) + ": a bare key, of version 1");
        walk.pass();
        return record.size();
    }
    Report fields;
    FieldReader reader(record, fields);
    readVersion(reader, record, walk);
    const std::optional<std::uint64_t> keyBytes =
        walk.hasRefused() ? std::nullopt : reader.readBlock("key", "");
    if (keyBytes) {
        walk.pass();
    } else if (fields.problem) {
        walk.refuse(fields.problem->offset, fields.problem->text);
    }
    return keyBytes.value_or(0);
}

void walkThrough(const Explained& input, StepWalk& walk) {
    if (input.fault) {
        walk.refuse(input.fault->offset, input.fault->text);
        return;
    }
    const bytes& record = input.record;
    walk.pass();
    if (record.size() < MIN_RECORD_BYTES) {
        walk.refuse(record.size(), "it ends here, with " + bytesText(record.size()));
        return;
    }
    walk.pass();
    const std::uint64_t keyBytes = readKey(record, walk);
    if (keyBytes < MIN_KEY_BYTES || keyBytes > MAX_KEY_BYTES) {
        walk.refuse(VERSION_BYTES, "it has " + bytesText(keyBytes));
    }
    walk.pass();
    walk.need("the group");
    walk.need("the group");
}

}  // namespace

Explanation explainDhRecord(const Explained& record) {
    StepWalk walk(dhRecordSteps());
    walkThrough(record, walk);
    const std::string text = agreementFault(record.fault ? record.text : Base64::encode(record.record));
    const bool isRefused = text != SMALL_GROUP_TEXT;
    const std::size_t passed = walk.passed();
    // An empty record is refused before it is read.
    const bool isFormRefused = passed > BASE64 && passed <= KEY;
    const bool agrees = isRefused == (passed <= KEY_LENGTH) &&
                        (record.fault.has_value() == (passed == BASE64)) &&
                        (passed == BASE64 || isFormRefused != isReadable(record.record));
    return {walk.complete(text), agrees};
}

}  // namespace vorl::tool
