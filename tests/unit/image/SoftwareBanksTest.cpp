#include <gtest/gtest.h>

#include <memory>

#include "image/SoftwareBanks.h"
#include "support/ImageBytes.h"
#include "support/ModelFlash.h"
#include "support/TestPorts.h"

namespace vireo::test {
namespace {

ImageHeader headerOf(const std::string& version) {
    ImageHeader header;
    header.version = *SoftwareVersion::parse(version);
    header.hardwareVariant = "desk-1";
    header.payloadSize = 10;
    return header;
}

std::string imageOf(const std::string& version) {
    return textOfBytes(headerOf(version).encode()) + "0123456789";
}

class SoftwareBanksTest : public ::testing::Test {
protected:
    /// A start of the phone: what it runs from.
    Bank start() {
        m_flash.onAccess = nullptr;
        return startAsItIs();
    }
    Bank startAsItIs() {
        m_banks = std::make_unique<SoftwareBanks>(m_flash);
        m_banks->start();
        return m_banks->view().running;
    }
    void burn(Bank bank, const std::string& version) {
        const std::string bytes = imageOf(version);
        const FlashFile file(m_flash, m_flash.create(SoftwareBanks::newFile(bank)));
        m_flash.write(file.get(), 0,
                      {reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()});
        m_flash.sync(file.get());
        m_banks->install(bank, headerOf(version));
    }
    void put(Bank bank, const std::string& bytes) {
        m_flash.put(SoftwareBanks::fileOf(bank), bytes);
    }
    void put(const BootMarker& marker) { m_flash.put(SoftwareBanks::kMarkerFile, marker.text()); }
    BootMarker marker() {
        return BootMarker::parse(m_flash.bytes(SoftwareBanks::kMarkerFile)).value();
    }
    void breakFlash() { m_flash.failFrom(0); }

    TestPorts m_log{kLogWarning};
    ModelFlash m_flash;
    std::unique_ptr<SoftwareBanks> m_banks;
};

TEST_F(SoftwareBanksTest, APhoneWithoutBanksRunsWhatWasInstalled) {
    EXPECT_EQ(start(), Bank::eNone);
    EXPECT_TRUE(m_log.lines(kLogWarning).empty());
    EXPECT_FALSE(m_flash.has(SoftwareBanks::kMarkerFile));
    std::string reason;
    EXPECT_EQ(m_banks->target(reason), Bank::eA);
    burn(Bank::eA, "1.0");
    EXPECT_EQ(m_banks->view().running, Bank::eNone);
    // Not confirmed: there is a way back to where there was no bank.
    EXPECT_EQ(start(), Bank::eA);
    EXPECT_EQ(start(), Bank::eNone);
    EXPECT_EQ(marker().failed, Bank::eA);
}

TEST_F(SoftwareBanksTest, NewSoftwareIsConfirmedOrGivesWayToTheOld) {
    put(Bank::eA, imageOf("1.0"));
    put({.bank = Bank::eA});
    ASSERT_EQ(start(), Bank::eA);
    std::string reason;
    ASSERT_EQ(m_banks->target(reason), Bank::eB);
    int changes = 0;
    m_banks->onChange([&] { ++changes; });
    burn(Bank::eB, "2.0");
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(marker(), (BootMarker{Bank::eB, true, 0, Bank::eA, Bank::eNone}));

    ASSERT_EQ(start(), Bank::eB);
    EXPECT_EQ(marker().starts, 1U);
    EXPECT_TRUE(m_banks->view().isOnTrial());
    EXPECT_FALSE(m_banks->target(reason)) << "the other bank is the way back";
    EXPECT_TRUE(m_banks->confirm());
    EXPECT_FALSE(m_banks->view().isOnTrial());
    EXPECT_EQ(marker(), (BootMarker{.bank = Bank::eB}));
    EXPECT_EQ(start(), Bank::eB);

    ASSERT_EQ(m_banks->target(reason), Bank::eA);
    burn(Bank::eA, "3.0");
    EXPECT_EQ(start(), Bank::eA);
    EXPECT_EQ(start(), Bank::eB) << "nobody has confirmed it";
    EXPECT_EQ(marker(), (BootMarker{Bank::eB, false, 0, Bank::eNone, Bank::eA}));
    EXPECT_EQ(m_log.count(kLogError,
                          "bank a (3.0.0) was started on trial and not confirmed: going back to "
                          "bank b (2.0.0)"),
              1);
    EXPECT_EQ(start(), Bank::eB);
}

TEST_F(SoftwareBanksTest, TheWayBackIsWhatHasRunAndNotWhatWasBurntBefore) {
    ASSERT_EQ(start(), Bank::eNone);
    burn(Bank::eA, "1.0");
    std::string reason;
    ASSERT_EQ(m_banks->target(reason), Bank::eB);
    burn(Bank::eB, "2.0");
    EXPECT_EQ(start(), Bank::eB);
    EXPECT_EQ(start(), Bank::eNone) << "bank a was never confirmed";
}

TEST_F(SoftwareBanksTest, ATrialThatCannotBeCountedIsNotStarted) {
    put(Bank::eA, imageOf("1.0"));
    put(Bank::eB, imageOf("2.0"));
    put({Bank::eB, true, 0, Bank::eA, Bank::eNone});
    // Each write of the count fails in turn; all readings work.
    long beforeStore = 0;
    m_flash.onAccess = [&](long number) {
        if (m_flash.has(SoftwareBanks::kNewMarkerFile) && beforeStore == 0) {
            beforeStore = number - 1;
        }
    };
    ASSERT_EQ(startAsItIs(), Bank::eB);
    ASSERT_GT(beforeStore, 0);
    const long all = m_flash.accesses;
    for (long failing = beforeStore; failing <= all; ++failing) {
        put({Bank::eB, true, 0, Bank::eA, Bank::eNone});
        m_flash.accesses = 0;
        m_flash.failFrom(failing);
        EXPECT_EQ(startAsItIs(), Bank::eA) << failing;
        EXPECT_FALSE(m_banks->view().isOnTrial());
    }
}

TEST_F(SoftwareBanksTest, AConfirmationThatCannotBeWrittenIsNone) {
    put(Bank::eA, imageOf("1.0"));
    put(Bank::eB, imageOf("2.0"));
    put({Bank::eB, true, 0, Bank::eA, Bank::eNone});
    ASSERT_EQ(start(), Bank::eB);
    breakFlash();
    EXPECT_FALSE(m_banks->confirm());
    EXPECT_TRUE(m_banks->view().isOnTrial());
    EXPECT_EQ(start(), Bank::eA);
}

TEST_F(SoftwareBanksTest, WhateverIsDamagedTheWholeBankRuns) {
    const std::string good1 = imageOf("1.0");
    const std::string good2 = imageOf("2.0");
    const std::string cut = good2.substr(0, 100);
    const BootMarker onA{.bank = Bank::eA};
    const BootMarker onB{.bank = Bank::eB};
    const BootMarker trialB{Bank::eB, true, 0, Bank::eA, Bank::eNone};
    const BootMarker triedB{Bank::eB, true, 1, Bank::eA, Bank::eNone};
    const std::string none;
    const struct {
        const char* what;
        std::string a;
        std::string b;
        std::string marker;
        Bank first;
        Bank second;
    } rows[] = {
        {"the running bank", cut, good2, onA.text(), Bank::eB, Bank::eB},
        {"the running bank, the other way", good1, cut, onB.text(), Bank::eA, Bank::eA},
        {"the spare bank", good1, cut, onA.text(), Bank::eA, Bank::eA},
        {"the new bank", good1, cut, trialB.text(), Bank::eA, Bank::eA},
        {"the new bank is gone", good1, none, trialB.text(), Bank::eA, Bank::eA},
        {"the way back", cut, good2, trialB.text(), Bank::eB, Bank::eB},
        {"the way back after a failed trial", cut, good2, triedB.text(), Bank::eB, Bank::eB},
        {"the marker", good1, good2, "VIREO-BOOT", Bank::eB, Bank::eA},
        {"the marker, the other way", good2, good1, "VIREO-BOOT", Bank::eA, Bank::eB},
        {"the marker is gone", good1, good2, none, Bank::eB, Bank::eA},
        {"the marker is too long", good1, none, onA.text() + std::string(1000, 'x'), Bank::eA,
         Bank::eA},
        {"the marker and a bank", cut, good2, "x", Bank::eB, Bank::eB},
        {"the marker and the other bank", good1, cut, "x", Bank::eA, Bank::eA},
        {"everything", cut, cut, "x", Bank::eNone, Bank::eNone},
        {"both banks", cut, cut, trialB.text(), Bank::eNone, Bank::eNone},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        m_flash = ModelFlash();
        for (const auto& [name, bytes] : {std::pair(SoftwareBanks::fileOf(Bank::eA), row.a),
                                          {SoftwareBanks::fileOf(Bank::eB), row.b},
                                          {SoftwareBanks::kMarkerFile, row.marker}}) {
            if (!bytes.empty()) {
                m_flash.put(name, bytes);
            }
        }
        EXPECT_EQ(start(), row.first);
        EXPECT_EQ(start(), row.second);
        EXPECT_EQ(start(), row.second);
    }
}

TEST_F(SoftwareBanksTest, AStartWithoutFlashMemoryIsOneToo) {
    put(Bank::eA, imageOf("1.0"));
    put({.bank = Bank::eA});
    breakFlash();
    EXPECT_EQ(startAsItIs(), Bank::eNone);
    EXPECT_GE(m_log.count(kLogError, "the flash memory is broken"), 2);
    EXPECT_EQ(start(), Bank::eA);
}

TEST_F(SoftwareBanksTest, ABankThatCouldNotBeReadAtTheStartIsStillTheWayBack) {
    put(Bank::eA, imageOf("1.0"));
    put({.bank = Bank::eA});
    m_flash.failOnce(4);  // the image is opened
    ASSERT_EQ(startAsItIs(), Bank::eNone);
    m_flash.onAccess = nullptr;
    std::string reason;
    ASSERT_EQ(m_banks->target(reason), Bank::eB);
    burn(Bank::eB, "2.0");
    EXPECT_EQ(start(), Bank::eB);
    EXPECT_EQ(start(), Bank::eA);
}

TEST_F(SoftwareBanksTest, WhatAnInterruptedBurnLeftIsRemoved) {
    m_flash.put("bank-a.img.new", "half");
    m_flash.put("bank-b.img.new", "half");
    m_flash.put("boot.new", "half");
    EXPECT_EQ(start(), Bank::eNone);
    for (const char* name : {"bank-a.img.new", "bank-b.img.new", "boot.new"}) {
        EXPECT_FALSE(m_flash.has(name)) << name;
    }
}

}  // namespace
}  // namespace vireo::test
