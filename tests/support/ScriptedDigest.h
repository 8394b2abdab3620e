#ifndef VORL_TESTS_SCRIPTEDDIGEST_H
#define VORL_TESTS_SCRIPTEDDIGEST_H

#include "vorl/DigestAlgo.h"

#include <openssl/err.h>
#include <openssl/evp.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <stdexcept>

namespace vorl::test {

/// A digest that an application has made itself, whose calls return what a test tells them to, and leave an
/// error in the queue where that is 0. Its value is always 16 octets 0xd1. One at a time.
class ScriptedDigest {
public:
    ScriptedDigest() : md_(EVP_MD_meth_new(NID_undef, NID_undef), EVP_MD_meth_free) {
        script() = this;
        if (!md_ || EVP_MD_meth_set_result_size(md_.get(), VALUE_BYTES) != 1 ||
            EVP_MD_meth_set_input_blocksize(md_.get(), 64) != 1 ||
            EVP_MD_meth_set_app_datasize(md_.get(), 1) != 1 || EVP_MD_meth_set_init(md_.get(), init) != 1 ||
            EVP_MD_meth_set_update(md_.get(), update) != 1 || EVP_MD_meth_set_final(md_.get(), final) != 1) {
            throw std::runtime_error("ScriptedDigest");
        }
    }
    ~ScriptedDigest() { script() = nullptr; }
    ScriptedDigest(const ScriptedDigest&) = delete;
    ScriptedDigest& operator=(const ScriptedDigest&) = delete;

    std::shared_ptr<const DigestAlgo> algo() const {
        return std::make_shared<const DigestAlgo>("Scripted", NID_undef, md_.get());
    }

    int initResult = 1;
    int updateResult = 1;
    int finalResult = 1;
    /// How many calls of final succeed before finalResult counts.
    int goodFinals = 0;
    /// Octets that came in, in all.
    std::size_t fed = 0;

private:
    static const int VALUE_BYTES = 16;

    static ScriptedDigest*& script() {
        static ScriptedDigest* current = nullptr;
        return current;
    }
    static int answer(int result) {
        if (result == 0) {
            ERR_put_error(ERR_LIB_USER, 0, 43, "digest", 1);
        }
        return result;
    }
    static int init(EVP_MD_CTX* /*ctx*/) { return answer(script()->initResult); }
    static int update(EVP_MD_CTX* /*ctx*/, const void* /*data*/, std::size_t size) {
        script()->fed += size;
        return answer(script()->updateResult);
    }
    static int final(EVP_MD_CTX* /*ctx*/, unsigned char* out) {
        std::fill_n(out, VALUE_BYTES, static_cast<unsigned char>(0xd1));
        return script()->goodFinals-- > 0 ? 1 : answer(script()->finalResult);
    }

    std::unique_ptr<EVP_MD, decltype(&EVP_MD_meth_free)> md_;
};

}  // namespace vorl::test

#endif
