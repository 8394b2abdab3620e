#include "vorl/DiffieHellmanParams.h"

#include "DefaultDhMethod.h"
#include "TempFolder.h"
#include "block_encoder.h"
#include "der_encoder.h"
#include "dh_group.h"
#include "dh_without_generator.h"
#include "error_queue.h"
#include "messageOf.h"
#include "octets.h"
#include "vorl/ASN1Exception.h"
#include "vorl/Buffer.h"
#include "vorl/DiffieHellman.h"
#include "vorl/OpenSSLException.h"
#include "vorl/VORLException.h"

#include <openssl/bio.h>
#include <openssl/evp.h>
#include <openssl/pem.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>

namespace vorl::test {
namespace {

using ::testing::Eq;
using ::testing::ExitedWithCode;
using ::testing::HasSubstr;
using ::testing::KilledBySignal;

const char NOT_DER[] = "d2i_DHparams(&dh_, &ptr, len)";
const char NO_PEM[] = "Unable to read DHParams from BIO";
const char CANNOT_DUPLICATE[] = "ASN1_dup(i2d_DHparams, d2i_DHparams, dh)";
const char NOT_GENERATED[] = "failed DH generation";

bytes derOf(const BIGNUM* p, const BIGNUM* g) {
    return derSequence(derInteger(bytesOf(p)) + derInteger(bytesOf(g)));
}

bytes derOf(const Group& group) {
    return derOf(group.p().get(), group.g().get());
}

bytes blocksOf(const Group& group) {
    return block(bytesOf(group.p())) + block(bytesOf(group.g()));
}

bytes encoded(const DiffieHellmanParams& params) {
    Buffer out;
    params.encode(out);
    return out.toByteArray();
}

std::unique_ptr<DiffieHellmanParams> decodedParams(const bytes& blocks) {
    Buffer in(blocks);
    return DiffieHellmanParams::decode(in);
}

std::string pemOf(const char* label, const bytes& content, const char* header = "") {
    const std::shared_ptr<BIO> bio(BIO_new(BIO_s_mem()), BIO_free);
    if (PEM_write_bio(bio.get(), label, header, content.data(), static_cast<long>(content.size())) == 0) {
        throw std::runtime_error("pemOf");
    }
    char* text = nullptr;
    const long size = BIO_get_mem_data(bio.get(), &text);
    return std::string(text, static_cast<std::size_t>(size));
}

std::shared_ptr<BIO> bioOver(const std::string& text) {
    return std::shared_ptr<BIO>(BIO_new_mem_buf(text.data(), static_cast<int>(text.size())), BIO_free);
}

class DiffieHellmanParamsTest : public ::testing::Test {
protected:
    void SetUp() override { takeErrorQueue(); }
    void TearDown() override { takeErrorQueue(); }

    // A refusal with a text of our own leaves the application's entries, and no others.
    template <typename Action>
    void expectRefused(Action&& action, const std::string& message) {
        const unsigned long left = leaveApplicationError();
        EXPECT_EQ(messageOf<VORLException>(action), message);
        EXPECT_EQ(takeErrorQueue(), ErrorCodes{left});
    }

    // One of OpenSSL's tells OpenSSL's account, which the queue does not keep.
    template <typename Action>
    void expectFailed(Action&& action, const std::string& message, const std::string& account) {
        try {
            action();
            ADD_FAILURE() << "no exception";
        } catch (const OpenSSLException& e) {
            EXPECT_EQ(e.what(), message);
            EXPECT_THAT(e.errorStack(), HasSubstr(account));
        }
        EXPECT_EQ(takeErrorQueue(), ErrorCodes());
    }
};

struct GroupCase {
    const char* name;
    const Group& group;
};

const GroupCase GROUPS[] = {
    {"Bits512Generator2", GROUP_512_2},
    {"Bits512Generator5", GROUP_512_5},
    {"Bits1024", RFC_2409_GROUP},
    {"Bits2048", RFC_3526_GROUP_14},
};

class DiffieHellmanParamsGroup : public ::testing::TestWithParam<GroupCase> {};

TEST_P(DiffieHellmanParamsGroup, IsTheSameFromEverySource) {
    const Group& group = GetParam().group;
    const bytes der = derOf(group);
    const bytes blocks = blocksOf(group);

    EXPECT_EQ(encoded(DiffieHellmanParams(der)), blocks);
    EXPECT_EQ(encoded(DiffieHellmanParams(der.data(), static_cast<unsigned int>(der.size()))), blocks);
    EXPECT_EQ(encoded(DiffieHellmanParams(pemOf("DH PARAMETERS", der))), blocks);
    EXPECT_EQ(encoded(DiffieHellmanParams(rawDh(group))), blocks);
    EXPECT_EQ(encoded(*decodedParams(blocks)), blocks);
}

INSTANTIATE_TEST_SUITE_P(Groups, DiffieHellmanParamsGroup, ::testing::ValuesIn(GROUPS),
                         [](const auto& test) { return test.param.name; });

// DER.

class DiffieHellmanParamsDer : public DiffieHellmanParamsTest {};

TEST_F(DiffieHellmanParamsDer, MayRecommendALengthOfThePrivateNumber) {
    const Group& group = GROUP_512_2;
    const bytes der = derSequence(derInteger(bytesOf(group.p())) + derInteger(bytesOf(group.g())) +
                                  derInteger(bytes{0x01, 0x00}));
    EXPECT_EQ(encoded(DiffieHellmanParams(der)), blocksOf(group));
}

TEST_F(DiffieHellmanParamsDer, MayBeFollowedByMore) {
    EXPECT_EQ(encoded(DiffieHellmanParams(derOf(GROUP_512_2) + bytes{0x00})), blocksOf(GROUP_512_2));
    EXPECT_EQ(encoded(DiffieHellmanParams(derOf(GROUP_512_2) + derOf(GROUP_512_5))), blocksOf(GROUP_512_2));
}

TEST_F(DiffieHellmanParamsDer, IsReadNoFurtherThanItsLengthSays) {
    const bytes der = derOf(GROUP_512_2);
    expectFailed([&] { DiffieHellmanParams(der.data(), static_cast<unsigned int>(der.size() - 1)); }, NOT_DER,
                 "too long");
}

TEST_F(DiffieHellmanParamsDer, NeedsData) {
    const char message[] = "DiffieHellmanParams::initObj() data param is null";
    expectRefused([] { DiffieHellmanParams(nullptr, 0); }, message);
    expectRefused([] { DiffieHellmanParams(nullptr, 70); }, message);
    expectRefused([] { DiffieHellmanParams{bytes()}; }, message);

    bytes emptied = derOf(GROUP_512_2);
    emptied.clear();
    ASSERT_NE(emptied.data(), nullptr);
    expectRefused([&] { DiffieHellmanParams{emptied}; }, message);
}

TEST_F(DiffieHellmanParamsDer, OfNoLengthIsNotDer) {
    const unsigned char octet = 0x30;
    expectFailed([&] { DiffieHellmanParams(&octet, 0); }, NOT_DER, "asn1");
}

TEST_F(DiffieHellmanParamsDer, CutShortAnywhereIsRefused) {
    const bytes whole = derOf(GROUP_512_2);
    for (std::size_t size = 1; size < whole.size(); ++size) {
        SCOPED_TRACE(size);
        expectFailed([&] { DiffieHellmanParams{slice(whole, 0, size)}; }, NOT_DER, "asn1");
    }
}

struct NotDerCase {
    const char* name;
    bytes data;
};

const NotDerCase NOT_DERS[] = {
    {"Text", fromText("hello")},
    {"OneByte", {0x00}},
    {"PrimeAlone", derSequence(derInteger({0x17}))},
    {"EmptySequence", derSequence({})},
    {"NumbersOfAnotherType", derSequence(der(0x04, {0x17}) + der(0x04, {0x05}))},
    {"FurtherElements",
     derSequence(derInteger({0x17}) + derInteger({0x05}) + derInteger({0x10}) + derInteger({0x10}))},
    {"NoSequence", derInteger({0x17}) + derInteger({0x05})},
    {"PemText", fromText(GROUP_512_2_PEM)},
    {"EncodedBlocks", blocksOf(GROUP_512_2)},
};

class DiffieHellmanParamsNotDer : public DiffieHellmanParamsTest,
                                  public ::testing::WithParamInterface<NotDerCase> {};

TEST_P(DiffieHellmanParamsNotDer, IsRefused) {
    const bytes& data = GetParam().data;
    expectFailed([&] { DiffieHellmanParams{data}; }, NOT_DER, "asn1");
    expectFailed([&] { DiffieHellmanParams(data.data(), static_cast<unsigned int>(data.size())); }, NOT_DER,
                 "asn1");
}

INSTANTIATE_TEST_SUITE_P(Data, DiffieHellmanParamsNotDer, ::testing::ValuesIn(NOT_DERS),
                         [](const auto& test) { return test.param.name; });

// PEM text.

class DiffieHellmanParamsPem : public DiffieHellmanParamsTest {};

TEST_F(DiffieHellmanParamsPem, OfTheOpensslCommandIsRead) {
    EXPECT_EQ(encoded(DiffieHellmanParams(std::string(GROUP_512_2_PEM))), blocksOf(GROUP_512_2));
}

TEST_F(DiffieHellmanParamsPem, MayStandBehindTextAndBlocksOfAnotherKind) {
    const std::string pem = "Our group of last year:\n\n" + pemOf("CERTIFICATE", octets(100)) +
                            pemOf("DH PARAMETERS", derOf(GROUP_512_5)) + GROUP_512_2_PEM;
    EXPECT_EQ(encoded(DiffieHellmanParams(pem)), blocksOf(GROUP_512_5));
}

TEST_F(DiffieHellmanParamsPem, MayHaveCarriageReturnsAndNoLastLineEnd) {
    std::string pem;
    for (const char c : std::string(GROUP_512_2_PEM)) {
        pem += c == '\n' ? std::string("\r\n") : std::string(1, c);
    }
    EXPECT_EQ(encoded(DiffieHellmanParams(pem)), blocksOf(GROUP_512_2));

    pem = GROUP_512_2_PEM;
    pem.pop_back();
    EXPECT_EQ(encoded(DiffieHellmanParams(pem)), blocksOf(GROUP_512_2));
}

struct NoPemCase {
    const char* name;
    std::string text;
};

const std::string GOOD_PEM = GROUP_512_2_PEM;

const NoPemCase NO_PEMS[] = {
    {"Nothing", ""},
    {"Words", "hello\n"},
    {"LineEnds", "\n\n\n"},
    {"Der", toText(derOf(GROUP_512_2))},
    {"BeginAlone", "-----BEGIN DH PARAMETERS-----\n"},
    {"NoEnd", GOOD_PEM.substr(0, GOOD_PEM.find("-----END"))},
    {"AnotherEnd", GOOD_PEM.substr(0, GOOD_PEM.find("-----END")) + "-----END RSA PARAMETERS-----\n"},
    {"CutInTheMiddle", GOOD_PEM.substr(0, 80)},
    {"NoBase64", "-----BEGIN DH PARAMETERS-----\n!!!!\n-----END DH PARAMETERS-----\n"},
    {"EmptyBlock", "-----BEGIN DH PARAMETERS-----\n-----END DH PARAMETERS-----\n"},
    {"BlockOfAnotherKind", pemOf("PUBLIC KEY", derOf(GROUP_512_2))},
    {"BlockThatHoldsNoDer", pemOf("DH PARAMETERS", octets(40))},
    {"BlockThatIsCut", pemOf("DH PARAMETERS", slice(derOf(GROUP_512_2), 0, 40))},
    {"BlockThatSaysItIsEncryptedAndNotHow",
     pemOf("DH PARAMETERS", derOf(GROUP_512_2), "Proc-Type: 4,ENCRYPTED\n")},
    {"ZeroBytes", std::string(100, '\0')},
};

class DiffieHellmanParamsNoPem : public DiffieHellmanParamsTest,
                                 public ::testing::WithParamInterface<NoPemCase> {};

TEST_P(DiffieHellmanParamsNoPem, IsRefusedAsTextAsBioAndAsFile) {
    const std::string& text = GetParam().text;
    expectRefused([&] { DiffieHellmanParams{text}; }, NO_PEM);
    expectRefused([&] { DiffieHellmanParams::loadFromPEM(bioOver(text)); }, NO_PEM);

    const TempFolder folder;
    std::ofstream(folder / "group.pem", std::ios::binary) << text;
    ASSERT_EQ(std::filesystem::file_size(folder / "group.pem"), text.size());
    expectRefused([&] { DiffieHellmanParams::load(folder / "group.pem"); }, NO_PEM);
}

INSTANTIATE_TEST_SUITE_P(Texts, DiffieHellmanParamsNoPem, ::testing::ValuesIn(NO_PEMS),
                         [](const auto& test) { return test.param.name; });

// A block that is really encrypted, as RFC 1421 and OpenSSL's traditional key files have it.

const char PASSWORD[] = "secret";

std::string encryptedPem() {
    const EVP_CIPHER* const cipher = EVP_aes_128_cbc();
    const bytes iv = fromHex("000102030405060708090a0b0c0d0e0f");
    bytes key(16);
    EVP_BytesToKey(cipher, EVP_md5(), iv.data(), fromText(PASSWORD).data(),
                   static_cast<int>(fromText(PASSWORD).size()), 1, key.data(), nullptr);

    const bytes plain = derOf(GROUP_512_2);
    const std::unique_ptr<EVP_CIPHER_CTX, decltype(&EVP_CIPHER_CTX_free)> ctx(EVP_CIPHER_CTX_new(),
                                                                              EVP_CIPHER_CTX_free);
    bytes content(plain.size() + 16);
    int updated = 0;
    int finished = 0;
    EVP_EncryptInit_ex(ctx.get(), cipher, nullptr, key.data(), iv.data());
    EVP_EncryptUpdate(ctx.get(), content.data(), &updated, plain.data(), static_cast<int>(plain.size()));
    EVP_EncryptFinal_ex(ctx.get(), content.data() + updated, &finished);
    content.resize(static_cast<std::size_t>(updated + finished));
    return pemOf("DH PARAMETERS", content,
                 "Proc-Type: 4,ENCRYPTED\nDEK-Info: AES-128-CBC,000102030405060708090A0B0C0D0E0F\n");
}

// Tells on standard error how reading it went, and what was left in a pipe at standard input in which the
// password waits.
[[noreturn]] void readBesideThePassword(const std::string& pem) {
    ::setsid();  // leaves no terminal at which to ask
    int ends[2] = {};
    const std::string line = std::string(PASSWORD) + "\n";
    if (::pipe(ends) != 0 || ::dup2(ends[0], STDIN_FILENO) != STDIN_FILENO ||
        ::write(ends[1], line.data(), line.size()) != static_cast<ssize_t>(line.size())) {
        std::_Exit(1);
    }
    ::close(ends[1]);

    const std::string message = messageOf<VORLException>([&] { DiffieHellmanParams{pem}; });
    char left[sizeof PASSWORD] = {};
    const ssize_t leftBytes = ::read(STDIN_FILENO, left, sizeof left);
    std::fprintf(stderr, "%s, %d bytes left", message.c_str(), static_cast<int>(leftBytes));
    std::_Exit(0);
}

TEST(DiffieHellmanParamsDeathTest, AnEncryptedPemIsRefusedAndNobodyAskedForAPassword) {
    const std::string pem = encryptedPem();
    std::string password = PASSWORD;
    const std::shared_ptr<DH> read(
        PEM_read_bio_DHparams(bioOver(pem).get(), nullptr, nullptr, password.data()), DH_free);
    ASSERT_TRUE(read) << "OpenSSL reads it with the password";

    EXPECT_EXIT(readBesideThePassword(pem), ExitedWithCode(0), Eq(std::string(NO_PEM) + ", 7 bytes left"));
}

TEST_F(DiffieHellmanParamsPem, ThatIsEncryptedIsRefusedInAFileToo) {
    const TempFolder folder;
    std::ofstream(folder / "group.pem") << encryptedPem();
    expectRefused([&] { DiffieHellmanParams::load(folder / "group.pem"); }, NO_PEM);
}

// BIOs and files.

class DiffieHellmanParamsBio : public DiffieHellmanParamsTest {};

TEST_F(DiffieHellmanParamsBio, GivesOneBlockAfterTheOther) {
    const std::string pem = GROUP_512_2_PEM + pemOf("DH PARAMETERS", derOf(GROUP_512_5));
    const std::shared_ptr<BIO> bio = bioOver(pem);

    const std::shared_ptr<DH> first = DiffieHellmanParams::loadFromPEM(bio);
    const std::shared_ptr<DH> second = DiffieHellmanParams::loadFromPEM(bio);
    EXPECT_EQ(first.use_count(), 1);
    EXPECT_EQ(bytesOf(DH_get0_p(first.get())), bytesOf(GROUP_512_2.p()));
    EXPECT_EQ(bytesOf(DH_get0_g(first.get())), bytes{2});
    EXPECT_EQ(bytesOf(DH_get0_p(second.get())), bytesOf(GROUP_512_5.p()));
    EXPECT_EQ(bytesOf(DH_get0_g(second.get())), bytes{5});
    expectRefused([&] { DiffieHellmanParams::loadFromPEM(bio); }, NO_PEM);
    EXPECT_EQ(bio.use_count(), 1);
}

TEST_F(DiffieHellmanParamsBio, MustBeOne) {
    expectRefused([] { DiffieHellmanParams::loadFromPEM(nullptr); }, "BIO is NULL");
}

class DiffieHellmanParamsFile : public DiffieHellmanParamsTest {
protected:
    const TempFolder folder_;
};

TEST_F(DiffieHellmanParamsFile, IsRead) {
    std::ofstream(folder_ / "group.pem") << "# " << std::string(5000, '-') << "\n"
                                         << pemOf("DH PARAMETERS", derOf(RFC_2409_GROUP));
    EXPECT_EQ(encoded(*DiffieHellmanParams::load(folder_ / "group.pem")), blocksOf(RFC_2409_GROUP));
}

TEST_F(DiffieHellmanParamsFile, ThatCannotBeOpenedIsAFailureOfOpenssl) {
    const std::string account = "No such file or directory";
    expectFailed([&] { DiffieHellmanParams::load(folder_ / "missing"); }, "BIO_new_file()", account);
    expectFailed([] { DiffieHellmanParams::load(""); }, "BIO_new_file()", account);
    EXPECT_FALSE(std::filesystem::exists(folder_ / "missing"));
}

TEST_F(DiffieHellmanParamsFile, ThatIsADirectoryHoldsNoPem) {
    expectRefused([&] { DiffieHellmanParams::load(folder_.path()); }, NO_PEM);
}

// Copies.

class DiffieHellmanParamsCopy : public DiffieHellmanParamsTest {};

TEST_F(DiffieHellmanParamsCopy, OfADhStandsOnItsOwn) {
    const std::shared_ptr<DH> dh = rawDh(GROUP_512_2);
    const DiffieHellmanParams params(dh);
    EXPECT_EQ(dh.use_count(), 1);

    ASSERT_EQ(DH_set0_pqg(dh.get(), GROUP_512_5.p().release(), nullptr, GROUP_512_5.g().release()), 1);
    EXPECT_EQ(encoded(params), blocksOf(GROUP_512_2));
}

TEST_F(DiffieHellmanParamsCopy, OfAPairIsTheGroupThatThePairWasGeneratedFrom) {
    const DiffieHellmanParams params(derOf(GROUP_512_5));
    std::unique_ptr<DiffieHellman> pair = DiffieHellman::generate(params);
    const DiffieHellmanParams copy(*pair);
    pair.reset();

    EXPECT_EQ(copy, params);
    EXPECT_EQ(encoded(copy), blocksOf(GROUP_512_5));
}

TEST_F(DiffieHellmanParamsCopy, OfAnotherIsEqualAndStaysWhenItsSourceChanges) {
    DiffieHellmanParams source(derOf(GROUP_512_2));
    const DiffieHellmanParams constructed(source);
    DiffieHellmanParams assigned(derOf(RFC_2409_GROUP));
    EXPECT_EQ(&(assigned = source), &assigned);
    EXPECT_EQ(constructed, source);
    EXPECT_EQ(assigned, source);

    source = DiffieHellmanParams(derOf(GROUP_512_5));
    EXPECT_EQ(encoded(source), blocksOf(GROUP_512_5));
    EXPECT_EQ(encoded(constructed), blocksOf(GROUP_512_2));
    EXPECT_EQ(encoded(assigned), blocksOf(GROUP_512_2));
}

TEST_F(DiffieHellmanParamsCopy, ToItselfChangesNothing) {
    DiffieHellmanParams params(derOf(GROUP_512_2));
    const DiffieHellmanParams& same = params;
    params = same;
    EXPECT_EQ(encoded(params), blocksOf(GROUP_512_2));
}

TEST_F(DiffieHellmanParamsCopy, OfWhatIsNoGroupFails) {
    EXPECT_EQ(messageOf<OpenSSLException>([] { DiffieHellmanParams{std::shared_ptr<DH>()}; }),
              CANNOT_DUPLICATE);
    const std::shared_ptr<DH> empty(DH_new(), DH_free);
    EXPECT_EQ(messageOf<OpenSSLException>([&] { DiffieHellmanParams{empty}; }), CANNOT_DUPLICATE);
    EXPECT_EQ(takeErrorQueue(), ErrorCodes());
}

#if OPENSSL_VERSION_NUMBER >= 0x30000000L
TEST_F(DiffieHellmanParamsCopy, OfAPrimeWithoutAGeneratorFails) {
    const std::shared_ptr<DH> dh = rawDhWithoutGenerator(GROUP_512_2.p().get());
    EXPECT_EQ(messageOf<OpenSSLException>([&] { DiffieHellmanParams{dh}; }), CANNOT_DUPLICATE);
    EXPECT_EQ(takeErrorQueue(), ErrorCodes());
}
#endif

// Generation.

void expectSafePrimeOf(int bits, BN_ULONG generator, const DiffieHellmanParams& params) {
    Buffer numbers(encoded(params));
    const Number p = numberFrom(numbers.nextOctetString().toByteArray());
    EXPECT_EQ(numbers.nextOctetString().toByteArray(), bytesOf(numberOf(generator)));
    EXPECT_EQ(BN_num_bits(p.get()), bits);

    const std::unique_ptr<BN_CTX, decltype(&BN_CTX_free)> ctx(BN_CTX_new(), BN_CTX_free);
    Number half = Number(BN_new());
    ASSERT_EQ(BN_rshift1(half.get(), p.get()), 1);
    EXPECT_EQ(BN_is_prime_ex(p.get(), BN_prime_checks, ctx.get(), nullptr), 1);
    EXPECT_EQ(BN_is_prime_ex(half.get(), BN_prime_checks, ctx.get(), nullptr), 1);
}

class DiffieHellmanParamsGeneration : public DiffieHellmanParamsTest {};

TEST_F(DiffieHellmanParamsGeneration, TakesTheGeneratorFirst) {
    expectSafePrimeOf(512, 2, *DiffieHellmanParams::generate(2, 512));
    expectSafePrimeOf(513, 5, *DiffieHellmanParams::generate(5, 513));
}

TEST_F(DiffieHellmanParamsGeneration, TakesFiveForAGenerator) {
    expectSafePrimeOf(520, 5, *DiffieHellmanParams::generate(520));
}

TEST_F(DiffieHellmanParamsGeneration, Takes512Bits) {
    const std::unique_ptr<DiffieHellmanParams> first = DiffieHellmanParams::generate();
    expectSafePrimeOf(512, 5, *first);
    EXPECT_NE(*first, *DiffieHellmanParams::generate());
}

TEST_F(DiffieHellmanParamsGeneration, OfASizeThatOpensslRefusesFails) {
    const unsigned int intMax = std::numeric_limits<int>::max();
    for (const unsigned int bits : {0U, 1U, 511U, 10001U, intMax, intMax + 1, ~0U}) {
        SCOPED_TRACE(bits);
        expectRefused([&] { DiffieHellmanParams::generate(2, bits); }, NOT_GENERATED);
        expectRefused([&] { DiffieHellmanParams::generate(bits); }, NOT_GENERATED);
    }
}

TEST(DiffieHellmanParamsDeathTest, AGeneratorOtherThanTwoAndFiveAborts) {
    for (const unsigned int generator : {0U, 1U, 3U, 4U, 6U, 0x80000002U}) {
        SCOPED_TRACE(generator);
        EXPECT_EXIT(DiffieHellmanParams::generate(generator, 512), KilledBySignal(SIGABRT),
                    HasSubstr("gen == 2 || gen == 5"));
    }
    EXPECT_EXIT(DiffieHellmanParams::generate(3, 511), KilledBySignal(SIGABRT),
                HasSubstr("gen == 2 || gen == 5"))
        << "before anything else";
}

// What OpenSSL makes is a good group. What it would say of others is seen with a method that makes them.

const Group* toBeMade = nullptr;

int makeThatGroup(DH* dh, int /*primeBits*/, int /*generator*/, BN_GENCB* /*progress*/) {
    Number p = toBeMade->p();
    Number g = toBeMade->g();
    if (DH_set0_pqg(dh, p.get(), nullptr, g.get()) != 1) {
        return 0;
    }
    static_cast<void>(p.release());
    static_cast<void>(g.release());
    return 1;
}

class DiffieHellmanParamsJudgement : public DiffieHellmanParamsTest {
protected:
    DiffieHellmanParamsJudgement() { DH_meth_set_generate_params(method_.method(), makeThatGroup); }

    static int codesOf(const Group& group) {
        int codes = 0;
        return DH_check(rawDh(group).get(), &codes) != 0 ? codes : -1;
    }

    const DefaultDhMethod method_;
};

TEST_F(DiffieHellmanParamsJudgement, TakesWhatOpensslMade) {
    toBeMade = &RFC_2409_GROUP;
    EXPECT_EQ(encoded(*DiffieHellmanParams::generate(5, 512)), blocksOf(RFC_2409_GROUP));
}

// Only 0 is a failure, and it is one even with a group.
TEST_F(DiffieHellmanParamsJudgement, GoesByWhetherOpensslAnswersZero) {
    toBeMade = &RFC_2409_GROUP;
    DH_meth_set_generate_params(method_.method(), [](DH* dh, int bits, int generator, BN_GENCB* progress) {
        return -makeThatGroup(dh, bits, generator, progress);
    });
    EXPECT_EQ(encoded(*DiffieHellmanParams::generate(2, 1024)), blocksOf(RFC_2409_GROUP));

    DH_meth_set_generate_params(method_.method(), [](DH* dh, int bits, int generator, BN_GENCB* progress) {
        return makeThatGroup(dh, bits, generator, progress) - 1;
    });
    expectRefused([] { DiffieHellmanParams::generate(2, 1024); }, NOT_GENERATED);
}

TEST_F(DiffieHellmanParamsJudgement, RefusesAPrimeThatIsNotSafe) {
    // 2^521 - 1, whose half is a multiple of 3.
    const std::string hex = "01" + std::string(130, 'F');
    const Group group = {hex.c_str(), 2};
    toBeMade = &group;
    ASSERT_EQ(codesOf(group) & DH_CHECK_P_NOT_SAFE_PRIME, DH_CHECK_P_NOT_SAFE_PRIME);
    expectRefused([] { DiffieHellmanParams::generate(2, 521); }, NOT_GENERATED);
}

TEST_F(DiffieHellmanParamsJudgement, RefusesAnUnsuitableGenerator) {
    const Group group = {RFC_2409_GROUP.primeHex, 1};
    toBeMade = &group;
    ASSERT_EQ(codesOf(group), DH_NOT_SUITABLE_GENERATOR);
    expectRefused([] { DiffieHellmanParams::generate(2, 1024); }, NOT_GENERATED);
}

TEST_F(DiffieHellmanParamsJudgement, DoesNotAskWhetherThePrimeIsOne) {
    const std::string hex = std::string(256, 'F');
    const Group group = {hex.c_str(), 2};
    toBeMade = &group;
    ASSERT_EQ(codesOf(group), DH_CHECK_P_NOT_PRIME);
    EXPECT_EQ(encoded(*DiffieHellmanParams::generate(2, 1024)), blocksOf(group));
}

TEST_F(DiffieHellmanParamsJudgement, RefusesWhatOpensslCannotJudge) {
    const std::string hex = std::string(9000, 'F');  // more than the 32768 bits that it looks at
    const Group group = {hex.c_str(), 2};
    toBeMade = &group;
    if (codesOf(group) != -1) {
        GTEST_SKIP() << "this OpenSSL judges a prime of any size";
    }
    takeErrorQueue();
    expectRefused([] { DiffieHellmanParams::generate(2, 1024); }, NOT_GENERATED);
}

// Encoding.

class DiffieHellmanParamsEncoding : public DiffieHellmanParamsTest {};

TEST_F(DiffieHellmanParamsEncoding, IsAppendedAndItsDecodingLeavesTheRest) {
    Buffer buffer(bytes{0xaa});
    DiffieHellmanParams(derOf(RFC_2409_GROUP)).encode(buffer);
    DiffieHellmanParams(derOf(GROUP_512_5)).encode(buffer);
    buffer.put(static_cast<unsigned char>(0xbb));
    EXPECT_EQ(buffer.toByteArray(),
              bytes{0xaa} + blocksOf(RFC_2409_GROUP) + blocksOf(GROUP_512_5) + bytes{0xbb});

    EXPECT_EQ(buffer.get(), 0xaa);
    EXPECT_EQ(encoded(*DiffieHellmanParams::decode(buffer)), blocksOf(RFC_2409_GROUP));
    EXPECT_EQ(encoded(*DiffieHellmanParams::decode(buffer)), blocksOf(GROUP_512_5));
    EXPECT_EQ(buffer.toByteArrayRemain(), bytes{0xbb});
}

TEST_F(DiffieHellmanParamsEncoding, HasTheBytesThatTheFormatSays) {
    // A prime of 1024 bits begins with its length in two bytes, and with no zero before its top bit.
    const bytes out = encoded(DiffieHellmanParams(derOf(RFC_2409_GROUP)));
    EXPECT_EQ(slice(out, 0, 4), fromHex("8080ffff"));
    EXPECT_EQ(slice(out, 128, 4), fromHex("ffff0102"));
    EXPECT_EQ(out.size(), 132U);
    EXPECT_EQ(encoded(*decodedParams(fromHex("01170105"))), fromHex("01170105"));
}

TEST_F(DiffieHellmanParamsEncoding, LosesLeadingZeros) {
    EXPECT_EQ(encoded(*decodedParams(fromHex("03 000017 02 0005"))), fromHex("0117 0105"));
    EXPECT_EQ(encoded(*decodedParams(fromHex("03 000080 03 008000"))), fromHex("0180 028000"));
}

TEST_F(DiffieHellmanParamsEncoding, DoesNotWriteAZero) {
    const std::unique_ptr<DiffieHellmanParams> zeros = decodedParams(fromHex("00 02 0000"));
    EXPECT_EQ(encoded(*zeros), bytes());
    EXPECT_EQ(DiffieHellmanParams(*zeros), *zeros);
    EXPECT_EQ(*zeros, *decodedParams(fromHex("0100 00")));
    EXPECT_EQ(encoded(*decodedParams(fromHex("00 0105"))), fromHex("0105"));
}

struct ParamsCutCase {
    const char* name;
    bytes blocks;
    const char* message;
};

const ParamsCutCase PARAMS_CUTS[] = {
    {"Nothing", {}, "index out of bounds: read index(0) >= write index(0)"},
    {"LengthOfThePrime", {0x01}, "Unable to read 1 bytes from buffer, only 0 available"},
    {"FirstByteOfALength", {0x80}, "index out of bounds: read index(1) >= write index(1)"},
    {"PartOfThePrime", {0x03, 0x17, 0x17}, "Unable to read 3 bytes from buffer, only 2 available"},
    {"PrimeAlone", {0x01, 0x17}, "index out of bounds: read index(2) >= write index(2)"},
    {"LengthOfTheGenerator", {0x01, 0x17, 0x01}, "Unable to read 1 bytes from buffer, only 0 available"},
    {"UnknownLengthOfThePrime", {0xc5, 0x17, 0x01, 0x05}, "Unknown ASN.1 length value: b11000101"},
    {"UnknownLengthOfTheGenerator", {0x01, 0x17, 0xff, 0x05}, "Unknown ASN.1 length value: b11111111"},
};

class DiffieHellmanParamsCut : public DiffieHellmanParamsTest,
                               public ::testing::WithParamInterface<ParamsCutCase> {};

TEST_P(DiffieHellmanParamsCut, IsRefusedInTheWordsOfTheBlock) {
    EXPECT_EQ(messageOf<ASN1Exception>([] { decodedParams(GetParam().blocks); }), GetParam().message);
    EXPECT_EQ(takeErrorQueue(), ErrorCodes());
}

INSTANTIATE_TEST_SUITE_P(Blocks, DiffieHellmanParamsCut, ::testing::ValuesIn(PARAMS_CUTS),
                         [](const auto& test) { return test.param.name; });

TEST_F(DiffieHellmanParamsEncoding, CutShortAnywhereIsRefused) {
    const bytes whole = blocksOf(RFC_2409_GROUP);
    for (std::size_t size = 0; size < whole.size(); ++size) {
        EXPECT_THROW(decodedParams(slice(whole, 0, size)), ASN1Exception) << size;
    }
}

// Comparing and printing.

TEST_F(DiffieHellmanParamsTest, AreEqualWithTheSamePrimeAndTheSameGenerator) {
    const std::unique_ptr<DiffieHellmanParams> params = decodedParams(fromHex("0117 0105"));
    const std::unique_ptr<DiffieHellmanParams> same = decodedParams(fromHex("0117 0105"));
    const std::unique_ptr<DiffieHellmanParams> otherPrime = decodedParams(fromHex("012f 0105"));
    const std::unique_ptr<DiffieHellmanParams> otherGenerator = decodedParams(fromHex("0117 0102"));
    const std::unique_ptr<DiffieHellmanParams> swapped = decodedParams(fromHex("0105 0117"));

    EXPECT_TRUE(*params == *params);
    EXPECT_TRUE(*params == *same);
    EXPECT_FALSE(*params != *params);
    EXPECT_FALSE(*params != *same);
    for (const DiffieHellmanParams* other : {otherPrime.get(), otherGenerator.get(), swapped.get()}) {
        EXPECT_FALSE(*params == *other);
        EXPECT_TRUE(*params != *other);
    }
}

TEST_F(DiffieHellmanParamsTest, PrintBothNumbers) {
    EXPECT_EQ(DiffieHellmanParams(derOf(GROUP_512_2)).toString(),
              "Diffie-Hellman-Parameters:\n"
              "    prime:\n"
              "        cf:a7:2f:ea:1b:38:c2:49:fb:e8:3e:08:e8:c2:5b:dd:8e:ca:b5:72:b3:ad:47:ab\n"
              "        f7:3f:72:25:8f:5f:cd:65:e8:4d:93:64:c8:47:f4:6b:9d:37:aa:8a:da:26:38:81\n"
              "        47:4f:bf:7a:31:c0:35:fe:47:ae:2d:42:14:37:da:87\n"
              "    generator:  02\n");
    EXPECT_EQ(decodedParams(fromHex("0117 00"))->toString(),
              "Diffie-Hellman-Parameters:\n"
              "    prime:  17\n"
              "    generator:  (NULL)");
}

}  // namespace
}  // namespace vorl::test
