#include "shared/digests.h"

#include "shared/CommandOptions.h"
#include "vorl/DigestAlgo.h"

#include <algorithm>
#include <vector>

namespace vorl::tool {

namespace {

std::vector<std::shared_ptr<const DigestAlgo>> digests() {
    return {DigestAlgo::SHA1(), DigestAlgo::SHA224(), DigestAlgo::SHA256(), DigestAlgo::SHA384(),
            DigestAlgo::SHA512()};
}

char upperCase(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

// "sha-256" is as good as "SHA256".
std::string libraryName(std::string name) {
    std::transform(name.begin(), name.end(), name.begin(), upperCase);
    return name.compare(0, 4, "SHA-") == 0 ? "SHA" + name.substr(4) : name;
}

}  // namespace

Option declareDigestName(CommandOptions& command, std::string& name, const std::string& help) {
    const auto take = [&name](const std::string& text) {
        const std::string known = libraryName(text);
        if (digestNamed(known) == nullptr) {
            throw BadValue("'" + text + "' is not SHA1, SHA224, SHA256, SHA384 or SHA512");
        }
        name = known;
    };
    return command.value("-a,--algorithm", "NAME", take, help);
}

std::shared_ptr<const DigestAlgo> digestNamed(const std::string& name) {
    const auto all = digests();
    const auto found =
        std::find_if(all.begin(), all.end(), [&name](const auto& each) { return each->name == name; });
    return found != all.end() ? *found : nullptr;
}

}  // namespace vorl::tool
