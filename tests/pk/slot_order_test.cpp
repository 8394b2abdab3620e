#include "vtable_slot.h"

#include "vorl/Buffer.h"
#include "vorl/OpenSSLPKey.h"
#include "vorl/PKSignature.h"
#include "vorl/PKSignature01.h"
#include "vorl/PKSignatureProcessor.h"
#include "vorl/PrivKey.h"
#include "vorl/PubKey.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>
#include <typeinfo>

// Devices are built against the order of the virtual operations.
//
//   OpenSSLPKey            0 toFormatString   1 toString             2, 3 destructor
//   PKSignature            0 toFormatString   1 toString             2, 3 destructor
//                          4 version          5 algo                 6 val             7 encode
//   PKSignatureProcessor   0 initSign         1 initVerify(PubKey)   2 update          3 sign
//                          4 verify           5, 6 destructor

namespace vorl::test {
namespace {

template <typename Class>
void expectTheSlotsOfAKey() {
    SCOPED_TRACE(typeid(Class).name());
    static_assert(std::has_virtual_destructor_v<Class>);
    EXPECT_EQ(vtableSlot(&Class::toFormatString), 0);
    EXPECT_EQ(vtableSlot(&Class::toString), 1);
    EXPECT_EQ(vtableSlot(&WithOneMore<Class>::oneMore), 4);
}

TEST(SlotOrder, OfKeysIsTextsAndDestructor) {
    expectTheSlotsOfAKey<OpenSSLPKey>();
    expectTheSlotsOfAKey<PubKey>();
    expectTheSlotsOfAKey<PrivKey>();
}

template <typename Class>
void expectTheSlotsOfASignature() {
    SCOPED_TRACE(typeid(Class).name());
    static_assert(std::has_virtual_destructor_v<Class>);
    EXPECT_EQ(vtableSlot(&Class::toFormatString), 0);
    EXPECT_EQ(vtableSlot(&Class::toString), 1);
    EXPECT_EQ(vtableSlot(&Class::version), 4);
    EXPECT_EQ(vtableSlot(&Class::algo), 5);
    EXPECT_EQ(vtableSlot(&Class::val), 6);
    EXPECT_EQ(vtableSlot(static_cast<void (Class::*)(Buffer&) const>(&Class::encode)), 7);
    EXPECT_EQ(vtableSlot(static_cast<bytes (Class::*)() const>(&Class::encode)), -1);
    EXPECT_EQ(vtableSlot(&WithOneMore<Class>::oneMore), 8);
}

TEST(SlotOrder, OfSignaturesGoesOnBehindTheDestructor) {
    expectTheSlotsOfASignature<PKSignature>();
    expectTheSlotsOfASignature<PKSignature01>();
}

TEST(SlotOrder, OfTheProcessorEndsWithTheDestructor) {
    using P = PKSignatureProcessor;
    using KeyPtr = const std::shared_ptr<const PubKey>&;
    using CertPtr = const std::shared_ptr<const X509Cert>&;
    using ConstSignature = std::shared_ptr<const PKSignature>;
    static_assert(std::has_virtual_destructor_v<P>);

    EXPECT_EQ(vtableSlot(&P::initSign), 0);
    EXPECT_EQ(vtableSlot(static_cast<void (P::*)(KeyPtr)>(&P::initVerify)), 1);
    EXPECT_EQ(vtableSlot(&P::update), 2);
    EXPECT_EQ(vtableSlot(static_cast<ConstSignature (P::*)()>(&P::sign)), 3);
    EXPECT_EQ(vtableSlot(static_cast<bool (P::*)(const ConstSignature&)>(&P::verify)), 4);
    EXPECT_EQ(vtableSlot(&WithOneMore<P>::oneMore), 7);
    EXPECT_EQ(vtableSlot(static_cast<void (P::*)(CertPtr)>(&P::initVerify)), -1);
}

// Which operations a class has of its own.
static_assert(std::is_same_v<decltype(&PubKey::toString), std::string (PubKey::*)() const>);
static_assert(std::is_same_v<decltype(&PrivKey::toString), std::string (PrivKey::*)() const>);
static_assert(std::is_same_v<decltype(&PubKey::toFormatString),
                             std::string (PubKey::*)(const std::string&, unsigned int, unsigned int,
                                                     const std::string&, unsigned int) const>);
static_assert(std::is_same_v<decltype(&PrivKey::toFormatString),
                             std::string (PrivKey::*)(const std::string&, unsigned int, unsigned int,
                                                      const std::string&, unsigned int) const>);
static_assert(std::is_same_v<decltype(&PKSignature01::toString), decltype(&PKSignature::toString)>);

}  // namespace
}  // namespace vorl::test
