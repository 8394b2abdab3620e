#include "octet_runs.h"

#include "length_determinant.h"
#include "vorl/ASN1Exception.h"
#include "vorl/Buffer.h"

#include <algorithm>
#include <cstddef>

namespace vorl {

std::vector<OctetRun> readOctetRuns(Buffer& in) {
    std::vector<OctetRun> runs;
    // Room for all fragments at once: every one but the last takes 16384 octets and more.
    runs.reserve((in.widx() - in.ridx()) / 16384 + 1);
    Fragment fragment{};
    do {
        fragment = readFragment(in);
        runs.push_back({in.ridx(), fragment.units});
        const unsigned int available = in.skip(fragment.units);
        if (available < fragment.units) {
            refuseShortContent(fragment.units, available);
        }
    } while (!fragment.last);
    return runs;
}

bytes joinOctetRuns(bytes store, const std::vector<OctetRun>& runs) {
    std::size_t joined = 0;
    for (const OctetRun& run : runs) {
        const auto from = store.begin() + run.offset;
        std::copy(from, from + run.octets, store.begin() + static_cast<std::ptrdiff_t>(joined));
        joined += run.octets;
    }
    store.resize(joined);
    return store;
}

}  // namespace vorl
