#ifndef VORL_CORE_WIPEUNLESSKEPT_H
#define VORL_CORE_WIPEUNLESSKEPT_H

#include "vorl/bytes.h"

#include <openssl/crypto.h>

namespace vorl {

/// Wipes secret bytes at the end of the scope, unless told that they have become the result.
class WipeUnlessKept {
public:
    explicit WipeUnlessKept(bytes& storage) : storage_(storage) {}
    ~WipeUnlessKept() {
        if (!kept_) {
            OPENSSL_cleanse(storage_.data(), storage_.size());
        }
    }
    WipeUnlessKept(const WipeUnlessKept&) = delete;
    WipeUnlessKept& operator=(const WipeUnlessKept&) = delete;

    void keep() { kept_ = true; }

private:
    bytes& storage_;
    bool kept_ = false;
};

}  // namespace vorl

#endif
