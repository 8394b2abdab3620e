#include "vtable_slot.h"

#include "vorl/ASN1BlockEncodable.h"
#include "vorl/ASN1Exception.h"
#include "vorl/ASN1Primitive.h"
#include "vorl/FormatPrintable.h"
#include "vorl/NullParamException.h"
#include "vorl/OctetString.h"
#include "vorl/OpenSSLException.h"
#include "vorl/UInt16.h"
#include "vorl/UInt32.h"
#include "vorl/UInt8.h"
#include "vorl/VORLException.h"

#include <gtest/gtest.h>

#include <type_traits>
#include <typeinfo>

// Devices are built against the order of the virtual operations: a call goes through its slot's number, so
// that one that moves makes an old device call another one.
//
//   FormatPrintable      0 toFormatString   1 toString   2, 3 destructor
//   ASN1Primitive        4 encode           5 decode
//   ASN1BlockEncodable   6 unitSize         7 unitLength   8 byteLength   9 getName   10 setVal
//                        11 toByteArray

namespace vorl::test {
namespace {

class Plain {
public:
    void first() {}
    virtual void second() {}
    virtual ~Plain() = default;
    virtual void fifth() const {}
};

TEST(VtableSlot, CountsVirtualFunctionsAndTwoForADestructor) {
    EXPECT_EQ(vtableSlot(&Plain::first), -1);
    EXPECT_EQ(vtableSlot(&Plain::second), 0);
    EXPECT_EQ(vtableSlot(&Plain::fifth), 3);
}

static_assert(std::has_virtual_destructor_v<FormatPrintable>);

TEST(SlotOrder, FormatPrintableHasItsTextsBeforeTheDestructor) {
    EXPECT_EQ(vtableSlot(&FormatPrintable::toFormatString), 0);
    EXPECT_EQ(vtableSlot(&FormatPrintable::toString), 1);
    EXPECT_EQ(vtableSlot(&WithOneMore<FormatPrintable>::oneMore), 4);
}

TEST(SlotOrder, ASN1PrimitiveAddsItsCodingAfterTheDestructor) {
    EXPECT_EQ(vtableSlot(&ASN1Primitive::toFormatString), 0);
    EXPECT_EQ(vtableSlot(&ASN1Primitive::toString), 1);
    EXPECT_EQ(vtableSlot(&ASN1Primitive::encode), 4);
    EXPECT_EQ(vtableSlot(&ASN1Primitive::decode), 5);
    EXPECT_EQ(vtableSlot(&WithOneMore<ASN1Primitive>::oneMore), 6);
}

// `oneMore` is the slot of an operation that a derived class adds: the class itself has that many.
template <typename Class>
void expectTheSlotsOfAField(int oneMore) {
    SCOPED_TRACE(typeid(Class).name());
    EXPECT_EQ(vtableSlot(&Class::toFormatString), 0);
    EXPECT_EQ(vtableSlot(&Class::toString), 1);
    EXPECT_EQ(vtableSlot(&Class::encode), 4);
    EXPECT_EQ(vtableSlot(&Class::decode), 5);
    EXPECT_EQ(vtableSlot(&WithOneMore<Class>::oneMore), oneMore);
}

TEST(SlotOrder, OfTheFixedWidthFieldsIsThatOfTheBase) {
    expectTheSlotsOfAField<UInt8>(6);
    expectTheSlotsOfAField<UInt16>(6);
    expectTheSlotsOfAField<UInt32>(6);
}

template <typename Class>
void expectTheSlotsOfABlock() {
    expectTheSlotsOfAField<Class>(12);
    SCOPED_TRACE(typeid(Class).name());
    EXPECT_EQ(vtableSlot(&Class::unitSize), 6);
    EXPECT_EQ(vtableSlot(&Class::unitLength), 7);
    EXPECT_EQ(vtableSlot(&Class::byteLength), 8);
    EXPECT_EQ(vtableSlot(&Class::getName), 9);
    EXPECT_EQ(vtableSlot(&Class::setVal), 10);
    EXPECT_EQ(vtableSlot(&Class::toByteArray), 11);
}

TEST(SlotOrder, OfBlocksGoesOnWithSizesNameAndContent) {
    expectTheSlotsOfABlock<ASN1BlockEncodable>();
    expectTheSlotsOfABlock<OctetString>();
}

TEST(SlotOrder, OfExceptionsIsThatOfTheStandards) {
    const int destructorAndWhat = 3;
    EXPECT_EQ(vtableSlot(&WithOneMore<VORLException>::oneMore), destructorAndWhat);
    EXPECT_EQ(vtableSlot(&WithOneMore<NullParamException>::oneMore), destructorAndWhat);
    EXPECT_EQ(vtableSlot(&WithOneMore<ASN1Exception>::oneMore), destructorAndWhat);
    EXPECT_EQ(vtableSlot(&WithOneMore<OpenSSLException>::oneMore), destructorAndWhat);
}

// Of what its base implements, an octet string overrides the printing only.
static_assert(std::is_same_v<decltype(&OctetString::toString), decltype(&ASN1BlockEncodable::toString)>);
static_assert(std::is_same_v<decltype(&OctetString::encode), decltype(&ASN1BlockEncodable::encode)>);
static_assert(std::is_same_v<decltype(&OctetString::decode), decltype(&ASN1BlockEncodable::decode)>);
static_assert(std::is_same_v<decltype(&OctetString::byteLength), decltype(&ASN1BlockEncodable::byteLength)>);

}  // namespace
}  // namespace vorl::test
