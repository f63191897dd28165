#include <gtest/gtest.h>

#include <filesystem>

#include "support/ChildProcess.h"
#include "support/SignedImage.h"
#include "support/TemporaryDirectory.h"

namespace vireo::test {
namespace {

/// The program, as it is run.
class ImageToolTest : public ::testing::Test {
protected:
    ImageToolTest() {
        writeFile(m_payload, noise(700'000));
        EXPECT_EQ(run({"keygen", m_name}).exitCode, 0);
    }

    static Outcome run(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), VIREO_IMAGE_TOOL);
        return ChildProcess::run(arguments);
    }
    std::vector<std::string> creation(const std::string& version = "2.1.0") const {
        return {"create", "--variant", "desk-1",  "--version", version,
                "--key",  m_secret,    m_payload, m_image};
    }
    /// The one line of a run that failed with `code`.
    static std::string failure(const std::vector<std::string>& arguments, int code = 1) {
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.exitCode, code) << outcome.out;
        EXPECT_EQ(outcome.out, "");
        EXPECT_TRUE(outcome.err.starts_with("vireo-image: ")) << outcome.err;
        return outcome.err.substr(13, outcome.err.find('\n') - 13);
    }
    std::size_t fileCount() const {
        return static_cast<std::size_t>(
            std::distance(std::filesystem::directory_iterator(m_directory.path()), {}));
    }

    TemporaryDirectory m_directory;
    std::string m_name = m_directory.file("release");
    std::string m_secret = m_name + "-private.pem";
    std::string m_open = m_name + ".pem";
    std::string m_payload = m_directory.file("payload");
    std::string m_image = m_directory.file("image");
};

TEST_F(ImageToolTest, AKeyIsForItsOwnerAloneAndNeverOverwritten) {
    EXPECT_EQ(modeOf(m_secret), 0600U);
    EXPECT_EQ(modeOf(m_open) & 0400U, 0400U);
    const std::string before = readFile(m_secret);
    EXPECT_EQ(failure({"keygen", m_name}), m_secret + " is there already: no key is overwritten");
    std::filesystem::remove(m_secret);
    EXPECT_EQ(failure({"keygen", m_name}), m_open + " is there already: no key is overwritten");
    EXPECT_FALSE(std::filesystem::exists(m_secret));
    EXPECT_NE(before.find("BEGIN PRIVATE KEY"), std::string::npos);
    EXPECT_EQ(
        failure({"keygen", m_directory.file("no/such")}),
        "cannot write " + m_directory.file("no/such") + "-private.pem: No such file or directory");
}

TEST_F(ImageToolTest, MakesAnImageThatSaysWhatItIs) {
    const Outcome made = run(creation());
    EXPECT_EQ(made.exitCode, 0) << made.err;
    std::string error;
    const std::string id = textOf(PublicKey::fromPem(readFile(m_open), error)->id());
    EXPECT_EQ(made.out, m_image + ": 2.1.0 for desk-1, 700256 bytes, signed with key " + id + '\n');
    EXPECT_EQ(readFile(m_image).substr(256), readFile(m_payload));
    const std::string shown = run({"inspect", m_image}).out;
    for (const std::string& part :
         {std::string("format version: 1\n"), std::string("hardware variant: desk-1\n"),
          std::string("software version: 2.1.0\n"), std::string("payload size: 700000\n"),
          "key id: " + id + '\n'}) {
        EXPECT_NE(shown.find(part), std::string::npos) << shown;
    }
    const Outcome good = run({"verify", "--key", m_open, "--variant", "desk-1", m_image});
    EXPECT_EQ(good.exitCode, 0) << good.err;
    EXPECT_EQ(good.out, m_image + ": good: 2.1.0 for desk-1, signed with key " + id + '\n');
    EXPECT_EQ(run({"verify", "--keys", m_directory.path(), m_image}).exitCode, 0);
    EXPECT_EQ(failure({"verify", "--key", m_open, "--variant", "desk-2", m_image}),
              "cannot use the image " + m_image +
                  ": its hardware variant is \"desk-1\", this phone is \"desk-2\"");
    EXPECT_EQ(failure({"verify", "--key", m_open, "--not-before", "2.2", m_image}),
              "cannot use the image " + m_image +
                  ": its software version 2.1.0 is older than 2.2.0, and downgrades are not "
                  "allowed");
}

TEST_F(ImageToolTest, AnImageCanBeSignedLaterAndAgain) {
    std::vector<std::string> unsignedImage = creation();
    unsignedImage.erase(unsignedImage.begin() + 5, unsignedImage.begin() + 7);
    EXPECT_TRUE(run(unsignedImage).out.ends_with("not signed\n"));
    EXPECT_NE(run({"inspect", m_image}).out.find("key id: none: it is not signed"),
              std::string::npos);
    EXPECT_EQ(failure({"verify", "--key", m_open, m_image}),
              "cannot use the image " + m_image + ": it is not signed");
    EXPECT_EQ(run({"sign", "--key", m_secret, m_image}).exitCode, 0);
    EXPECT_EQ(run({"verify", "--key", m_open, m_image}).exitCode, 0);

    const std::string next = m_directory.file("next");
    EXPECT_EQ(run({"keygen", next}).exitCode, 0);
    EXPECT_EQ(run({"sign", "--key", next + "-private.pem", m_image}).exitCode, 0);
    EXPECT_NE(failure({"verify", "--key", m_open, m_image}).find("is none of the trusted keys"),
              std::string::npos);
    EXPECT_EQ(run({"verify", "--key", m_open, "--key", next + ".pem", m_image}).exitCode, 0);
}

TEST_F(ImageToolTest, AFaultIsNamedAndLeavesWhatWasThere) {
    EXPECT_EQ(run(creation()).exitCode, 0);
    const std::string before = readFile(m_image);
    std::string bent = before;
    bent.back() = static_cast<char>(bent.back() ^ 1);
    const std::string bentFile = m_directory.file("bent");
    writeFile(bentFile, bent);
    EXPECT_EQ(failure({"verify", "--key", m_open, bentFile}),
              "cannot use the image " + bentFile + ": its payload is not the one that was signed");
    EXPECT_EQ(failure({"sign", "--key", m_secret, bentFile}),
              "cannot sign the image " + bentFile +
                  ": its payload is not the one that its header was made for");
    EXPECT_EQ(readFile(bentFile), bent);
    EXPECT_EQ(failure({"inspect", m_payload}), "cannot use the image " + m_payload +
                                                   ": it is no software image: its magic is "
                                                   "another one");
    const std::size_t count = fileCount();
    std::filesystem::permissions(m_secret, std::filesystem::perms(0640));
    EXPECT_EQ(failure(creation()), "--key: cannot read " + m_secret +
                                       ": others than its owner may use it (its mode should be "
                                       "0600)");
    std::filesystem::permissions(m_secret, std::filesystem::perms(0600));
    writeFile(m_payload, "");
    EXPECT_EQ(failure(creation()), "the payload " + m_payload + " is empty");
    std::filesystem::remove(m_payload);
    EXPECT_EQ(failure(creation()),
              "cannot read the payload " + m_payload + ": No such file or directory");
    EXPECT_EQ(fileCount(), count - 1);
    EXPECT_EQ(readFile(m_image), before);
    EXPECT_EQ(failure({"sign", "--key", m_open, m_image}).find("--key: "), 0U);
}

TEST_F(ImageToolTest, WrongUsageNamesTheOption) {
    const struct {
        std::vector<std::string> arguments;
        const char* part;
    } rows[] = {
        {{}, "A subcommand is required"},
        {{"burn"}, "'burn' is no command or option"},
        {creation("2.x"), "--version: \"2.x\" is no version"},
        {{"create", "--variant", "a b", "--version", "1", m_payload, m_image},
         "--variant: \"a b\" has not 1 to 64"},
        {{"create", "--version", "1", m_payload, m_image}, "--variant is required"},
        {{"create", "--variant", "a", "--version", "1", m_payload}, "IMAGE is required"},
        {{"verify", m_image}, "--key"},
        {{"sign", m_image}, "--key is required"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.part);
        EXPECT_NE(failure(row.arguments, 2).find(row.part), std::string::npos)
            << failure(row.arguments, 2);
    }
    EXPECT_NE(run({"create", "--help"}).out.find("--variant TEXT"), std::string::npos);
}

}  // namespace
}  // namespace vireo::test
