#include "OctetRuns.h"

#include "length_determinant.h"
#include "vorl/Buffer.h"

#include <algorithm>

namespace vorl {

namespace {

OctetRun passOver(Buffer& in, const Fragment& fragment) {
    const OctetRun run{in.ridx(), fragment.units};
    const unsigned int available = in.skip(fragment.units);
    if (available < fragment.units) {
        refuseShortContent(fragment.units, available);
    }
    return run;
}

}  // namespace

OctetRuns::OctetRuns(Buffer& in) {
    Fragment fragment = readFragment(in);
    first_ = passOver(in, fragment);
    octets_ += first_.octets;
    if (!fragment.last) {
        // Room for all at once: every fragment but the last holds this much at the least.
        further_.reserve((in.widx() - in.ridx()) / LONG_FORM_LIMIT + 1);
    }
    while (!fragment.last) {
        fragment = readFragment(in);
        further_.push_back(passOver(in, fragment));
        octets_ += fragment.units;
    }
}

void OctetRuns::copyFrom(const Buffer& in, unsigned char* dst) const {
    unsigned char* to = dst;
    forEach([&](const OctetRun& run) { to = std::copy_n(in.data_.data() + run.offset, run.octets, to); });
}

bytes OctetRuns::joinIn(bytes store) const {
    unsigned char* joined = store.data();
    forEach(
        [&](const OctetRun& run) { joined = std::copy_n(store.data() + run.offset, run.octets, joined); });
    store.resize(octets_);
    return store;
}

}  // namespace vorl
