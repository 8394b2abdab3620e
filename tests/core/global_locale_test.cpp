#include "GroupedDigits.h"
#include "messageOf.h"
#include "octets.h"

#include "vorl/ASN1Exception.h"
#include "vorl/Buffer.h"
#include "vorl/OctetString.h"
#include "vorl/UInt16.h"
#include "vorl/Util.h"
#include "vorl/VORLException.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

// An application may make any locale the global one; the texts here are compared by programs.

namespace vorl::test {
namespace {

class WithGroupedDigits : public ::testing::Test {
    GroupedDigits grouped_;
};

class Wide : public ASN1BlockEncodable {
public:
    explicit Wide(unsigned int unitSize) : unitSize_(unitSize) {}
    unsigned int unitSize() const override { return unitSize_; }
    unsigned int unitLength() const override { return 1000; }
    std::string getName() const override { return "WIDE"; }
    void setVal(const bytes&) override {}
    bytes toByteArray() const override { return {}; }

private:
    unsigned int unitSize_;
};

TEST_F(WithGroupedDigits, AStreamWouldGroup) {
    std::ostringstream stream;
    stream << 16384;
    ASSERT_EQ(stream.str(), "16,384");
}

TEST_F(WithGroupedDigits, ABufferDoesNot) {
    Buffer b(octets(16385));
    b.skip(16385);
    EXPECT_EQ(b.toString(), "Buffer[ridx_=16385,widx_=16385,midx_=0,len=16385]");
    EXPECT_EQ(messageOf<ASN1Exception>([&] { b.get(); }),
              "index out of bounds: read index(16385) >= write index(16385)");
}

TEST_F(WithGroupedDigits, AFieldDoesNot) {
    EXPECT_EQ(messageOf<VORLException>([] { UInt16::decodeBytes(bytes(16384)); }),
              "Unable to decode input; input length (16384) out of range");
}

TEST_F(WithGroupedDigits, ABlockDoesNot) {
    Buffer b(bytes{0xc1} + octets(2000));
    EXPECT_EQ(messageOf<ASN1Exception>([&] { b.nextOctetString(); }),
              "Unable to read 16384 bytes from buffer, only 2000 available");
    EXPECT_EQ(messageOf<ASN1Exception>([&] { Wide(1000).encode(b); }), "unit size(1000) is not a power of 2");
    EXPECT_EQ(messageOf<ASN1Exception>([&] { Wide(1024).encode(b); }),
              "data bit length(0) - ASN.1 obj bit length(1024000) > unit size(1024)");
}

TEST_F(WithGroupedDigits, HexTextsDoNot) {
    EXPECT_EQ(Util::toHexString(0xfffffU), "fffff");
    EXPECT_EQ(Util::toSpacedHexString(0xfffff, 6), " fffff");
    const std::string dump = Util::hexAsciiDump(bytes(0x1001, 0x41), 0x1000, "");
    EXPECT_EQ(dump.substr(dump.find('\n') + 1, 10), "  1000: 41");
}

TEST_F(WithGroupedDigits, ATimeDoesNot) {
    EXPECT_EQ(Util::currentTime().find_first_not_of("0123456789"), std::string::npos);
    EXPECT_EQ(Util::uniqueTime().find_first_not_of("0123456789."), std::string::npos);
}

}  // namespace
}  // namespace vorl::test
