// PKSignature::decode() on any bytes: only the library's exceptions, and what was read is written again as
// the format has it. Of all values that come by, exactly one is a signature over the data.

#include "attempt.h"
#include "block_encoder.h"
#include "vorl/Buffer.h"
#include "vorl/PKSignature.h"
#include "vorl/PKSignatureProcessor.h"
#include "vorl/PubKey.h"

#include <brisclient/Base64.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace vorl::fuzz {

namespace {

using Tarvik::BrisClient::Base64;
using test::block;
using test::fromText;
using test::operator+;
using test::slice;

// RSA, 1024 bits. The private half signed DATA with "openssl dgst -sha1 -sign" and is gone.
const char KEY[] =
    "-----BEGIN PUBLIC KEY-----\n"
    "MIGfMA0GCSqGSIb3DQEBAQUAA4GNADCBiQKBgQC6g55VLY8hty4Qzj3DH/zpYhV2\n"
    "8DYoBr1lKXgkx5Gfb1P+P0Ij8zGBbL95CTD7QjQYgwTI99SIkCzgIxGziXllfM3t\n"
    "Fg6R0QXapBG9xNZPq1tKJ6rfWtBcQevOkkD+Zcm1OgOFitBwl7BTCmvtyp3w2UQG\n"
    "GY0FuNc8dbFZffZ/GwIDAQAB\n"
    "-----END PUBLIC KEY-----\n";
const bytes DATA = fromText("data");
const bytes SIGNATURE =
    Base64::decode(fromText("LFPLMIs8ewj8paySGFrd3IlNbah0wxOaLQwLeCEUQZcWq2JBqW7qKoFs+GQHa6Ad"
                            "2DCh6l6ulApsc+hApQOyt3v85aVcTvJ8FfiQ/hSnzHcy9IaGtk1nUEL8MBGbH5MK"
                            "EL0H3Y6XE5IH5nWlscb4D+ZwvTYugC/tcfLXJo/QbHg="));

// The value's last determinant is less than a fragment, so the one of an empty value or of whole fragments
// is a zero.
bytes written(const bytes& val) {
    const bytes closing(val.size() % 16384 == 0 ? 1 : 0, 0x00);
    return bytes{0x01} + block(val) + closing;
}

void checkRecord(const PKSignature& signature, const bytes& raw, const Buffer& in) {
    const bytes record = written(signature.val());
    require(signature.encode() == record, "a record is written as its format has it");
    require(in.ridx() <= raw.size() && in.ridx() >= record.size(),
            "a record is not written longer than it was");
    require(slice(raw, 0, record.size()) != record || in.ridx() == record.size(),
            "a record ends with its value");
    require(PKSignature::decode(record)->val() == signature.val(), "what was written reads back");
    require(Base64::decode(signature.encodeB64()) == record, "so does its text");
    require(signature.toString() == "Public-Key-Signature (Version 0x01, SHA1withRSA)",
            "a record has a text");
}

void checkVerification(const std::shared_ptr<const PKSignature>& signature) {
    static const std::shared_ptr<const PubKey> key = PubKey::loadFromPEMStr(KEY);
    require(PKSignatureProcessor::verify(signature, key, DATA) == (signature->val() == SIGNATURE),
            "exactly one value is a signature");
}

}  // namespace

void readAnything(const bytes& input) {
    std::shared_ptr<const PKSignature> signature;
    Buffer in(input);
    if (!attempt([&] { signature = PKSignature::decode(in); })) {
        require(in.ridx() <= in.widx(), "a failure leaves the read index inside");
        return;
    }
    require(attempt([&] { checkRecord(*signature, input, in); }), "what was read can be written");
    require(attempt([&] { checkVerification(signature); }), "a signature that does not match is no error");
}

}  // namespace vorl::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    vorl::fuzz::readAnything(vorl::bytes(data, data + size));
    return 0;
}
