#include "Subject.h"
#include "checks.h"
#include "expectations.h"

#include <iterator>

// What contexts refuse, and how they go on after operations that did not end well.

namespace vorl::testkit {

using tarvik::crypto::ICipherContext;

namespace {

const std::size_t SEALED_BYTES = 37;

// Last blocks that are no padding, by their last octets.
const bytes NO_PADDING[] = {
    {0x00},       {0x11},
    {0xff},       {0x80},
    {0x01, 0x02}, {0x00, 0x03, 0x03},
    {0x0f, 0x10}, {0x05, 0x04, 0x05, 0x05, 0x05},
};

bytes firstOctets(const bytes& data, std::size_t count) {
    return bytes(data.begin(), data.begin() + static_cast<std::ptrdiff_t>(count));
}

// A ciphertext that decrypts to a block that ends in `end`, and has no padding behind it. What seals whole
// blocks adds one of padding, which is cut off: no key is needed for that.
bytes endingIn(const Subject& subject, const Mode& mode, const bytes& iv, const bytes& end) {
    bytes plain(2 * BLOCK_BYTES - end.size(), 0x7e);
    plain.insert(plain.end(), end.begin(), end.end());
    return firstOctets(subject.sealed(mode, FIRST_KEY, iv, plain), plain.size());
}

void refusesWrongPadding(const Platform& platform) {
    const Subject subject(platform);
    for (const Mode& mode : AES_MODES) {
        const bytes iv = ivOf(mode, 0);
        for (const bytes& end : NO_PADDING) {
            const bytes ciphertext = endingIn(subject, mode, iv, end);
            const auto context = subject.context(mode);
            refusing(std::string(mode.name) + ": a wrong padding",
                     [&] { operate(*context, Direction::DECRYPT, iv, ciphertext); });
        }
    }
}

void refusesPartsOfBlocks(const Platform& platform) {
    const Subject subject(platform);
    for (const Mode& mode : AES_MODES) {
        const bytes iv = ivOf(mode, 0);
        const bytes ciphertext = subject.sealed(mode, FIRST_KEY, iv, octets(SEALED_BYTES));
        for (const std::size_t size : {0U, 1U, 15U, 17U, 31U, 33U, 47U}) {
            const auto context = subject.context(mode);
            refusing(operation(mode, Direction::DECRYPT, size),
                     [&] { operate(*context, Direction::DECRYPT, iv, firstOctets(ciphertext, size)); });
        }
    }
}

void anotherKeyDoesNotOpen(const Platform& platform) {
    const Subject subject(platform);
    for (const Mode& mode : AES_MODES) {
        for (unsigned char first = 0; first < 8; ++first) {
            const bytes iv = ivOf(mode, first);
            const bytes plain(SEALED_BYTES, first);
            // By the platform itself: one that takes every key for the same opens what it has sealed.
            const bytes ciphertext = doing(operation(mode, Direction::ENCRYPT, plain.size()), [&] {
                return operate(*subject.context(mode), Direction::ENCRYPT, iv, plain);
            });
            const auto context = subject.context(mode, SECOND_KEY);
            const std::string what = std::string(mode.name) + ": decrypting under another key";
            bytes opened;
            if (accepts(what, [&] { opened = operate(*context, Direction::DECRYPT, iv, ciphertext); })) {
                require(opened != plain, what + " yields the message");
            }
        }
    }
}

void worksInBothDirections(const Subject& subject, const Mode& mode, ICipherContext& context,
                           const std::string& when) {
    const bytes iv = ivOf(mode, 9);
    const bytes plain = octets(SEALED_BYTES);
    const std::string encrypting = operation(mode, Direction::ENCRYPT, plain.size()) + " " + when;
    const bytes ciphertext =
        doing(encrypting, [&] { return operate(context, Direction::ENCRYPT, iv, plain); });
    subject.expectSealed(encrypting, mode, FIRST_KEY, iv, plain, ciphertext);
    const std::string decrypting = operation(mode, Direction::DECRYPT, ciphertext.size()) + " " + when;
    require(doing(decrypting, [&] { return operate(context, Direction::DECRYPT, iv, ciphertext); }) == plain,
            decrypting + " yields another message");
}

void worksInBothDirectionsInTurn(const Platform& platform) {
    const Subject subject(platform);
    for (const Mode& mode : AES_MODES) {
        const auto context = subject.context(mode);
        for (int round = 0; round < 3; ++round) {
            worksInBothDirections(subject, mode, *context, "in turn");
        }
    }
}

void startsAfreshAfterAnUnfinishedOperation(const Platform& platform) {
    const Subject subject(platform);
    for (const Mode& mode : AES_MODES) {
        const bytes iv = ivOf(mode, 0);
        for (const Direction direction : {Direction::ENCRYPT, Direction::DECRYPT}) {
            for (const std::size_t fed : {0U, 5U, 16U, 40U}) {
                const auto context = subject.context(mode);
                doing("An operation that is to be left unfinished", [&] {
                    init(*context, direction, iv);
                    if (fed > 0) {
                        context->update(octets(fed));
                    }
                });
                worksInBothDirections(subject, mode, *context, "after an operation that was left unfinished");
            }
        }
    }
}

void startsAfreshAfterAFailure(const Platform& platform) {
    const Subject subject(platform);
    for (const Mode& mode : AES_MODES) {
        const bytes iv = ivOf(mode, 0);
        for (const bytes& bad : {endingIn(subject, mode, iv, {0x00}), octets(BLOCK_BYTES + 1), bytes()}) {
            const auto context = subject.context(mode);
            // Whether it is refused is another check's.
            accepts("Decrypting what is no ciphertext",
                    [&] { operate(*context, Direction::DECRYPT, iv, bad); });
            worksInBothDirections(subject, mode, *context, "after a decryption that failed");
        }
    }
}

}  // namespace

std::vector<Check> faultChecks() {
    return {
        {"refuses-wrong-padding", "A decryption whose padding is wrong throws", refusesWrongPadding},
        {"refuses-parts-of-blocks", "A ciphertext that is empty or no multiple of a block throws",
         refusesPartsOfBlocks},
        {"another-key-does-not-open", "What one key has encrypted, another does not decrypt",
         anotherKeyDoesNotOpen},
        {"works-in-both-directions", "One context encrypts and decrypts in turn",
         worksInBothDirectionsInTurn},
        {"starts-afresh-after-an-unfinished-operation",
         "An init forgets an operation that was left unfinished", startsAfreshAfterAnUnfinishedOperation},
        {"starts-afresh-after-a-failure", "An init forgets an operation that failed",
         startsAfreshAfterAFailure},
    };
}

}  // namespace vorl::testkit
