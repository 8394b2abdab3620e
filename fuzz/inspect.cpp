// The tool's inspection on any input: nothing is thrown, every byte of a record is accounted for, in order
// and once, and the tool and the library agree on whether the record holds.

#include "require.h"

#include "inspect/inspect_bytes.h"
#include "vorl/VORLLib.h"

#include <cstddef>
#include <cstdint>

namespace vorl::fuzz {

void inspectAnything(const bytes& input) {
    static const bool started = (VORLLib::init(), true);
    require(started, "the library starts");

    const tool::Report report = tool::inspectBytes(input);
    require(report.agreesWithLibrary, "the tool and the library agree");
    require(report.inputBytes == input.size(), "the input is counted");
    std::uint64_t end = 0;
    for (const tool::Field& field : report.fields) {
        require(field.offset == end, "the fields follow each other");
        require(field.head.size() <= field.length, "no more is shown of a field than it has");
        end += field.length;
    }
    require(report.fields.empty() || end == report.recordBytes, "the fields are the whole record");
}

}  // namespace vorl::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    vorl::fuzz::inspectAnything(vorl::bytes(data, data + size));
    return 0;
}
