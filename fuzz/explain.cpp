// The checks of a receiver on any record: nothing is thrown, at most one check refuses, and the library
// refuses in the same place. The first byte says what the record is taken for, and who receives it.

#include "dh_group.h"
#include "require.h"

#include "explain/records.h"
#include "vorl/DiffieHellmanParams.h"
#include "vorl/VORLLib.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace vorl::fuzz {

const DiffieHellmanParams& group() {
    static const DiffieHellmanParams params(test::rawDh(test::RFC_2409_GROUP));
    return params;
}

tool::Explanation explained(unsigned int choice, const bytes& record) {
    const tool::Explained input = {record, record, std::nullopt};
    switch (choice % 8) {
        case 0:
            if ((choice & 8U) == 0) {
                return explainDhRecord(input);
            }
            return explainDhRecord(input, tool::PeerGroup{group(), (choice & 16U) != 0});
        case 1:
            return explainSignature(input);
        default:
            break;
    }
    for (std::size_t i = 0; i < tool::levels().size(); ++i) {
        VORLLib::setAllowedEncryptionType(tool::levels()[i].type, (choice >> (5 + i) & 1U) == 0);
    }
    return explainEnvelope(input, tool::levels()[choice % 8 % tool::levels().size()], nullptr);
}

void explainAnything(unsigned int choice, const bytes& record) {
    static const bool started = (VORLLib::init(), true);
    require(started, "the library starts");
    const tool::Explanation explanation = explained(choice, record);
    require(explanation.agreesWithLibrary, "the tool and the library agree");
    const auto refusals =
        std::count_if(explanation.steps.begin(), explanation.steps.end(),
                      [](const tool::Step& step) { return step.outcome == tool::Outcome::REFUSES; });
    require(refusals == (explanation.refusing() == nullptr ? 0 : 1), "one check refuses at the most");
    require(refusals == 0 || explanation.refusing()->offset.value() <= record.size(),
            "a refusal is within the record");
}

}  // namespace vorl::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // An empty input never comes to be a record: the tool refuses it before.
    if (size > 1) {
        vorl::fuzz::explainAnything(data[0], vorl::bytes(data + 1, data + size));
    }
    return 0;
}
