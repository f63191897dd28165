#include <gtest/gtest.h>

#include <filesystem>

#include "signature/TrustedKeys.h"
#include "support/SignedImage.h"
#include "support/TemporaryDirectory.h"
#include "support/TestPorts.h"

namespace vireo::test {
namespace {

std::span<const unsigned char> bytesOf(std::string_view text) {
    return {reinterpret_cast<const unsigned char*>(text.data()), text.size()};
}

TEST(Sha256, IsThatOfTheWorld) {
    EXPECT_EQ(textOf(Sha256::of(bytesOf("abc"))),
              "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    Sha256 inPieces;
    inPieces.add(bytesOf("a"));
    inPieces.add({});
    inPieces.add(bytesOf("bc"));
    EXPECT_EQ(inPieces.finish(), Sha256::of(bytesOf("abc")));
}

// The first test vector of RFC 8032.
TEST(SignatureKey, SignsAsTheRestOfTheWorldDoes) {
    const PrivateKey key =
        PrivateKey::fromSeed({0x9d, 0x61, 0xb1, 0x9d, 0xef, 0xfd, 0x5a, 0x60, 0xba, 0x84, 0x4a,
                              0xf4, 0x92, 0xec, 0x2c, 0xc4, 0x44, 0x49, 0xc5, 0x69, 0x7b, 0x32,
                              0x69, 0x19, 0x70, 0x3b, 0xac, 0x03, 0x1c, 0xae, 0x7f, 0x60});
    EXPECT_EQ(textOf(key.sign({})),
              "e5564300c360ac729086e2cc806e828a84877f1eb8e5d974d873e065224901555fb8821590a33bacc61e"
              "39701cf9b46bd25bf5f0595bbe24655141438e7a100b");
}

TEST(SignatureKey, ASignatureHoldsForItsMessageAndKeyAlone) {
    const PrivateKey key = keyNumber(1);
    const PublicKey open = key.publicKey();
    const Ed25519Signature signature = key.sign(bytesOf("message"));
    EXPECT_TRUE(open.verifies(bytesOf("message"), signature));
    EXPECT_FALSE(open.verifies(bytesOf("messagf"), signature));
    EXPECT_FALSE(open.verifies(bytesOf("messag"), signature));
    EXPECT_FALSE(keyNumber(2).publicKey().verifies(bytesOf("message"), signature));
    EXPECT_NE(keyNumber(2).publicKey().id(), open.id());
    for (std::size_t bit = 0; bit < 8 * signature.size(); ++bit) {
        Ed25519Signature flipped = signature;
        flipped[bit / 8] ^= static_cast<unsigned char>(1U << (bit % 8));
        EXPECT_FALSE(open.verifies(bytesOf("message"), flipped)) << bit;
    }
}

TEST(SignatureKey, ComesBackFromItsText) {
    const PrivateKey made = PrivateKey::generate();
    std::string error;
    const auto again = PrivateKey::fromPem(made.pem(), error);
    ASSERT_TRUE(again) << error;
    const auto open = PublicKey::fromPem(made.publicKey().pem(), error);
    ASSERT_TRUE(open) << error;
    EXPECT_EQ(open->id(), made.publicKey().id());
    EXPECT_TRUE(open->verifies(bytesOf("x"), again->sign(bytesOf("x"))));
    EXPECT_NE(PrivateKey::generate().pem(), made.pem());

    EXPECT_FALSE(PublicKey::fromPem(made.pem(), error));
    EXPECT_EQ(error, "it holds no public key in PEM form");
    EXPECT_FALSE(PrivateKey::fromPem(made.publicKey().pem(), error));
    EXPECT_EQ(error, "it holds no private key in PEM form without a passphrase");
    EXPECT_FALSE(PublicKey::fromPem("", error));
    // X25519, which looks much the same and signs nothing.
    EXPECT_FALSE(
        PublicKey::fromPem("-----BEGIN PUBLIC KEY-----\n"
                           "MCowBQYDK2VuAyEAhSDwCYkwp1R0i33ctD73Wg2/Og0mOBr066SpjqqbTmo=\n"
                           "-----END PUBLIC KEY-----\n",
                           error));
    EXPECT_EQ(error, "it is a public key, but not one for Ed25519");
}

TEST(TrustedKeys, AreAllOfTheDirectoryThatAreKeys) {
    const TemporaryDirectory directory;
    const TestPorts log;
    writeFile(directory.file("old.pem"), keyNumber(1).publicKey().pem());
    writeFile(directory.file("new.pem"), keyNumber(2).publicKey().pem());
    writeFile(directory.file("private.pem"), keyNumber(3).pem());
    writeFile(directory.file("other.txt"), keyNumber(4).publicKey().pem());
    writeFile(directory.file(".hidden.pem"), keyNumber(5).publicKey().pem());
    std::filesystem::create_directory(directory.file("directory.pem"));
    const TrustedKeys keys(directory.path());
    for (unsigned char number = 1; number <= 5; ++number) {
        EXPECT_EQ(keys.find(keyNumber(number).publicKey().id()) != nullptr, number <= 2) << number;
    }
    EXPECT_EQ(log.count(kLogWarning, "private.pem: it holds no public key in PEM form"), 1);
    EXPECT_EQ(log.count(kLogWarning, "directory.pem: it is no regular file"), 1);
    EXPECT_EQ(log.lines(kLogWarning).size(), 2U);
    EXPECT_TRUE(TrustedKeys(directory.file("none")).isEmpty());
}

}  // namespace
}  // namespace vireo::test
