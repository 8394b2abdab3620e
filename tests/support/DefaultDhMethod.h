#ifndef VORL_TESTS_DEFAULTDHMETHOD_H
#define VORL_TESTS_DEFAULTDHMETHOD_H

#include <openssl/dh.h>

namespace vorl::test {

/// While it lives, each new DH takes its method from here, which is OpenSSL's own until a test changes it:
/// for what OpenSSL does too seldom, or never, of its own accord.
class DefaultDhMethod {
public:
    DefaultDhMethod() : old_(DH_get_default_method()), method_(DH_meth_dup(old_)) {
        DH_set_default_method(method_);
    }
    ~DefaultDhMethod() {
        DH_set_default_method(old_);
        DH_meth_free(method_);
    }
    DefaultDhMethod(const DefaultDhMethod&) = delete;
    DefaultDhMethod& operator=(const DefaultDhMethod&) = delete;

    DH_METHOD* method() const { return method_; }

private:
    const DH_METHOD* const old_;
    DH_METHOD* const method_;
};

}  // namespace vorl::test

#endif
