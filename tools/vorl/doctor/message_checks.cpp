#include "doctor/checks.h"

#include "inspect/levels.h"
#include "vorl/VORLLib.h"
#include "vorl/VorlContext.h"

#include <brisclient/Base64.h>

#include <algorithm>

namespace vorl::tool {

using Tarvik::BrisClient::Base64;

namespace {

const bytes KEY = {0x2b, 0x7e, 0x15, 0x16, 0x28, 0xae, 0xd2, 0xa6,
                   0xab, 0xf7, 0x15, 0x88, 0x09, 0xcf, 0x4f, 0x3c};
const bytes WRONG_KEY(16, 0x00);

// "vorl doctor" under KEY, by the command openssl enc with -aes-128-cbc and -aes-128-ecb. For both of them
// the padding breaks under WRONG_KEY, and when the last bit of the envelope is another: it does not always.
const bytes FULL_ENVELOPE = {0x02, 0x10, 0x00, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08, 0x09,
                             0x0a, 0x0b, 0x0c, 0x0d, 0x0e, 0x0f, 0x10, 0x87, 0x55, 0x9a, 0x75, 0x12,
                             0x6b, 0xfb, 0x03, 0x62, 0xba, 0xb2, 0x6a, 0x18, 0x5d, 0x0e, 0x83};
const bytes TEST_ENVELOPE = {0x01, 0x10, 0xf7, 0x69, 0xea, 0x90, 0x1b, 0xc5, 0x2b,
                             0x52, 0xc5, 0x6d, 0x34, 0xf4, 0x34, 0xa7, 0xcd, 0x8a};
const bytes NONE_ENVELOPE = {0x00, 0x0b, 'v', 'o', 'r', 'l', ' ', 'd', 'o', 'c', 't', 'o', 'r'};

bytes message() {
    const std::string text = "vorl doctor";
    return bytes(text.begin(), text.end());
}

bytes open(const bytes& envelope, const bytes& key) {
    VORLLib::type_ = levelOfVersion(envelope.front())->type;
    return VorlContext(key).decrypt(Base64::encode(envelope));
}

void expectOpened(const bytes& envelope) {
    expect(open(envelope, KEY) == message(), "a sample envelope opens to another message");
}

// The right key has to open the whole sample before: what opens nothing also refuses nothing.
void expectRefused(const bytes& envelope, const bytes& key, const std::string& finding) {
    try {
        open(envelope, key);
    } catch (const std::runtime_error&) {
        return;
    }
    expect(false, finding + " goes unnoticed at the level " + levelOfVersion(envelope.front())->name);
}

void checkRoundTrip(const Level& level, std::size_t size) {
    bytes sent(size);
    std::generate(sent.begin(), sent.end(), [n = 0]() mutable { return static_cast<unsigned char>(n++); });
    VORLLib::type_ = level.type;
    VorlContext context(KEY);
    expect(context.decrypt(context.encrypt(sent)) == sent,
           "a message of " + std::to_string(size) + " bytes comes back changed at the level " + level.name);
}

}  // namespace

std::string checkRoundTrips() {
    for (const Level& level : levels()) {
        for (const std::size_t size :
             std::initializer_list<std::size_t>{1, 15, 16, 17, 127, 128, 1000, 20000}) {
            checkRoundTrip(level, size);
        }
    }
    return "messages come back at each level";
}

std::string checkKnownEnvelopes() {
    for (const bytes& envelope : {FULL_ENVELOPE, TEST_ENVELOPE, NONE_ENVELOPE}) {
        expectOpened(envelope);
    }
    return "envelopes that OpenSSL's own commands made open";
}

std::string checkWrongKey() {
    for (const bytes& envelope : {FULL_ENVELOPE, TEST_ENVELOPE}) {
        expectOpened(envelope);
        expectRefused(envelope, WRONG_KEY, "a wrong key");
    }
    return "the sample envelopes are refused under a wrong key";
}

std::string checkDamage() {
    for (bytes envelope : {FULL_ENVELOPE, TEST_ENVELOPE, NONE_ENVELOPE}) {
        expectOpened(envelope);
        if (envelope != NONE_ENVELOPE) {
            envelope.back() ^= 0x01;
            expectRefused(envelope, KEY, "a changed bit");
        }
        envelope.pop_back();
        expectRefused(envelope, KEY, "a missing byte");
    }
    return "the sample envelopes are refused when damaged";
}

}  // namespace vorl::tool
