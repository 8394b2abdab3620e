#include "vorl/ASN1BlockEncodable.h"

#include "WholeAppend.h"
#include "block_content.h"
#include "index32.h"
#include "length_determinant.h"
#include "vorl/ASN1Exception.h"
#include "vorl/Buffer.h"
#include "vorl/Env.h"
#include "vorl/Util.h"

#include <algorithm>
#include <cstdint>

// A block, fragment by fragment (see length_determinant.h):
//
//   determinant   1 or 2 bytes   how many units follow, and whether they are the last
//   content       the units      whole bytes, the last one perhaps used in part

namespace vorl {

namespace {

void checkUnitSize(unsigned int unitSize) {
    if (!Util::isPowerOf2(unitSize)) {
        throw ASN1Exception("unit size(" + std::to_string(unitSize) + ") is not a power of 2");
    }
    // Never reached, since 0 is no power of 2; the order of the two is what callers see.
    if (unitSize == 0) {
        throw ASN1Exception("unit size must be non-zero");
    }
}

// The bits of the content beyond its units. More than a unit of them, or fewer bits than the units take,
// which wraps around to a very large number, is a content that does not belong to this length.
std::uint64_t spareBits(std::uint64_t dataBits, std::uint64_t objBits, unsigned int unitSize) {
    const std::uint64_t spare = dataBits - objBits;
    if (spare > unitSize) {
        throw ASN1Exception("data bit length(" + std::to_string(dataBits) + ") - ASN.1 obj bit length(" +
                            std::to_string(objBits) + ") > unit size(" + std::to_string(unitSize) + ")");
    }
    return spare;
}

// Where the content bytes of one fragment lie.
struct Span {
    std::uint64_t start;
    std::uint64_t count;
};

// The encoder turns units into bytes with (unitSize * units) / 8, but places a fragment, and sizes a full
// one, with (8 * units) / unitSize. The two agree for octets, the only unit in use; both ends have it so.
Span spanOf(const Fragment& fragment, std::uint64_t done, unsigned int unitSize, bool hasSpare) {
    const std::uint64_t start = 8 * done / unitSize;
    if (!fragment.last) {
        return {start, std::uint64_t{8} * fragment.units / unitSize};
    }
    const bool twoBytes = determinantOf(fragment).size == 2;
    return {start, std::uint64_t{unitSize} * fragment.units / 8 + (twoBytes && hasSpare ? 1 : 0)};
}

}  // namespace

std::string ASN1BlockEncodable::toFormatString(const std::string& name, unsigned int width,
                                               unsigned int level, const std::string& separator,
                                               unsigned int indentSize) const {
    return Util::toFormatHexString(toByteArray(), name, width, level, separator, indentSize);
}

std::string ASN1BlockEncodable::toString() const {
    const Env& env = *Env::instance();
    return toFormatString(getName(), env.fmtWidth(), env.fmtLevel(), env.fmtSeparator(), env.fmtIndentSize());
}

void ASN1BlockEncodable::encode(Buffer& b) const {
    const unsigned int unit = unitSize();
    checkUnitSize(unit);
    const bytes data = toByteArray();
    const std::uint64_t units = unitLength();
    const bool hasSpare = spareBits(std::uint64_t{8} * data.size(), unit * units, unit) != 0;

    // All is checked before the first byte is written, so that a refusal leaves `b` as it was.
    std::uint64_t end = b.widx();
    std::uint64_t done = 0;
    for (Fragment fragment{}; done < units; done += fragment.units) {
        fragment = nextFragment(units - done);
        const Span span = spanOf(fragment, done, unit, hasSpare);
        if (span.start + span.count > data.size()) {
            refuseShortContent(span.count, data.size() - std::min<std::uint64_t>(span.start, data.size()));
        }
        end += determinantOf(fragment).size + span.count;
    }
    index32(end, "ASN1BlockEncodable: an index would pass 2^32-1");

    WholeAppend append(b);
    // No unit, no encoding: not even a zero length, and none to close a multiple of 16384 either.
    done = 0;
    for (Fragment fragment{}; done < units; done += fragment.units) {
        fragment = nextFragment(units - done);
        const LengthDeterminant determinant = determinantOf(fragment);
        const Span span = spanOf(fragment, done, unit, hasSpare);
        b.put(determinant.octets, determinant.size);
        b.put(data.data() + span.start, static_cast<unsigned int>(span.count));
    }
    append.complete();
}

void ASN1BlockEncodable::decode(Buffer& b) {
    const unsigned int unit = unitSize();
    checkUnitSize(unit);
    setVal(readBlockContent(b, unit));
}

unsigned int ASN1BlockEncodable::byteLength() const {
    return index32((std::uint64_t{unitSize()} * unitLength() + 7) / 8, "ASN1BlockEncodable: byte length");
}

}  // namespace vorl
