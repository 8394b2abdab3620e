#include "dh_fields.h"

#include "core/ErrorQueueMark.h"
#include "vorl/BigNum.h"
#include "vorl/Util.h"
#include "vorl/bytes.h"
#include "vorl/safe_ptr.h"

#include <openssl/asn1.h>
#include <openssl/bn.h>
#include <openssl/crypto.h>
#include <openssl/dh.h>

#include <locale>
#include <sstream>
#include <utility>

// The encoding of a group with the data of its generation (ANSI X9.42, RFC 3279 section 2.3.3):
//
//   SEQUENCE   p, g, q     INTEGER
//              j           INTEGER, optional
//              SEQUENCE    seed BIT STRING, counter INTEGER; optional

namespace vorl {

namespace {

const char UNKNOWN[] = "n/a";

struct FreeOctets {
    void operator()(unsigned char* octets) const { OPENSSL_free(octets); }
};
using Octets = std::unique_ptr<unsigned char, FreeOctets>;

struct FreeSequence {
    void operator()(ASN1_SEQUENCE_ANY* sequence) const { sk_ASN1_TYPE_pop_free(sequence, ASN1_TYPE_free); }
};
using Sequence = std::unique_ptr<ASN1_SEQUENCE_ANY, FreeSequence>;

std::string textOf(const BIGNUM* number) {
    return BigNum(number).toString();
}

std::string textOf(const ASN1_INTEGER* number) {
    return textOf(safe_ptr(ASN1_INTEGER_to_BN(number, nullptr)).get());
}

std::string addressText(const void* p) {
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << p;
    return text.str();
}

std::string seedToString(const bytes& seed) {
    std::string address = addressText(seed.data());
    if (address.compare(0, 2, "0x") == 0) {
        address.erase(0, 2);
    }
    return "ByteArray[data(0x" + address + ") size(" + std::to_string(seed.size()) + ")]" +
           Util::toFormatHexString(seed, "seed");
}

// Numbers, bit strings and sequences are all ASN1_STRINGs.
const ASN1_STRING* valueOf(const ASN1_TYPE& element) {
    return element.value.asn1_string;  // NOLINT(cppcoreguidelines-pro-type-union-access)
}

Sequence elementsOf(const unsigned char* der, long length) {
    return Sequence(d2i_ASN1_SEQUENCE_ANY(nullptr, &der, length));
}

// What a DH remembers of how its group was generated. OpenSSL has no accessor for it, but writes it out.
struct Generation {
    std::string j = UNKNOWN;
    std::string seed = UNKNOWN;
    std::string counter = UNKNOWN;
};

void readValidation(const ASN1_STRING& der, Generation& generation) {
    const Sequence elements = elementsOf(ASN1_STRING_get0_data(&der), ASN1_STRING_length(&der));
    for (int i = 0; i < sk_ASN1_TYPE_num(elements.get()); ++i) {
        const ASN1_TYPE& element = *sk_ASN1_TYPE_value(elements.get(), i);
        if (element.type == V_ASN1_BIT_STRING) {
            const unsigned char* const seed = ASN1_STRING_get0_data(valueOf(element));
            generation.seed = seedToString(bytes(seed, seed + ASN1_STRING_length(valueOf(element))));
        } else if (element.type == V_ASN1_INTEGER) {
            generation.counter = std::to_string(ASN1_INTEGER_get(valueOf(element)));
        }
    }
}

Generation generationOf(const DH* dh, const BIGNUM* q) {
    const ErrorQueueMark mark;
    Generation generation;
    unsigned char* der = nullptr;
    const int length = q != nullptr ? i2d_DHxparams(dh, &der) : 0;
    const Octets owned(der);
    const Sequence elements = length > 0 ? elementsOf(der, length) : nullptr;
    const int first = 3;
    for (int i = first; i < sk_ASN1_TYPE_num(elements.get()); ++i) {
        const ASN1_TYPE& element = *sk_ASN1_TYPE_value(elements.get(), i);
        if (element.type == V_ASN1_INTEGER) {
            generation.j = textOf(valueOf(element));
        } else if (element.type == V_ASN1_SEQUENCE) {
            readValidation(*valueOf(element), generation);
        }
    }
    return generation;
}

}  // namespace

DhNumbers numbersOf(const DH* dh) {
    DhNumbers numbers;
    if (dh != nullptr) {
        DH_get0_pqg(dh, &numbers.p, nullptr, &numbers.g);
        DH_get0_key(dh, &numbers.pubKey, &numbers.privKey);
    }
    return numbers;
}

void WipeAndFree::operator()(BIGNUM* number) const {
    BN_clear_free(number);
}

OwnedNumber copyOf(const BIGNUM* number) {
    return OwnedNumber(number != nullptr ? BN_dup(number) : nullptr);
}

void setGroup(DH* dh, OwnedNumber p, OwnedNumber g) {
    // In one call: a DH that has neither number takes none without the other.
    if (DH_set0_pqg(dh, p.get(), nullptr, g.get()) != 0) {
        static_cast<void>(p.release());
        static_cast<void>(g.release());
    }
}

void setKeys(DH* dh, OwnedNumber pubKey, OwnedNumber privKey) {
    if (DH_set0_key(dh, pubKey.get(), privKey.get()) != 0) {
        static_cast<void>(pubKey.release());
        static_cast<void>(privKey.release());
    }
}

std::shared_ptr<DH> copyOfGroup(const DH* dh) {
    unsigned char* der = nullptr;
    const int length = dh != nullptr ? i2d_DHparams(dh, &der) : -1;
    if (length <= 0) {
        return nullptr;
    }
    const Octets owned(der);
    const unsigned char* at = der;
    return safe_ptr(d2i_DHparams(nullptr, &at, length));
}

std::string dumpOf(DH* dh) {
    const DhNumbers numbers = numbersOf(dh);
    const BIGNUM* const q = DH_get0_q(dh);
    const Generation generation = generationOf(dh, q);
    const std::pair<const char*, std::string> fields[] = {
        {"    pad:            ", UNKNOWN},
        {"    version:        ", UNKNOWN},
        {"    p:              ", textOf(numbers.p)},
        {"    g:              ", textOf(numbers.g)},
        {"    length:         ", std::to_string(DH_get_length(dh))},
        {"    pub_key:        ", textOf(numbers.pubKey)},
        {"    priv_key:       ", textOf(numbers.privKey)},
        {"    flags:          ", std::to_string(DH_test_flags(dh, ~0))},
        {"    method_mont_p:  ", UNKNOWN},
        {"    q:              ", textOf(q)},
        {"    j:              ", generation.j},
        {"    seed:           ", generation.seed},
        {"    counter:        ", generation.counter},
        {"    references:     ", UNKNOWN},
        {"    &ex_data:       ", UNKNOWN},
        {"    meth:           ", UNKNOWN},
        {"    engine:         ", addressText(DH_get0_engine(dh))},
    };
    std::string dump = "OpenSSL DH struct:\n";
    for (const auto& [label, value] : fields) {
        dump += label + value + "\n";
    }
    return dump;
}

}  // namespace vorl
