#include "vorl/DHPubKey.h"

#include "core/WholeAppend.h"
#include "vorl/Buffer.h"
#include "vorl/Env.h"
#include "vorl/OctetString.h"
#include "vorl/Util.h"
#include "vorl/VORLException.h"

#include <brisclient/Base64.h>

#include <cstddef>
#include <utility>

// DHPubKey, field by field:
//
//   version 2   version  UInt32          00 00 00 02
//               key      OctetString     the public value
//   version 1   key      125..129 bytes  nothing before them

namespace vorl {

namespace {

const std::size_t MIN_KEY_BYTES = 125;
const std::size_t MAX_KEY_BYTES = 129;

const unsigned int BARE_KEY = 1;
const unsigned int VERSIONED_RECORD = 2;

[[noreturn]] void rejectLength(std::size_t length) {
    throw VORLException("DH PubKey length (" + std::to_string(length) + ") out of range");
}

}  // namespace

const UInt32 DHPubKey::DEFAULT_VERSION(VERSIONED_RECORD);

DHPubKey::DHPubKey() : version_(0) {}

DHPubKey::DHPubKey(const bytes& key, const UInt32& version) : key_(key), version_(version) {}

std::unique_ptr<DHPubKey> DHPubKey::create(const bytes& key) {
    if (key.size() < MIN_KEY_BYTES || key.size() > MAX_KEY_BYTES) {
        rejectLength(key.size());
    }
    return std::make_unique<DHPubKey>(key, DEFAULT_VERSION);
}

std::unique_ptr<DHPubKey> DHPubKey::createB64(const bytes& b64Key) {
    return create(Tarvik::BrisClient::Base64::decode(b64Key));
}

std::unique_ptr<DHPubKey> DHPubKey::decodeB64(const bytes& b64Record) {
    bytes octets = Tarvik::BrisClient::Base64::decode(b64Record);
    if (octets.empty()) {
        throw VORLException("Unable to Base64 decode input:\n" + Util::hexAsciiDump(b64Record, 16, ":") +
                            "\n");
    }
    Buffer in(std::move(octets));
    auto record = std::make_unique<DHPubKey>();
    record->decode(in);
    return record;
}

std::string DHPubKey::toFormatString(const std::string& name, unsigned int width, unsigned int level,
                                     const std::string& separator, unsigned int indentSize) const {
    return Util::toFormatHexString(key_, name, width, level, separator, indentSize);
}

std::string DHPubKey::toString() const {
    const Env& env = *Env::instance();
    return "Diffie-Hellman-Public-Key (Version 0x" + Util::toHexString(version_.val()) + ")\n" +
           toFormatString("key", env.fmtWidth(), env.fmtLevel(), env.fmtSeparator(), env.fmtIndentSize());
}

void DHPubKey::encode(Buffer& out) const {
    WholeAppend append(out);
    switch (version_.val()) {
        case BARE_KEY:
            out.put(key_);
            break;
        case VERSIONED_RECORD:
            out.put(version_);
            out.put(OctetString(key_));
            break;
        default:
            throw VORLException("Unknown Diffie-Hellman Public Key encoding version: 0x" +
                                Util::toHexString(version_.val()));
    }
    append.complete();
}

void DHPubKey::decode(Buffer& in) {
    // A bare key carries no version to look at, so the size alone tells the forms apart: a record around a
    // key of 120 to 124 bytes is read as a bare key, and services count on what has always been.
    if (in.widx() < MIN_KEY_BYTES) {
        rejectLength(in.widx());
    }
    if (in.widx() <= MAX_KEY_BYTES) {
        key_ = in.toByteArray();
        version_ = UInt32(BARE_KEY);
        return;
    }
    const UInt32 version = in.nextUInt32();
    if (version.val() != VERSIONED_RECORD) {
        throw VORLException("Unknown DHPubKey version: " + std::to_string(version.val()));
    }
    key_ = in.nextOctetString().takeBytes();
    version_ = version;
}

}  // namespace vorl
