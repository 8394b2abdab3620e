#include "vorl/Cipher.h"

#include "octets.h"
#include "vorl/CipherAlgo.h"
#include "vorl/CipherMode.h"
#include "vorl/CipherSpec.h"
#include "vorl/NullCipher.h"
#include "vorl/PaddingType.h"
#include "vorl/SoftwareKeyCipher.h"
#include "vtable_slot.h"

#include <gtest/gtest.h>

#include <memory>
#include <type_traits>

namespace vorl::test {

namespace {

using tarvik::crypto::ICipherContext;

// The least that a device's cipher has to supply.
class DeviceCipher : public Cipher {
public:
    explicit DeviceCipher(std::shared_ptr<const CipherSpec> spec) : Cipher(std::move(spec)) {}
    void encryptInit(const bytes& /*iv*/) override {}
    void decryptInit(const bytes& /*iv*/) override {}
    bytes update(const bytes& data) override { return data; }
    bytes final() override { return bytes(); }

    std::shared_ptr<const CipherSpec> spec() const { return spec_; }
};

std::shared_ptr<const CipherSpec> specOf(unsigned int number) {
    return std::make_shared<const CipherSpec>(static_cast<ICipherContext::Spec>(number), CipherAlgo::AES(),
                                              CipherMode::CBC(), PaddingType::NONE(), 16, 16, 16, nullptr);
}

}  // namespace

TEST(Cipher, IsAnAbstractCipherContext) {
    EXPECT_TRUE(std::is_abstract_v<Cipher>);
    EXPECT_TRUE((std::is_base_of_v<ICipherContext, Cipher>));
    EXPECT_TRUE(std::has_virtual_destructor_v<Cipher>);
}

TEST(Cipher, AddsNoVirtualOperation) {
    EXPECT_EQ(vtableSlot(&WithOneMore<Cipher>::oneMore), 7);
    EXPECT_EQ(vtableSlot(&WithOneMore<NullCipher>::oneMore), 7);
    EXPECT_EQ(vtableSlot(&WithOneMore<SoftwareKeyCipher>::oneMore), 7);
}

TEST(Cipher, IdIsThatOfItsSpec) {
    for (const unsigned int number : {0U, 1U, 2U, 3U, 0x7fffffffU, 0xffffffffU}) {
        DeviceCipher cipher(specOf(number));
        EXPECT_EQ(static_cast<unsigned int>(cipher.id()), number);
        EXPECT_EQ(static_cast<unsigned int>(static_cast<ICipherContext&>(cipher).id()), number);
    }
}

TEST(Cipher, KeepsItsSpecAlive) {
    std::weak_ptr<const CipherSpec> watched;
    {
        auto spec = specOf(9);
        watched = spec;
        DeviceCipher cipher(std::move(spec));
        EXPECT_EQ(cipher.spec(), watched.lock());
        EXPECT_EQ(static_cast<unsigned int>(cipher.id()), 9U);
    }
    EXPECT_TRUE(watched.expired());
}

TEST(Cipher, IsBoundToTheVerySpecOnlyNotToAnEqualOne) {
    const auto spec = specOf(2);
    const auto equalSpec = specOf(2);
    ASSERT_TRUE(*spec == *equalSpec);
    const DeviceCipher cipher(spec);

    EXPECT_TRUE(cipher.isBoundTo(*spec));
    EXPECT_FALSE(cipher.isBoundTo(*equalSpec));
}

}  // namespace vorl::test
