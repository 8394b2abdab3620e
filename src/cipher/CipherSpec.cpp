#include "vorl/CipherSpec.h"

#include "core/blanks.h"
#include "mode_text.h"
#include "vorl/CipherAlgo.h"
#include "vorl/Env.h"
#include "vorl/PaddingType.h"

#include <tarvik/crypto/ICipherContext.h>

#include <openssl/evp.h>

#include <cstdint>
#include <utility>

namespace vorl {

using tarvik::crypto::ICipherContext;

CipherSpec::CipherSpec(ICipherContext::Spec theSpec, std::shared_ptr<const CipherAlgo> theAlgo,
                       std::shared_ptr<const CipherMode> theMode,
                       std::shared_ptr<const PaddingType> thePadding, unsigned int keyBytes,
                       unsigned int blockBytes, unsigned int ivBytes, const EVP_CIPHER* theEvpCipher)
    : spec(theSpec),
      algo(std::move(theAlgo)),
      mode(std::move(theMode)),
      padding(std::move(thePadding)),
      keySize(keyBytes),
      blockSize(blockBytes),
      ivSize(ivBytes),
      evpCipher(theEvpCipher) {}

std::shared_ptr<const CipherSpec> CipherSpec::NULL_CIPHER() {
    static const auto& instance = *new auto(
        std::make_shared<const CipherSpec>(ICipherContext::SPEC_NULL, CipherAlgo::NULL_CIPHER(),
                                           CipherMode::NONE(), PaddingType::NONE(), 0, 0, 0, nullptr));
    return instance;
}

std::shared_ptr<const CipherSpec> CipherSpec::AES_128_ECB_PKCS5() {
    static const auto& instance = *new auto(std::make_shared<const CipherSpec>(
        ICipherContext::SPEC_AES_128_ECB, CipherAlgo::AES(), CipherMode::ECB(), PaddingType::PKCS5Padding(),
        16, 16, 0, EVP_aes_128_ecb()));
    return instance;
}

std::shared_ptr<const CipherSpec> CipherSpec::AES_128_CBC_PKCS5() {
    static const auto& instance = *new auto(std::make_shared<const CipherSpec>(
        ICipherContext::SPEC_AES_128_CBC, CipherAlgo::AES(), CipherMode::CBC(), PaddingType::PKCS5Padding(),
        16, 16, 16, EVP_aes_128_cbc()));
    return instance;
}

bool CipherSpec::operator==(const CipherSpec& other) const {
    return this == &other ||
           (algo == other.algo && mode == other.mode && padding == other.padding &&
            keySize == other.keySize && blockSize == other.blockSize && ivSize == other.ivSize);
}

std::string CipherSpec::toString() const {
    return "[CipherSpec:" + algo->name + "_" + std::to_string(std::uint64_t{keySize} * 8) + "_" +
           modeText(*mode) + "_" + padding->name + "]";
}

std::string CipherSpec::toFormatString(unsigned int /*width*/, unsigned int level,
                                       const std::string& /*separator*/, unsigned int indentSize) const {
    const std::string indent = indentOf(level, indentSize);
    std::string text;
    for (const std::string& line :
         {"CipherSpec (" + toString() + "):", "Cipher Algo:  " + algo->name,
          "Cipher Mode:  " + modeText(*mode), "Padding:  " + padding->name,
          "Key Size:  " + std::to_string(keySize), "Block Size:  " + std::to_string(blockSize),
          "IV Size:  " + std::to_string(ivSize)}) {
        text += indent + line + "\n";
    }
    return text;
}

std::string CipherSpec::toFormatString(unsigned int width, unsigned int level) const {
    const Env& env = *Env::instance();
    return toFormatString(width, level, env.fmtSeparator(), env.fmtIndentSize());
}

}  // namespace vorl
