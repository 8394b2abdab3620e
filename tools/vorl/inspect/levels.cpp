#include "inspect/levels.h"

#include "vorl/CipherSpec.h"
#include "vorl/CipherWrapper.h"
#include "vorl/EncryptionType.h"

#include <algorithm>

namespace vorl::tool {

unsigned char Level::version() const {
    return type->wrapper->id();
}

const CipherSpec& Level::spec() const {
    // Specs are named objects that live as long as the process.
    return *type->wrapper->getCipherSpec();
}

const std::vector<Level>& levels() {
    static const std::vector<Level> all = {
        {"full", "AES-128-CBC with a random IV, PKCS#5 padding", EncryptionType::FULL_CIPHER()},
        {"test", "AES-128-ECB, PKCS#5 padding: equal blocks stay visible", EncryptionType::TEST_CIPHER()},
        {"none", "not encrypted", EncryptionType::NULL_CIPHER()},
    };
    return all;
}

const Level* levelOfVersion(unsigned char version) {
    const auto level = std::find_if(levels().begin(), levels().end(),
                                    [version](const Level& each) { return each.version() == version; });
    return level != levels().end() ? &*level : nullptr;
}

}  // namespace vorl::tool
