#include "vorl/DiffieHellmanParams.h"

#include "core/ErrorQueueMark.h"
#include "core/WholeAppend.h"
#include "core/memory_bio.h"
#include "dh_fields.h"
#include "vorl/BigNum.h"
#include "vorl/Buffer.h"
#include "vorl/DiffieHellman.h"
#include "vorl/Env.h"
#include "vorl/OpenSSLException.h"
#include "vorl/Util.h"
#include "vorl/VORLException.h"
#include "vorl/safe_ptr.h"

#include <openssl/bio.h>
#include <openssl/bn.h>
#include <openssl/dh.h>
#include <openssl/pem.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <utility>

// An encoded group, block by block:
//
//   p   OctetString   unsigned, big-endian, no leading zeros
//   g   OctetString   the same

namespace vorl {

namespace {

// Not an assert(), which a release build would leave out.
void abortUnlessKnown(unsigned int gen) {
    if (gen != 2 && gen != 5) {
        static_cast<void>(std::fputs("vorl::DiffieHellmanParams::generate: gen == 2 || gen == 5\n", stderr));
        std::abort();
    }
}

std::shared_ptr<DH> copyGroupOrThrow(const DH* dh) {
    std::shared_ptr<DH> copy = copyOfGroup(dh);
    if (!copy) {
        OpenSSLException::throw_message("ASN1_dup(i2d_DHparams, d2i_DHparams, dh)", "DiffieHellmanParams",
                                        __LINE__, "DiffieHellmanParams");
    }
    return copy;
}

std::shared_ptr<DH> newGroup(unsigned int generator, unsigned int bits) {
    if (bits > static_cast<unsigned int>(std::numeric_limits<int>::max())) {
        return nullptr;
    }
    std::shared_ptr<DH> dh = safe_ptr(DH_new());
    if (!dh || DH_generate_parameters_ex(dh.get(), static_cast<int>(bits), static_cast<int>(generator),
                                         nullptr) == 0) {
        return nullptr;
    }
    return dh;
}

// DH_CHECK_P_NOT_PRIME is deliberately not among them: a safe prime is one already.
bool isUsable(const DH* dh) {
    int codes = 0;
    return DH_check(dh, &codes) != 0 && (codes & DH_CHECK_P_NOT_SAFE_PRIME) == 0 &&
           (codes & DH_NOT_SUITABLE_GENERATOR) == 0 && (codes & DH_UNABLE_TO_CHECK_GENERATOR) == 0;
}

}  // namespace

DiffieHellmanParams::DiffieHellmanParams(const unsigned char* der, unsigned int len) {
    initObj(der, len);
}

DiffieHellmanParams::DiffieHellmanParams(const bytes& der) {
    initObj(der.empty() ? nullptr : der.data(), der.size());
}

DiffieHellmanParams::DiffieHellmanParams(const std::string& pem) {
    const std::shared_ptr<BIO> bio = memoryBioOver(pem);
    if (!bio) {
        OpenSSLException::throw_message("BIO_new_mem_buf()", "DiffieHellmanParams", __LINE__, __func__);
    }
    dh_ = loadFromPEM(bio);
    if (Env::getInstrumentation(DIFFIE_HELLMAN)) {
        Buffer encoded;
        encode(encoded);
        Util::saveInstrumentationFile("DHParams", encoded.toByteArray());
    }
}

DiffieHellmanParams::DiffieHellmanParams(const std::shared_ptr<DH>& dh) : dh_(copyGroupOrThrow(dh.get())) {}

DiffieHellmanParams::DiffieHellmanParams(const DiffieHellman& dh) : dh_(copyGroupOrThrow(dh.dh_.get())) {}

DiffieHellmanParams::DiffieHellmanParams(const DiffieHellmanParams& other)
    : dh_(copyGroupOrThrow(other.dh_.get())) {}

DiffieHellmanParams& DiffieHellmanParams::operator=(const DiffieHellmanParams& other) {
    if (this != &other) {
        dh_ = copyGroupOrThrow(other.dh_.get());
    }
    return *this;
}

DiffieHellmanParams::~DiffieHellmanParams() = default;

std::shared_ptr<DH> DiffieHellmanParams::loadFromPEM(const std::shared_ptr<BIO>& bio) {
    if (!bio) {
        throw VORLException("BIO is NULL");
    }
    const ErrorQueueMark mark;
    std::shared_ptr<DH> dh = safe_ptr(PEM_read_bio_DHparams(bio.get(), nullptr, refusePassword, nullptr));
    if (!dh) {
        throw VORLException("Unable to read DHParams from BIO");
    }
    return dh;
}

std::unique_ptr<DiffieHellmanParams> DiffieHellmanParams::load(const std::string& fileName) {
    const std::shared_ptr<BIO> bio = safe_ptr(BIO_new_file(fileName.c_str(), "r"));
    if (!bio) {
        OpenSSLException::throw_message("BIO_new_file()", "DiffieHellmanParams", __LINE__, __func__);
    }
    return own(loadFromPEM(bio));
}

std::unique_ptr<DiffieHellmanParams> DiffieHellmanParams::generate(unsigned int generator,
                                                                   unsigned int bits) {
    abortUnlessKnown(generator);
    const ErrorQueueMark mark;
    std::shared_ptr<DH> dh = newGroup(generator, bits);
    if (!dh || !isUsable(dh.get())) {
        throw VORLException("failed DH generation");
    }
    return own(std::move(dh));
}

std::unique_ptr<DiffieHellmanParams> DiffieHellmanParams::generate(unsigned int bits) {
    return generate(5, bits);
}

std::unique_ptr<DiffieHellmanParams> DiffieHellmanParams::generate() {
    return generate(5, 512);
}

void DiffieHellmanParams::encode(Buffer& out) const {
    const DhNumbers numbers = numbersOf(dh_.get());
    WholeAppend append(out);
    out.put(OctetString(BigNum(numbers.p).encode()));
    out.put(OctetString(BigNum(numbers.g).encode()));
    append.complete();
}

std::unique_ptr<DiffieHellmanParams> DiffieHellmanParams::decode(Buffer& in) {
    const BigNum p(in.nextOctetString().toByteArray());
    const BigNum g(in.nextOctetString().toByteArray());
    std::shared_ptr<DH> dh = safe_ptr(DH_new());
    if (!dh) {
        OpenSSLException::throw_message("Unable to create DH using DH_new()", "DiffieHellmanParams", __LINE__,
                                        __func__);
    }
    OwnedNumber prime = copyOf(p.getBIGNUM());
    if (!prime) {
        OpenSSLException::throw_message("Unable to duplicate DH prime using BN_dup()", "DiffieHellmanParams",
                                        __LINE__, __func__);
    }
    OwnedNumber generator = copyOf(g.getBIGNUM());
    if (!generator) {
        OpenSSLException::throw_message("Unable to duplicate DH generator using BN_dup()",
                                        "DiffieHellmanParams", __LINE__, __func__);
    }
    setGroup(dh.get(), std::move(prime), std::move(generator));
    return own(std::move(dh));
}

bool DiffieHellmanParams::operator==(const DiffieHellmanParams& other) const {
    if (this == &other) {
        return true;
    }
    const DhNumbers mine = numbersOf(dh_.get());
    const DhNumbers theirs = numbersOf(other.dh_.get());
    return BN_cmp(mine.p, theirs.p) == 0 && BN_cmp(mine.g, theirs.g) == 0;
}

std::string DiffieHellmanParams::toString() const {
    const DhNumbers numbers = numbersOf(dh_.get());
    return "Diffie-Hellman-Parameters:\n" + BigNum(numbers.p).toFormatString("prime") +
           BigNum(numbers.g).toFormatString("generator");
}

DiffieHellmanParams::DiffieHellmanParams(Owned /*tag*/, std::shared_ptr<DH> dh) : dh_(std::move(dh)) {}

std::unique_ptr<DiffieHellmanParams> DiffieHellmanParams::own(std::shared_ptr<DH> dh) {
    return std::unique_ptr<DiffieHellmanParams>(new DiffieHellmanParams(Owned(), std::move(dh)));
}

void DiffieHellmanParams::initObj(const unsigned char* data, std::size_t len) {
    if (data == nullptr) {
        throw VORLException("DiffieHellmanParams::initObj() data param is null");
    }
    const unsigned char* ptr = data;
    // OpenSSL counts in longs.
    if (len <= static_cast<std::uint64_t>(std::numeric_limits<long>::max())) {
        dh_ = safe_ptr(d2i_DHparams(nullptr, &ptr, static_cast<long>(len)));
    }
    if (!dh_) {
        OpenSSLException::throw_message("d2i_DHparams(&dh_, &ptr, len)", "DiffieHellmanParams", __LINE__,
                                        __func__);
    }
}

}  // namespace vorl
