#include "DefaultDhMethod.h"
#include "FakeClock.h"
#include "TempFolder.h"
#include "block_encoder.h"
#include "der_encoder.h"
#include "dh_group.h"
#include "dh_record.h"
#include "messageOf.h"
#include "octets.h"
#include "raw_base64.h"
#include "vorl/Buffer.h"
#include "vorl/DiffieHellman.h"
#include "vorl/DiffieHellmanParams.h"
#include "vorl/Env.h"
#include "vorl/OpenSSLException.h"
#include "vorl/VORLException.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

// What a key agreement leaves in /tmp for diagnosis while its instrumentation is on.

namespace vorl::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

namespace fs = std::filesystem;

bytes contentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return bytes(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

template <typename Encodable>
bytes encoded(const Encodable& object) {
    Buffer out;
    object.encode(out);
    return out.toByteArray();
}

bytes blocksOfGroup() {
    return block(bytesOf(GROUP_512_2.p())) + block(bytesOf(GROUP_512_2.g()));
}

DiffieHellman ownPair() {
    return DiffieHellman(rawPair(RFC_2409_GROUP, numberFrom(octets(32)).get()));
}

class DiffieHellmanInstrumentation : public ::testing::Test {
protected:
    void SetUp() override {
        removeFiles();
        Env::setInstrumentation(DIFFIE_HELLMAN, true);
    }
    void TearDown() override {
        Env::setInstrumentation(DIFFIE_HELLMAN, false);
        ::umask(umask_);
        removeFiles();
    }

    std::string second() const { return std::to_string(clock_.now()); }
    std::string pathOf(const std::string& root, int count) const {
        return "/tmp/" + root + "." + second() + "." + std::to_string(count);
    }

    // The names of this second's files, without it: root and count.
    std::vector<std::string> files() const {
        const std::string infix = "." + second() + ".";
        std::vector<std::string> found;
        for (const auto& entry :
             fs::directory_iterator("/tmp", fs::directory_options::skip_permission_denied)) {
            std::string name = entry.path().filename().string();
            const std::size_t at = name.find(infix);
            if (at != std::string::npos) {
                found.push_back(name.replace(at, infix.size(), "."));
            }
        }
        return found;
    }

    const mode_t umask_ = ::umask(022);
    FakeClock clock_;

private:
    void removeFiles() const {
        for (std::string name : files()) {
            fs::remove("/tmp/" + name.insert(name.find('.'), "." + second()));
        }
    }
};

TEST_F(DiffieHellmanInstrumentation, SavesTheGroupOfAPemText) {
    const DiffieHellmanParams params{std::string(GROUP_512_2_PEM)};
    EXPECT_THAT(files(), ElementsAre("DHParams.0"));
    EXPECT_EQ(contentOf(pathOf("DHParams", 0)), blocksOfGroup());
}

TEST_F(DiffieHellmanInstrumentation, SavesAGeneratedPair) {
    const std::unique_ptr<DiffieHellman> pair =
        DiffieHellman::generate(DiffieHellmanParams(rawDh(GROUP_512_2)));
    EXPECT_THAT(files(), ElementsAre("DiffieHellman.0"));
    EXPECT_EQ(contentOf(pathOf("DiffieHellman", 0)), encoded(*pair));
}

TEST_F(DiffieHellmanInstrumentation, SavesThePeersKeyAsSentAndTheSecret) {
    const bytes key = paddedTo(129, octets(120));
    const bytes secret = ownPair().computeSharedSecret(rawBase64(dhRecord(key)));
    EXPECT_THAT(files(), UnorderedElementsAre("DHRemotePubKey.0", "DHSharedSecret.1"));
    EXPECT_EQ(contentOf(pathOf("DHRemotePubKey", 0)), key);
    EXPECT_EQ(contentOf(pathOf("DHSharedSecret", 1)), secret);
    EXPECT_NE(secret, bytes(128));
}

TEST_F(DiffieHellmanInstrumentation, SavesTheSecretWithItsLastByteOverwritten) {
    const DiffieHellman pair(rawPair(RFC_2409_GROUP, numberOf(1).get()));
    const bytes key = octets(128);
    ASSERT_LT(key.front(), 0x80);
    ASSERT_NE(key.back(), 0);
    pair.computeSharedSecret(rawBase64(dhRecord(key)));
    EXPECT_EQ(contentOf(pathOf("DHSharedSecret", 1)), slice(key, 0, 127) + bytes{0x00});
}

TEST_F(DiffieHellmanInstrumentation, SavesTheSecretOfARefusedPeer) {
    ownPair().computeSharedSecret(rawBase64(dhRecord(bytes(128))));
    EXPECT_EQ(contentOf(pathOf("DHRemotePubKey", 0)), bytes(128));
    EXPECT_EQ(contentOf(pathOf("DHSharedSecret", 1)), bytes(128));
}

TEST_F(DiffieHellmanInstrumentation, SavesAPeersBareKey) {
    ownPair().computeSharedSecret(rawBase64(octets(125)));
    EXPECT_EQ(contentOf(pathOf("DHRemotePubKey", 0)), octets(125));
}

TEST_F(DiffieHellmanInstrumentation, SavesNoSecretThatOpensslDidNotCompute) {
    const DefaultDhMethod method;
    DH_meth_set_compute_key(method.method(), [](unsigned char* secret, const BIGNUM*, DH*) {
        *secret = 0x55;
        return 0;
    });
    const DiffieHellman pair = ownPair();
    EXPECT_EQ(
        messageOf<OpenSSLException>([&] { pair.computeSharedSecret(rawBase64(dhRecord(octets(128)))); }),
        "DH_compute_key()");
    EXPECT_THAT(files(), ElementsAre("DHRemotePubKey.0"));
}

TEST_F(DiffieHellmanInstrumentation, SavesNoPairThatOpensslDidNotMake) {
    const DiffieHellmanParams tooSmall(rawDh(numberOf(23).get(), numberOf(5).get()));
    EXPECT_EQ(messageOf<OpenSSLException>([&] { DiffieHellman::generate(tooSmall); }), "DH_generate_key()");
    EXPECT_THAT(files(), IsEmpty());
}

TEST_F(DiffieHellmanInstrumentation, SavesAKeyThatIsRefusedAfterwards) {
    EXPECT_EQ(
        messageOf<VORLException>([] { ownPair().computeSharedSecret(rawBase64(dhRecord(octets(130)))); }),
        "DH public key from server is 130bytes, expected 120-129");
    EXPECT_THAT(files(), ElementsAre("DHRemotePubKey.0"));
    EXPECT_EQ(contentOf(pathOf("DHRemotePubKey", 0)), octets(130));

    const DiffieHellman inASmallGroup(rawPair(GROUP_512_2, numberOf(9).get()));
    EXPECT_EQ(messageOf<VORLException>(
                  [&] { inASmallGroup.computeSharedSecret(rawBase64(dhRecord(octets(128)))); }),
              "DH shared secret size (64) != 128");
    EXPECT_THAT(files(), UnorderedElementsAre("DHRemotePubKey.0", "DHRemotePubKey.1"));
    EXPECT_EQ(contentOf(pathOf("DHRemotePubKey", 1)), octets(128));
}

TEST_F(DiffieHellmanInstrumentation, SavesNothingOfWhatIsNoGroupAndNoRecord) {
    EXPECT_EQ(messageOf<VORLException>([] { DiffieHellmanParams{std::string("no group")}; }),
              "Unable to read DHParams from BIO");
    EXPECT_EQ(messageOf<VORLException>([] { ownPair().computeSharedSecret(rawBase64(octets(124))); }),
              "DH PubKey length (124) out of range");
    EXPECT_THAT(files(), IsEmpty());
}

TEST_F(DiffieHellmanInstrumentation, SavesNothingOfGroupsAndPairsFromElsewhere) {
    const TempFolder folder;
    std::ofstream(folder / "group.pem") << GROUP_512_2_PEM;
    Buffer group(blocksOfGroup());

    DiffieHellmanParams params(*DiffieHellmanParams::load(folder / "group.pem"));
    params = DiffieHellmanParams(derSequence(derInteger(bytesOf(GROUP_512_2.p())) + derInteger({0x02})));
    params = DiffieHellmanParams(rawDh(GROUP_512_2));
    params = *DiffieHellmanParams::decode(group);
    params = DiffieHellmanParams(ownPair());
    params = *DiffieHellmanParams::generate(2, 512);

    Buffer pair;
    ownPair().encode(pair);
    EXPECT_EQ(*DiffieHellman::decode(pair), ownPair());
    EXPECT_NE(ownPair().getPubKey(), bytes());
    EXPECT_THAT(files(), IsEmpty());
}

// Everything that saves a file, twice.
void agree() {
    for (int i = 0; i < 2; ++i) {
        DiffieHellman::generate(DiffieHellmanParams(std::string(GROUP_512_2_PEM)));
        ownPair().computeSharedSecret(rawBase64(dhRecord(octets(128))));
    }
}

TEST_F(DiffieHellmanInstrumentation, SavesEachTimeUnderAnotherName) {
    agree();
    EXPECT_THAT(files(), UnorderedElementsAre("DHParams.0", "DiffieHellman.1", "DHRemotePubKey.2",
                                              "DHSharedSecret.3", "DHParams.4", "DiffieHellman.5",
                                              "DHRemotePubKey.6", "DHSharedSecret.7"));
}

TEST_F(DiffieHellmanInstrumentation, SavesNothingWhileItIsOff) {
    Env::setInstrumentation(DIFFIE_HELLMAN, false);
    agree();
    EXPECT_THAT(files(), IsEmpty());

    Env::setInstrumentation(static_cast<Component>(1), true);
    agree();
    EXPECT_THAT(files(), IsEmpty()) << "another component";
    Env::setInstrumentation(static_cast<Component>(1), false);
}

struct UmaskCase {
    const char* name;
    mode_t umask;
};

const UmaskCase UMASKS[] = {{"Nothing", 0}, {"OthersWrite", 022}, {"Everything", 0777}};

class DiffieHellmanFileMode : public DiffieHellmanInstrumentation,
                              public ::testing::WithParamInterface<UmaskCase> {};

TEST_P(DiffieHellmanFileMode, IsForTheOwnerAloneWhateverTheUmask) {
    ::umask(GetParam().umask);
    agree();
    ::umask(umask_);

    int count = 0;
    for (const char* root : {"DHParams", "DiffieHellman", "DHRemotePubKey", "DHSharedSecret"}) {
        struct stat status {};
        ASSERT_EQ(::lstat(pathOf(root, count++).c_str(), &status), 0) << root;
        EXPECT_EQ(status.st_mode, static_cast<mode_t>(S_IFREG | 0600)) << root;
        EXPECT_GT(status.st_size, 0) << root;
    }
}

INSTANTIATE_TEST_SUITE_P(Umasks, DiffieHellmanFileMode, ::testing::ValuesIn(UMASKS),
                         [](const auto& test) { return test.param.name; });

struct FileCase {
    const char* root;
    void (*save)();
};

const FileCase FILES[] = {
    {"DHParams", [] { DiffieHellmanParams{std::string(GROUP_512_2_PEM)}; }},
    {"DiffieHellman", [] { DiffieHellman::generate(DiffieHellmanParams(rawDh(GROUP_512_2))); }},
    {"DHRemotePubKey", [] { ownPair().computeSharedSecret(rawBase64(dhRecord(octets(128)))); }},
    {"DHSharedSecret", [] { ownPair().computeSharedSecret(rawBase64(dhRecord(octets(128)))); }},
};

class DiffieHellmanFile : public DiffieHellmanInstrumentation,
                          public ::testing::WithParamInterface<FileCase> {};

TEST_P(DiffieHellmanFile, TakesThePlaceOfNoLinkAndNoFile) {
    const std::string root = GetParam().root;
    const TempFolder folder;
    std::ofstream(folder / "victim") << "old";
    for (int count = 0; count < 4; ++count) {
        fs::create_symlink(folder / (count % 2 == 0 ? "victim" : "nowhere"), pathOf(root, count));
    }
    std::ofstream(pathOf(root, 4)) << "old";
    GetParam().save();

    EXPECT_EQ(contentOf(folder / "victim"), fromText("old"));
    EXPECT_FALSE(fs::exists(folder / "nowhere"));
    for (int count = 0; count < 4; ++count) {
        EXPECT_TRUE(fs::is_symlink(pathOf(root, count))) << count;
    }
    EXPECT_EQ(contentOf(pathOf(root, 4)), fromText("old"));
    EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(pathOf(root, 5))));
    EXPECT_NE(contentOf(pathOf(root, 5)), bytes());
}

INSTANTIATE_TEST_SUITE_P(Roots, DiffieHellmanFile, ::testing::ValuesIn(FILES),
                         [](const auto& test) { return test.param.root; });

}  // namespace
}  // namespace vorl::test
