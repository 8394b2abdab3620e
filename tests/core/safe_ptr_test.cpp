#include "vorl/safe_ptr.h"

#include "OpenSSLMemory.h"
#include "OperatorNew.h"

#include <gtest/gtest.h>
#include <openssl/bio.h>
#include <openssl/bn.h>
#include <openssl/dh.h>
#include <openssl/dsa.h>
#include <openssl/evp.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>

#include <memory>
#include <new>
#include <string>
#include <type_traits>

// What is freed is seen from below: OpenSSL takes its memory from functions of the test.

namespace vorl::test {
namespace {

// For each type: an object that owns others, so that only the type's own free function gives back all of
// it; and OpenSSL's own count of owners, where the type has one.

BIGNUM* number() {
    BIGNUM* bn = BN_new();
    BN_set_bit(bn, 1000);
    return bn;
}

struct X509Row {
    static constexpr const char* NAME = "X509";
    static X509* make() {
        X509* p = X509_new();
        ASN1_INTEGER_set(X509_get_serialNumber(p), 42);
        return p;
    }
    static int upRef(X509* p) { return X509_up_ref(p); }
    static void free(X509* p) { X509_free(p); }
};

struct DSARow {
    static constexpr const char* NAME = "DSA";
    static DSA* make() {
        DSA* p = DSA_new();
        DSA_set0_pqg(p, number(), number(), number());
        return p;
    }
    static int upRef(DSA* p) { return DSA_up_ref(p); }
    static void free(DSA* p) { DSA_free(p); }
};

struct RSARow {
    static constexpr const char* NAME = "RSA";
    static RSA* make() {
        RSA* p = RSA_new();
        RSA_set0_key(p, number(), number(), nullptr);
        return p;
    }
    static int upRef(RSA* p) { return RSA_up_ref(p); }
    static void free(RSA* p) { RSA_free(p); }
};

struct DHRow {
    static constexpr const char* NAME = "DH";
    static DH* make() {
        DH* p = DH_new();
        DH_set0_pqg(p, number(), nullptr, number());
        return p;
    }
    static int upRef(DH* p) { return DH_up_ref(p); }
    static void free(DH* p) { DH_free(p); }
};

struct EVP_PKEYRow {
    static constexpr const char* NAME = "EVP_PKEY";
    static EVP_PKEY* make() {
        EVP_PKEY* p = EVP_PKEY_new();
        EVP_PKEY_assign_RSA(p, RSARow::make());
        return p;
    }
    static int upRef(EVP_PKEY* p) { return EVP_PKEY_up_ref(p); }
    static void free(EVP_PKEY* p) { EVP_PKEY_free(p); }
};

struct BIORow {
    static constexpr const char* NAME = "BIO";
    static BIO* make() {
        BIO* p = BIO_new(BIO_s_mem());
        BIO_puts(p, "some text in the memory of the BIO");
        return p;
    }
    static int upRef(BIO* p) { return BIO_up_ref(p); }
    static void free(BIO* p) { BIO_free(p); }
};

struct BIGNUMRow {
    static constexpr const char* NAME = "BIGNUM";
    static BIGNUM* make() { return number(); }
    static void free(BIGNUM* p) { BN_free(p); }
};

template <typename Row>
class SafePtr : public ::testing::Test {
protected:
    using Object = std::remove_pointer_t<decltype(Row::make())>;

    void SetUp() override {
        ASSERT_TRUE(openssl_memory::isOurs());
        // What OpenSSL sets up with the first object of a kind stays, and is not to be counted.
        Row::free(Row::make());
        before_ = openssl_memory::liveBlocks();
    }

    long liveBlocks() const { return openssl_memory::liveBlocks() - before_; }

private:
    long before_ = 0;
};

using Rows = ::testing::Types<X509Row, DSARow, RSARow, DHRow, EVP_PKEYRow, BIORow, BIGNUMRow>;

struct RowNames {
    template <typename Row>
    static std::string GetName(int) {
        return Row::NAME;
    }
};

TYPED_TEST_SUITE(SafePtr, Rows, RowNames);

TYPED_TEST(SafePtr, OwnsTheObjectUntilTheLastOwnerIsGone) {
    auto* const object = TypeParam::make();
    FreeWatch watch(object);
    {
        std::shared_ptr<typename TestFixture::Object> first = safe_ptr(object);
        EXPECT_EQ(first.get(), object);
        const auto second = first;
        first.reset();
        EXPECT_EQ(watch.frees(), 0);
        EXPECT_GT(this->liveBlocks(), 0);
    }
    EXPECT_EQ(watch.frees(), 1);
    EXPECT_EQ(this->liveBlocks(), 0) << "a part of the object was not freed";
}

TYPED_TEST(SafePtr, PassesANullPointerOn) {
    {
        const auto none = safe_ptr(static_cast<typename TestFixture::Object*>(nullptr));
        EXPECT_EQ(none.get(), nullptr);
    }
    EXPECT_EQ(this->liveBlocks(), 0);
}

// Whether it failed for want of memory, as it should when there is none for the shared count.
template <typename Object>
bool cannotBeShared(Object* object) {
    const OperatorNew failing(0);
    try {
        safe_ptr(object);
    } catch (const std::bad_alloc&) {
        return true;
    }
    return false;
}

TYPED_TEST(SafePtr, FreesTheObjectOnceWhereItCannotBeShared) {
    auto* const object = TypeParam::make();
    FreeWatch watch(object);

    EXPECT_TRUE(cannotBeShared(object));
    EXPECT_EQ(watch.frees(), 1);
    EXPECT_EQ(this->liveBlocks(), 0) << "a part of the object was not freed";
}

template <typename Row>
class SafePtrOfCounted : public SafePtr<Row> {};

using CountedRows = ::testing::Types<X509Row, DSARow, RSARow, DHRow, EVP_PKEYRow, BIORow>;
TYPED_TEST_SUITE(SafePtrOfCounted, CountedRows, RowNames);

TYPED_TEST(SafePtrOfCounted, GivesUpOneOfTheOwnersThatOpenSSLCounts) {
    auto* const object = TypeParam::make();
    FreeWatch watch(object);
    ASSERT_EQ(TypeParam::upRef(object), 1);

    safe_ptr(object).reset();
    EXPECT_EQ(watch.frees(), 0) << "another owner is left";
    EXPECT_GT(this->liveBlocks(), 0);

    TypeParam::free(object);
    EXPECT_EQ(watch.frees(), 1);
    EXPECT_EQ(this->liveBlocks(), 0);
}

// A second free would go unnoticed by an object that nobody owns any more, but not by its other owner.
TYPED_TEST(SafePtrOfCounted, GivesUpOneOfTheOwnersWhereItCannotBeShared) {
    auto* const object = TypeParam::make();
    FreeWatch watch(object);
    ASSERT_EQ(TypeParam::upRef(object), 1);

    EXPECT_TRUE(cannotBeShared(object));
    EXPECT_EQ(watch.frees(), 0) << "freed twice";
    EXPECT_GT(this->liveBlocks(), 0);

    TypeParam::free(object);
    EXPECT_EQ(watch.frees(), 1);
    EXPECT_EQ(this->liveBlocks(), 0);
}

}  // namespace
}  // namespace vorl::test
