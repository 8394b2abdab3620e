#include "explain/records.h"
#include "inspect/FieldReader.h"
#include "inspect/dh_numbers.h"
#include "inspect/dh_record.h"
#include "inspect/numbers.h"
#include "vorl/BigNum.h"
#include "vorl/DHPubKey.h"
#include "vorl/DiffieHellman.h"
#include "vorl/VORLException.h"

#include <brisclient/Base64.h>
#include <openssl/bn.h>

#include <algorithm>

namespace vorl::tool {

using Tarvik::BrisClient::Base64;

namespace {

const std::uint64_t MIN_RECORD_BYTES = 125;
const unsigned int DH_VERSION_BYTES = 4;
const std::uint64_t MIN_KEY_BYTES = 120;
const std::uint64_t MAX_KEY_BYTES = 129;

std::vector<Step> dhRecordSteps() {
    return {
        {"base64", "the text must be Base64, of one byte or more", ExitStatus::BAD_INPUT},
        {"length", "the record must have 125 bytes or more", ExitStatus::BAD_INPUT},
        {"version", "a record of 130 bytes or more must have version 2", ExitStatus::BAD_INPUT},
        {"key", "the key must be readable", ExitStatus::BAD_INPUT},
        {"key-length", "the key must have 120 to 129 bytes", ExitStatus::BAD_INPUT},
        {"group", "the group must have 1024 bits, and no faults", ExitStatus::BAD_INPUT},
        {"number", "the number must not fix the secret", ExitStatus::CANNOT_OPEN},
    };
}

// Places in that list.
const std::size_t BASE64 = 0;
const std::size_t KEY = 3;

// Without a group: the library looks at all of the record before it finds that no secret comes of this one.
const bytes SMALL_PRIME = {23};
const char SMALL_GROUP_TEXT[] = "DH shared secret size (1) != 128";

struct Answer {
    /// What the library says; empty where it gives a secret.
    std::string fault;
    /// The secret is zero: OpenSSL has computed none, which the library does not report.
    bool isZero;
};

// With the prime 65537 as private key: in a group without faults, none but numbers whose power is 0, 1 or -1
// under any key have such a power. The generator and the public key do not matter.
Answer askLibrary(const bytes& text, const bytes& prime) {
    Buffer pair;
    // A block of no bytes would not be written.
    const bytes blockOfPrime = prime.empty() ? bytes{0} : prime;
    for (const bytes& number : {blockOfPrime, bytes{2}, bytes{2}, bytes{1, 0, 1}}) {
        pair.put(OctetString(number));
    }
    try {
        const bytes secret = DiffieHellman::decode(pair)->computeSharedSecret(text);
        return {"",
                std::all_of(secret.begin(), secret.end(), [](unsigned char octet) { return octet == 0; })};
    } catch (const VORLException& fault) {
        return {fault.what(), false};
    }
}

// What a number is that fixes the secret whatever the private keys; empty for others.
std::string fixingName(const BigNum& number, const std::optional<bytes>& prime) {
    if (BN_is_zero(number.getBIGNUM()) != 0 || BN_is_one(number.getBIGNUM()) != 0) {
        return BN_is_zero(number.getBIGNUM()) != 0 ? "0" : "1";
    }
    const std::unique_ptr<BIGNUM, decltype(&BN_free)> more(BN_new(), BN_free);
    if (!prime || !more || BN_sub(more.get(), number.getBIGNUM(), BigNum(*prime).getBIGNUM()) == 0) {
        return "";
    }
    if (BN_abs_is_word(more.get(), 1) != 0) {
        return BN_is_negative(more.get()) != 0 ? "the prime less 1" : "the prime and 1";
    }
    return BN_is_zero(more.get()) != 0 ? "the prime" : "";
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
    reader.readBytes("version", DH_VERSION_BYTES);
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

void walkThroughRecord(const Explained& input, StepWalk& walk) {
    if (input.fault) {
        walk.refuse(input.fault->offset, input.fault->text);
        return;
    }
    const bytes& record = input.record;
    walk.pass(newlineRemark(input));
    if (record.size() < MIN_RECORD_BYTES) {
        walk.refuse(record.size(), "it ends here, with " + bytesText(record.size()));
        return;
    }
    walk.pass();
    const std::uint64_t keyBytes = readKey(record, walk);
    if (keyBytes < MIN_KEY_BYTES || keyBytes > MAX_KEY_BYTES) {
        walk.refuse(DH_VERSION_BYTES, "it has " + bytesText(keyBytes));
    }
    walk.pass();
}

void checkGroup(const std::optional<bytes>& prime, bool hasFaults, StepWalk& walk) {
    if (!prime) {
        walk.need("the group");
    } else if (!isAgreementSize(bitsOf(*prime))) {
        walk.refuse(std::nullopt, wrongSizeText(bitsOf(*prime)));
    } else if (hasFaults) {
        walk.warnOfOther(
            "the group has faults, which 'vorl dh params check' tells; the library does not look for them",
            ExitStatus::REFUSED);
    } else {
        walk.pass();
    }
}

bytes keyIn(const bytes& record) {
    Buffer in(record);
    DHPubKey peer;
    peer.decode(in);
    return peer.key();
}

void warnOfNumber(const bytes& record, const std::string& name, StepWalk& walk) {
    walk.warn(
        isOfBareKeySize(record) ? 0 : DH_VERSION_BYTES,
        (name.empty() ? "it has no place in the group" : "it is " + name) +
            ": OpenSSL computes nothing with it, and the library gives out 128 zero bytes as the secret, "
            "which anybody knows");
}

// `isZero`: whether the secret was. In a group with faults that can be the group's doing, and another secret
// is no proof of anything: there may be few of them.
void checkNumber(const bytes& record, const std::string& name, bool isZero,
                 const std::optional<PeerGroup>& group, StepWalk& walk) {
    const bool hasFaults = group && group->hasFaults;
    if (!name.empty() || (isZero && !hasFaults)) {
        warnOfNumber(record, name, walk);
    } else if (group && !hasFaults) {
        walk.pass();
    } else {
        walk.need(hasFaults ? "a group without faults" : "the group");
    }
}

}  // namespace

Explanation explainDhRecord(const Explained& record, const std::optional<PeerGroup>& group) {
    const std::optional<bytes> prime =
        group ? std::make_optional(numbersOf(group->params).prime) : std::nullopt;
    StepWalk walk(dhRecordSteps());
    walkThroughRecord(record, walk);
    const std::size_t passed = walk.passed();
    checkGroup(prime, group && group->hasFaults, walk);
    const Answer answer =
        askLibrary(record.fault ? record.text : Base64::encode(record.record), prime.value_or(SMALL_PRIME));
    const std::string name = walk.hasRefused() ? "" : fixingName(BigNum(keyIn(record.record)), prime);
    checkNumber(record.record, name, answer.isZero, group, walk);
    const bool isRefused = prime ? !answer.fault.empty() : answer.fault != SMALL_GROUP_TEXT;
    // An empty record is refused before it is read.
    const bool isFormRefused = passed > BASE64 && passed <= KEY;
    const bool agrees = isRefused == walk.hasRefused() && (!prime || name.empty() || answer.isZero) &&
                        (record.fault.has_value() == (passed == BASE64)) &&
                        (passed == BASE64 || isFormRefused != isReadable(record.record));
    return {walk.complete(answer.fault), agrees,
            "a record carries no signature, so that something else has to prove who made it"};
}

}  // namespace vorl::tool
