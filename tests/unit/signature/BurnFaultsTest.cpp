#include <gtest/gtest.h>

#include <random>

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

    /// Lets the flash memory fail from each access of `act` on, and looks at what is there when it
    /// works again: everything in the first round, otherwise what a loss of power leaves, in which
    /// that which was not synchronized is there, is not, or is there in part.
    template <class Act, class Check>
    static void cutAtEachAccess(Act act, Check check) {
        std::mt19937 random(20260301);
        for (int round = 0; round < 7; ++round) {
            bool isCut = true;
            for (long cut = 1; isCut && !HasFailure(); ++cut) {
                SCOPED_TRACE("round " + std::to_string(round) + ", access " + std::to_string(cut));
                ModelFlash flash;
                flash.failFrom(cut);
                try {
                    act(flash);
                } catch (const StorageError&) {
                }
                isCut = flash.accesses >= cut;
                flash.onAccess = nullptr;
                if (round > 0) {
                    flash.cutPower(random);
                }
                check(flash);
            }
        }
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

// The power fails at each access of a burn, of the trial start and of its confirmation.
TEST_F(BurnFaultsTest, APowerCutAtAnyMomentLeavesABankThatStarts) {
    const auto burnAndConfirm = [this](ModelFlash& flash) {
        prepare(flash);
        burn(flash);
        startAsItIs(flash, true);
    };
    int news = 0;
    int olds = 0;
    cutAtEachAccess(burnAndConfirm, [&](ModelFlash& flash) {
        const std::string first = start(flash, false);
        ++(first == "2.0.0" ? news : olds);
        EXPECT_TRUE(first == "1.0.0" || first == "2.0.0") << first;
        // Whatever it was, the phone gets the new software at the next attempt.
        if (start(flash, true) == "1.0.0") {
            burn(flash);
            EXPECT_EQ(start(flash, true), "2.0.0");
        }
        EXPECT_EQ(start(flash, false), "2.0.0");
    });
    EXPECT_GT(news, 0);
    EXPECT_GT(olds, 0);
}

// There is no marker yet, and no bank to go back to: what was installed is the way back.
TEST_F(BurnFaultsTest, AFirstBurnThatIsCutOffOrNotConfirmedLeavesWhatWasInstalled) {
    int news = 0;
    cutAtEachAccess([this](ModelFlash& flash) { burn(flash); },
                    [&](ModelFlash& flash) {
                        news += startAsItIs(flash, false) == "2.0.0" ? 1 : 0;
                        EXPECT_EQ(startAsItIs(flash, false), "none");
                    });
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

}  // namespace
}  // namespace vireo::test
