#include "explain/records.h"
#include "inspect/FieldReader.h"
#include "inspect/numbers.h"
#include "inspect/structure.h"
#include "shared/SecretBytes.h"
#include "vorl/CipherSpec.h"
#include "vorl/CipherWrapper.h"
#include "vorl/Util.h"
#include "vorl/VORLException.h"
#include "vorl/VORLLib.h"
#include "vorl/VorlContext.h"

#include <brisclient/Base64.h>
#include <tarvik/crypto/ICipherContext.h>

#include <algorithm>
#include <new>

namespace vorl::tool {

using Tarvik::BrisClient::Base64;
using tarvik::crypto::ICipherContext;

namespace {

std::vector<Step> envelopeSteps() {
    return {
        {"initialised", "the library must be initialised", ExitStatus::FAULT},
        {"version", "a version byte must be there", ExitStatus::BAD_INPUT},
        {"known-version", "the version must be known", ExitStatus::BAD_INPUT},
        {"policy", "the policy must accept the level of that version", ExitStatus::REFUSED},
        {"context", "the context must be of the same level", ExitStatus::REFUSED},
        {"iv", "the IV must be readable", ExitStatus::BAD_INPUT},
        {"iv-length", "the IV must have the length that the cipher needs", ExitStatus::BAD_INPUT},
        {"body", "the body must be readable", ExitStatus::BAD_INPUT},
        {"end", "nothing must follow the body", ExitStatus::BAD_INPUT},
        {"blocks", "the body must be made of whole blocks of the cipher", ExitStatus::BAD_INPUT},
        {"decryption", "the key must open the body", ExitStatus::CANNOT_OPEN},
    };
}

// How far the library comes with an envelope, by what it asks of a cipher.
enum class Reached { VERSION, CONTEXT, IV, BODY };

// A cipher that takes anything, and notes what it was asked for.
class Witness : public ICipherContext {
public:
    explicit Witness(Spec spec) : spec_(spec) {}

    Spec id() override {
        reach(Reached::CONTEXT);
        return spec_;
    }
    void encryptInit(const bytes& /*iv*/) override {}
    void decryptInit(const bytes& /*iv*/) override { reach(Reached::IV); }
    bytes update(const bytes& /*data*/) override {
        reach(Reached::BODY);
        return bytes();
    }
    bytes final() override { return bytes(); }

    Reached reached() const { return reached_; }

private:
    void reach(Reached now) { reached_ = std::max(reached_, now); }

    const Spec spec_;
    Reached reached_ = Reached::VERSION;
};

struct Verdict {
    bool refuses;
    std::string text;
    Reached reached;
};

Verdict askLibrary(const bytes& envelope, const Level& context) {
    Witness witness(context.spec().spec);
    try {
        CipherWrapper::decrypt(envelope, witness);
        return {false, "", witness.reached()};
    } catch (const VORLException& fault) {
        return {true, fault.what(), witness.reached()};
    }
}

bool isSame(const Level& one, const Level& other) {
    return one.version() == other.version();
}

class EnvelopeWalk {
public:
    EnvelopeWalk(const bytes& envelope, const Level& context)
        : context_(context), reader_(envelope, fields_), walk_(envelopeSteps()) {}

    void walk(const Explained& input) {
        walk_.pass();
        const std::optional<Problem>& textFault = input.fault;
        if (textFault || reader_.atEnd()) {
            walk_.refuse(
                textFault ? textFault->offset : 0,
                textFault ? textFault->text + ", which leaves an envelope without a byte" : "there is none");
            return;
        }
        walk_.pass(newlineRemark(input));
        level_ = levelOfVersion(reader_.readByte("version"));
        if (level_ == nullptr) {
            walk_.refuse(0, "no level has the version 0x" + Util::toHexString(fields_.fields[0].head[0]));
            return;
        }
        walk_.pass("the level " + level_->name);
        checkAcceptance();
        readIv();
        readBody();
    }

    // What the library must have come to, if it does as this walk did.
    bool agreesWith(const Verdict& verdict) const {
        const std::size_t passed = walk_.passed();
        const bool isEncrypted = level_ != nullptr && level_->spec().blockSize > 0;
        const Reached expected = passed <= POLICY         ? Reached::VERSION
                                 : passed <= IV_LENGTH    ? Reached::CONTEXT
                                 : !isEncrypted           ? Reached::CONTEXT
                                 : passed <= NOTHING_MORE ? Reached::IV
                                                          : Reached::BODY;
        return verdict.refuses == (passed <= NOTHING_MORE) && verdict.reached == expected;
    }

    // The last two checks, which the cipher makes.
    void open(const bytes& envelope, const SecretBytes* key) {
        if (walk_.hasRefused()) {
            return;
        }
        if (level_->spec().blockSize == 0) {
            walk_.pass("the level none has no cipher");
            walk_.pass("the level none has no key");
            return;
        }
        const std::optional<std::string> fault = blockFault(bodyBytes_, level_->spec());
        if (fault) {
            walk_.refuse(bodyOffset_, *fault);
            return;
        }
        walk_.pass();
        if (key == nullptr) {
            walk_.need("the key");
        } else if (isOpenedBy(*key, envelope)) {
            walk_.pass();
        } else {
            walk_.refuse(bodyOffset_, "wrong key or damaged data");
        }
    }

    std::string caveat() const {
        return level_ != nullptr && level_->spec().blockSize == 0
                   ? "an envelope of the level " + level_->name +
                         " is not protected: anybody can have made it"
                   : "an envelope carries no signature: anybody who has the key can have made it, and a "
                     "damaged one may open all the same";
    }

    std::vector<Step> steps(const std::string& libraryText) const {
        // What the library says of the structure is not about what comes after it.
        return walk_.complete(walk_.passed() <= NOTHING_MORE ? libraryText : "");
    }

private:
    // Places in the list of steps.
    static const std::size_t POLICY = 3;
    static const std::size_t IV_LENGTH = 6;
    static const std::size_t NOTHING_MORE = 8;

    void checkAcceptance() {
        if (VORLLib::isAllowedEncryptionType(level_->type)) {
            walk_.pass();
        } else {
            walk_.refuse(0, "the level " + level_->name + " is not accepted");
        }
        if (isSame(*level_, context_)) {
            walk_.pass();
        } else {
            walk_.refuse(0, "the context is of the level " + context_.name);
        }
    }

    void readIv() {
        const unsigned int ivBytes = level_->spec().ivSize;
        if (ivBytes == 0) {
            walk_.pass("the level " + level_->name + " has none");
            walk_.pass("the level " + level_->name + " has none");
            return;
        }
        const std::uint64_t begin = reader_.offset();
        const std::optional<std::uint64_t> size = reader_.readBlock("iv", "");
        passIfRead(size);
        if (size && *size != ivBytes) {
            walk_.refuse(begin,
                         "it has " + bytesText(*size) + ", " + std::to_string(ivBytes) + " are needed");
        }
        walk_.pass();
    }

    void readBody() {
        if (walk_.hasRefused()) {
            return;
        }
        bodyOffset_ = reader_.offset();
        const std::optional<std::uint64_t> size = reader_.readBlock("body", "");
        bodyBytes_ = size.value_or(0);
        passIfRead(size);
        const std::uint64_t end = reader_.offset();
        reader_.readRest("trailing", "");
        if (size && reader_.offset() > end) {
            walk_.refuse(end, moreText(reader_.offset() - end));
        }
        walk_.pass();
    }

    void passIfRead(const std::optional<std::uint64_t>& size) {
        if (size) {
            walk_.pass();
        } else {
            walk_.refuse(fields_.problem->offset, fields_.problem->text);
        }
    }

    bool isOpenedBy(const SecretBytes& key, const bytes& envelope) const {
        VORLLib::type_ = context_.type;
        VorlContext context(key.get());
        const bytes text = Base64::encode(envelope);
        try {
            const SecretBytes message(context.decrypt(text));
            return true;
        } catch (const std::bad_alloc&) {
            throw;
        } catch (const std::exception&) {
            // How a decryption fails would help to find the message without the key.
            return false;
        }
    }

    const Level& context_;
    Report fields_;
    FieldReader reader_;
    StepWalk walk_;
    const Level* level_ = nullptr;
    std::uint64_t bodyOffset_ = 0;
    std::uint64_t bodyBytes_ = 0;
};

}  // namespace

Explanation explainEnvelope(const Explained& envelope, const Level& context, const SecretBytes* key) {
    EnvelopeWalk walk(envelope.record, context);
    walk.walk(envelope);
    // A text is asked about as it is.
    const bytes record = envelope.fault ? Base64::decode(envelope.text) : envelope.record;
    const Verdict verdict = askLibrary(record, context);
    const bool agrees = walk.agreesWith(verdict);
    // Where the two disagree, no decryption is tried.
    if (agrees) {
        walk.open(envelope.record, key);
    }
    return {walk.steps(verdict.text), agrees, walk.caveat()};
}

}  // namespace vorl::tool
