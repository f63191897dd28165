#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "device/AdminProgressCallback.h"
#include "image/FlashDirectory.h"
#include "signature/ImageBurn.h"
#include "signature/SignedImages.h"
#include "support/SignedImage.h"
#include "support/TemporaryDirectory.h"
#include "support/TestPorts.h"

namespace vireo::test {
/// Keeps the reports of a burn; holds the burn at a report until it may go on.
class Reports : public AdminProgressCallback {
public:
    bool progressNotify(int percent) override {
        std::unique_lock lock(m_mutex);
        m_reports.push_back(percent);
        m_changed.notify_all();
        m_changed.wait(lock, [this] { return m_mayGoOn; });
        return true;
    }
    void hold() { setMayGoOn(false); }
    void goOn() { setMayGoOn(true); }
    /// Waits for the last report of a burn and answers all of them.
    std::vector<int> all() {
        await([this] {
            return !m_reports.empty() && (m_reports.back() < 0 || m_reports.back() == 99);
        });
        return m_reports;
    }
    void awaitFirst() {
        await([this] { return !m_reports.empty(); });
    }

private:
    template <class Condition>
    void await(Condition condition) {
        std::unique_lock lock(m_mutex);
        EXPECT_TRUE(m_changed.wait_for(lock, std::chrono::seconds(30), condition));
    }
    void setMayGoOn(bool mayGoOn) {
        const std::lock_guard lock(m_mutex);
        m_mayGoOn = mayGoOn;
        m_changed.notify_all();
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<int> m_reports;
    bool m_mayGoOn = true;
};

/// Flash memory of which only so much is free.
class QuotaFlash : public FlashDirectory {
public:
    using FlashDirectory::FlashDirectory;
    std::uint64_t freeBytes() override { return std::min(quota, FlashDirectory::freeBytes()); }
    std::uint64_t quota = std::uint64_t{1} << 40U;
};

/// A phone with two trusted keys and no bank.
class SignedImagesFixture : public ::testing::Test {
protected:
    void SetUp() override {
        std::filesystem::create_directories(root() + "/keys");
        writeFile(root() + "/keys/one.pem", keyNumber(1).publicKey().pem());
        writeFile(root() + "/keys/two.pem", keyNumber(2).publicKey().pem());
        open();
    }

    /// The phone starts.
    void open() {
        m_images.reset();
        m_flash = std::make_unique<QuotaFlash>(root(), "flash");
        m_banks = std::make_unique<SoftwareBanks>(*m_flash, ImageBurn::isPayloadWhole);
        m_banks->start();
        m_images = std::make_unique<SignedImages>(*m_flash, *m_banks,
                                                  ImagePolicy{"desk-1", root() + "/keys", false});
    }
    std::string root() const { return m_directory.file("root"); }
    std::string bank(char letter) const {
        return readFile(root() + "/flash/bank-" + letter + ".img");
    }
    std::string write(const std::string& content) const {
        writeFile(m_directory.file("image"), content);
        return m_directory.file("image");
    }
    std::vector<int> burn(const std::string& content) {
        Reports& reports = newReports();
        std::string error;
        EXPECT_TRUE(m_images->burn(write(content), reports, error)) << error;
        std::vector<int> all = reports.all();
        EXPECT_FALSE(m_images->isActive()) << "who hears the end may start again";
        return all;
    }
    /// They live as long as the thread that burns.
    Reports& newReports() { return m_reports.emplace_back(); }
    void runFrom(const std::string& content) {
        ASSERT_EQ(burn(content).back(), SignedImages::kDone);
        open();
        ASSERT_TRUE(m_banks->confirm());
    }
    std::vector<std::string> names() const {
        std::vector<std::string> all;
        for (const auto& each : std::filesystem::directory_iterator(root() + "/flash")) {
            all.push_back(each.path().filename());
        }
        std::sort(all.begin(), all.end());
        return all;
    }

    TemporaryDirectory m_directory;
    TestPorts m_log{kLogError};
    std::deque<Reports> m_reports;
    std::unique_ptr<QuotaFlash> m_flash;
    std::unique_ptr<SoftwareBanks> m_banks;
    std::unique_ptr<SignedImages> m_images;
};

}  // namespace vireo::test
