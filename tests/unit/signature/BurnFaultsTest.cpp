#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <random>

#include "image/FlashDirectory.h"
#include "signature/ImageBurn.h"
#include "signature/ImageVerifier.h"
#include "support/ModelFlash.h"
#include "support/SignedImage.h"
#include "support/TemporaryDirectory.h"
#include "support/TestPorts.h"

namespace vireo::test {
namespace {

const std::string kOld = signedImage(noise(20'000, 1), "1.0.0");
const std::string kNew = signedImage(noise(560'000, 2), "2.0.0");

/// A phone that runs the old software from bank a, and is given the new one.
class BurnFaultsTest : public ::testing::Test {
protected:
    BurnFaultsTest() { writeFile(m_directory.file("image"), kNew); }

    static void prepare(ModelFlash& flash) {
        flash.onAccess = nullptr;
        flash.put("bank-a.img", kOld);
        flash.put("boot", BootMarker{.bank = Bank::eA}.text());
    }
    /// Starts, burns and confirms as the phone does, until something throws.
    void burn(FlashPort& flash) {
        SoftwareBanks banks(flash, ImageBurn::isPayloadWhole);
        banks.start();
        burnInto(flash, banks);
    }
    void burnInto(FlashPort& flash, SoftwareBanks& banks) {
        std::string reason;
        const auto image = ImageFile::open(m_directory.file("image"), reason);
        const auto target = banks.target(reason);
        ASSERT_TRUE(image && target) << reason;
        ImageBurn(flash, banks, m_stopping).run(*image, *target, [](int) {});
    }
    /// What the phone runs after a start, which has to be a bank that is whole.
    static std::string start(FlashPort& flash, bool isConfirmed) {
        const std::string version = startAsItIs(flash, isConfirmed);
        EXPECT_NE(version, "none");
        return version;
    }
    static std::string startAsItIs(FlashPort& flash, bool isConfirmed) {
        SoftwareBanks banks(flash, ImageBurn::isPayloadWhole);
        banks.start();
        const SoftwareBanks::View now = banks.view();
        if (isConfirmed) {
            banks.confirm();
        }
        return now.running == Bank::eNone ? "none" : now.of(now.running).header->version.text();
    }

    TemporaryDirectory m_directory;
    TestPorts m_log{kLogError};
    std::atomic<bool> m_stopping{false};
};

TEST_F(BurnFaultsTest, EachAccessThatFailsLeavesTheOldSoftwareAndTheNextBurnWorks) {
    ModelFlash counted;
    prepare(counted);
    SoftwareBanks first(counted, ImageBurn::isPayloadWhole);
    first.start();
    const long before = counted.accesses;
    burnInto(counted, first);
    const long all = counted.accesses - before;
    ASSERT_GT(all, 15);
    long failed = 0;
    for (long failing = 1; failing <= all; ++failing) {
        SCOPED_TRACE("access " + std::to_string(failing));
        ModelFlash flash;
        prepare(flash);
        SoftwareBanks banks(flash, ImageBurn::isPayloadWhole);
        banks.start();
        flash.accesses = 0;
        flash.failOnce(failing);
        try {
            burnInto(flash, banks);
        } catch (const StorageError& error) {
            ++failed;
            EXPECT_STREQ(error.what(), "the flash memory hiccups");
            EXPECT_EQ(flash.bytes("bank-a.img"), kOld);
            ModelFlash copy = flash;
            copy.onAccess = nullptr;
            EXPECT_EQ(start(copy, true), "1.0.0");
            // Without a restart, too.
            flash.onAccess = nullptr;
            burnInto(flash, banks);
        }
        flash.onAccess = nullptr;
        EXPECT_EQ(start(flash, true), "2.0.0");
        EXPECT_EQ(start(flash, false), "2.0.0");
    }
    EXPECT_GE(failed, all - 1) << "only what is tidied up at the end may fail unseen";
}

TEST_F(BurnFaultsTest, FlashMemoryThatStaysBrokenLeavesABankThatStarts) {
    ModelFlash counted;
    prepare(counted);
    burn(counted);
    for (long failing = 1; failing <= counted.accesses; ++failing) {
        SCOPED_TRACE("from access " + std::to_string(failing));
        ModelFlash flash;
        prepare(flash);
        flash.failFrom(failing);
        try {
            burn(flash);
        } catch (const StorageError&) {
        }
        flash.onAccess = nullptr;
        start(flash, false);
        EXPECT_EQ(start(flash, false), "1.0.0");
    }
}

// The power fails at each access of a burn, of the trial start and of its confirmation; what had
// not been synchronized is there, is not, or is there in part.
TEST_F(BurnFaultsTest, APowerCutAtAnyMomentLeavesABankThatStarts) {
    std::mt19937 random(20260301);
    int news = 0;
    int olds = 0;
    for (int seed = 0; seed < 6; ++seed) {
        for (long cut = 1;; ++cut) {
            SCOPED_TRACE("seed " + std::to_string(seed) + ", access " + std::to_string(cut));
            ModelFlash flash;
            prepare(flash);
            flash.failFrom(cut);
            try {
                burn(flash);
                startAsItIs(flash, true);
            } catch (const StorageError&) {
            }
            const bool isCut = flash.accesses >= cut;
            flash.onAccess = nullptr;
            flash.cutPower(random);
            const std::string first = start(flash, false);
            ++(first == "2.0.0" ? news : olds);
            EXPECT_TRUE(first == "1.0.0" || first == "2.0.0") << first;
            // Whatever it was, the phone gets the new software at the next attempt.
            if (start(flash, true) == "1.0.0") {
                burn(flash);
                EXPECT_EQ(start(flash, true), "2.0.0");
            }
            EXPECT_EQ(start(flash, false), "2.0.0");
            if (!isCut || ::testing::Test::HasFailure()) {
                break;
            }
        }
    }
    EXPECT_GT(news, 0);
    EXPECT_GT(olds, 0);
}

// There is no marker yet, and no bank to go back to: what was installed is the way back.
TEST_F(BurnFaultsTest, AFirstBurnThatIsCutOffOrNotConfirmedLeavesWhatWasInstalled) {
    std::mt19937 random(11);
    int news = 0;
    for (int seed = 0; seed < 6; ++seed) {
        for (long cut = 1;; ++cut) {
            SCOPED_TRACE("seed " + std::to_string(seed) + ", access " + std::to_string(cut));
            ModelFlash flash;
            flash.failFrom(cut);
            try {
                burn(flash);
            } catch (const StorageError&) {
            }
            const bool isCut = flash.accesses >= cut;
            flash.onAccess = nullptr;
            flash.cutPower(random);
            news += startAsItIs(flash, false) == "2.0.0" ? 1 : 0;
            EXPECT_EQ(startAsItIs(flash, false), "none");
            if (!isCut || ::testing::Test::HasFailure()) {
                break;
            }
        }
    }
    EXPECT_GT(news, 0);
}

TEST_F(BurnFaultsTest, WhatHasHappenedSurvivesAPowerCut) {
    std::mt19937 random(3);
    for (int round = 0; round < 30; ++round) {
        SCOPED_TRACE(round);
        ModelFlash flash;
        prepare(flash);
        burn(flash);
        flash.cutPower(random);
        EXPECT_EQ(start(flash, false), "2.0.0") << "what was reported as burnt is tried";
        flash.cutPower(random);
        EXPECT_EQ(start(flash, false), "1.0.0") << "the trial was counted before it began";
        burn(flash);
        EXPECT_EQ(start(flash, true), "2.0.0");
        flash.cutPower(random);
        EXPECT_EQ(start(flash, false), "2.0.0") << "it was confirmed";
    }
}

// Cut after cut, in burns, starts and confirmations, with bits that flip in between.
TEST_F(BurnFaultsTest, NoSequenceOfCutsAndFlippedBitsLeavesThePhoneWithoutABank) {
    std::mt19937 random(7);
    ModelFlash flash;
    prepare(flash);
    for (int round = 0; round < 400 && !::testing::Test::HasFailure(); ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        flash.failFrom(flash.accesses + 1 + static_cast<long>(random() % 60));
        try {
            SoftwareBanks banks(flash, ImageBurn::isPayloadWhole);
            banks.start();
            if (random() % 2 == 0) {
                banks.confirm();
            }
            std::string reason;
            if (banks.target(reason)) {
                burnInto(flash, banks);
            }
        } catch (const StorageError&) {
        }
        flash.onAccess = nullptr;
        flash.cutPower(random);
        // A flipped bit while the other bank is whole; of two damaged ones nobody can start.
        ModelFlash copy = flash;
        SoftwareBanks banks(copy, ImageBurn::isPayloadWhole);
        banks.start();
        const bool bothWhole = banks.view().of(Bank::eA).header && banks.view().of(Bank::eB).header;
        std::string& bytes = flash.bytes(random() % 4 == 0 && flash.has("boot") ? "boot"
                                         : random() % 2 == 0                    ? "bank-a.img"
                                         : bothWhole                            ? "bank-b.img"
                                                                                : "bank-a.img");
        if (bothWhole && !bytes.empty()) {
            bytes[random() % bytes.size()] ^= 4;
        }
        start(flash, random() % 2 == 0);
    }
}

TEST_F(BurnFaultsTest, WhatTheMediumDoesNotKeepIsNoticed) {
    struct ForgetfulFlash : ModelFlash {
        void sync(File file) override {
            ModelFlash::sync(file);
            if (has("bank-b.img.new")) {
                bytes("bank-b.img.new")[at] ^= 1;
            }
        }
        std::size_t at = 0;
    };
    for (const std::size_t at : {std::size_t{3}, std::size_t{300}, kNew.size() - 1}) {
        ForgetfulFlash flash;
        flash.at = at;
        prepare(flash);
        try {
            burn(flash);
            ADD_FAILURE() << at;
        } catch (const StorageError& error) {
            EXPECT_STREQ(error.what(), "what comes back from the flash memory is not the image");
        }
        EXPECT_FALSE(flash.has("bank-b.img.new"));
        EXPECT_EQ(start(flash, true), "1.0.0");
    }
}

TEST_F(BurnFaultsTest, AFullMediumKeepsTheOldSoftware) {
    for (const std::uint64_t room :
         {kOld.size() + 100, kOld.size() + 500'000, kOld.size() + kNew.size() + 100}) {
        ModelFlash flash;
        flash.room = room;
        prepare(flash);
        EXPECT_THROW(burn(flash), StorageError) << room;
        EXPECT_EQ(start(flash, true), "1.0.0");
        EXPECT_FALSE(flash.has("bank-b.img.new"));
    }
}

long rounds() {
    const char* const wanted = std::getenv("VIREO_BURN_ROUNDS");
    return wanted != nullptr ? std::atol(wanted) : 40;
}

/// Burns for ever; each burn ends with the start of what was burnt and its confirmation. A byte for
/// each of them goes to `told`.
[[noreturn]] void burnForEver(const std::string& root, const std::string& image, int told) {
    FlashDirectory flash(root, "flash");
    std::atomic<bool> stopping{false};
    for (;;) {
        SoftwareBanks banks(flash, ImageBurn::isPayloadWhole);
        banks.start();
        banks.confirm();
        std::string reason;
        const auto opened = ImageFile::open(image, reason);
        const auto target = banks.target(reason);
        if (!opened || !target) {
            ::_exit(1);
        }
        ImageBurn(flash, banks, stopping).run(*opened, *target, [](int) {});
        if (::write(told, "x", 1) != 1) {
            ::_exit(1);
        }
    }
}

TEST_F(BurnFaultsTest, AProcessThatIsKilledAtAnyMomentLeavesABankThatStarts) {
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const std::string root = m_directory.file("root");
    std::filesystem::create_directories(root + "/flash");
    writeFile(root + "/flash/bank-a.img", kOld);
    writeFile(root + "/flash/boot", BootMarker{.bank = Bank::eA}.text());
    long burnt = 0;
    long interrupted = 0;
    for (long round = 0; round < rounds() && !HasFailure(); ++round) {
        int told[2];
        ASSERT_EQ(::pipe(told), 0);
        const pid_t child = ::fork();
        if (child == 0) {
            burnForEver(root, m_directory.file("image"), told[1]);
        }
        ::close(told[1]);
        ::usleep(static_cast<useconds_t>(random() % 30'000));
        ::kill(child, SIGKILL);
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFSIGNALED(status)) << "it has ended by itself";
        char bytes[64];
        burnt += std::max<ssize_t>(0, ::read(told[0], bytes, sizeof bytes));
        ::close(told[0]);
        interrupted += std::filesystem::exists(root + "/flash/bank-a.img.new") ||
                       std::filesystem::exists(root + "/flash/bank-b.img.new");
        FlashDirectory flash(root, "flash");
        const std::string version = start(flash, random() % 2 == 0);
        EXPECT_TRUE(version == "1.0.0" || version == "2.0.0") << "round " << round;
    }
    EXPECT_GT(interrupted, 0);
    std::printf("%ld rounds, %ld burns that ended, %ld that were seen to be interrupted\n",
                rounds(), burnt, interrupted);
}

}  // namespace
}  // namespace vireo::test
