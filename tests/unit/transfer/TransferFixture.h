#pragma once

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <condition_variable>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <mutex>
#include <random>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "device/AdminProgressCallback.h"
#include "files/PartialName.h"
#include "messages/FileDescriptor.h"
#include "support/FtpServer.h"
#include "support/HttpsServer.h"
#include "support/TemporaryDirectory.h"
#include "support/TestPorts.h"
#include "transfer/CurlTransfer.h"

namespace vireo::test {

/// What one transfer reports, with its rules.
class Reports : public AdminProgressCallback {
public:
    /// Called in the last report.
    std::function<void()> onEnd = [] {};

    bool progressNotify(int percent) override {
        EXPECT_NE(std::this_thread::get_id(), m_caller);
        const bool isLast = percent < 0 || percent == 100;
        if (isLast) {
            onEnd();
        }
        const std::lock_guard lock(m_mutex);
        EXPECT_EQ(0, m_end) << "report " << percent << " after the last one";
        EXPECT_TRUE(isLast || (percent < 100 && percent != m_percent)) << percent;
        (isLast ? m_end : m_percent) = percent;
        m_changed.notify_all();
        return true;
    }
    /// The last report; 0 when none comes.
    int end() {
        std::unique_lock lock(m_mutex);
        m_changed.wait_for(lock, kPatience, [this] { return m_end != 0; });
        return m_end;
    }
    bool reaches(int percent) {
        std::unique_lock lock(m_mutex);
        return m_changed.wait_for(lock, kPatience, [&] {
            return m_percent >= percent || m_end != 0;
        }) && m_end == 0;
    }

private:
    static constexpr std::chrono::seconds kPatience{60};

    const std::thread::id m_caller = std::this_thread::get_id();
    std::mutex m_mutex;
    std::condition_variable m_changed;
    int m_percent = -1;
    int m_end = 0;
};

inline std::string contentOf(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

/// Bytes that look like nothing, always the same for a seed.
inline std::string randomBytes(std::size_t size, unsigned seed) {
    std::mt19937 generator(seed);
    std::string bytes(size, '\0');
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(generator()); });
    return bytes;
}

/// A phone's storage and the files of a server. Whatever a test does, afterwards every transfer has
/// had one last report, nothing incomplete is left, and no log line has a password.
class TransferTest : public ::testing::Test {
protected:
    static constexpr long kLarge = 5'000'000;

    void TearDown() override {
        m_transfer.reset();
        for (const std::unique_ptr<Reports>& reports : m_reports) {
            EXPECT_NE(0, reports->end());
        }
        EXPECT_EQ(0U, partialFiles());
        for (const int level : {kLogError, kLogWarning, kLogInfo}) {
            EXPECT_EQ(0, ports.count(level, "p/w:#"));
        }
    }

    /// A file on the server; its directories are made.
    void serve(const std::string& path, const std::string& content) {
        const std::filesystem::path full = served.path() / path;
        std::filesystem::create_directories(full.parent_path());
        std::ofstream(full, std::ios::binary) << content;
    }
    /// Like a file that has been replaced, or not, since a fixed time.
    void setAge(const std::string& path, std::chrono::hours age) {
        using Clock = std::filesystem::file_time_type::clock;
        static const auto now = std::chrono::floor<std::chrono::seconds>(Clock::now());
        std::filesystem::last_write_time(served.path() / path, now - age);
    }
    std::string local(const std::string& name) const { return phone.file(name); }
    TransferRequest ftp(const std::string& port, const std::string& path, const std::string& file) {
        return {TransportType::eFtp, "127.0.0.1", port, "a@b", "p/w:#", path, file, local("got")};
    }
    TransferRequest https(const std::string& port, const std::string& path,
                          const std::string& file) {
        return {TransportType::eHttps, "127.0.0.1", port, "", "", path, file, local("got")};
    }
    void trust(const HttpsServer& server, const std::string& authority = "authority.pem") {
        transfer().setSecurityDetails(
            {{}, {{SecurityCertificate::eAuthority, server.certificate(authority)}}});
    }

    CurlTransfer& transfer() {
        if (!m_transfer) {
            m_transfer = std::make_unique<CurlTransfer>(phone.path().string(), options);
        }
        return *m_transfer;
    }
    /// Stops transfers as the end of the service does.
    void endTransfers() { m_transfer.reset(); }

    Reports& start(const TransferRequest& request) {
        m_reports.push_back(std::make_unique<Reports>());
        std::string error;
        EXPECT_TRUE(transfer().getFile(request, *m_reports.back(), error)) << error;
        return *m_reports.back();
    }
    int fetch(const TransferRequest& request) { return start(request).end(); }
    /// It ends well, and what has come is what is served.
    void expectFetched(const TransferRequest& request, const std::string& servedAs) {
        SCOPED_TRACE(servedAs);
        EXPECT_EQ(100, fetch(request));
        EXPECT_TRUE(contentOf(served.file(servedAs)) == contentOf(local("got")));
    }
    /// What is said when it does not even start.
    std::string refusal(const TransferRequest& request) {
        Reports reports;
        std::string error;
        EXPECT_FALSE(transfer().getFile(request, reports, error));
        return error;
    }
    std::size_t partialFiles() const {
        const std::filesystem::recursive_directory_iterator all(phone.path());
        return static_cast<std::size_t>(std::count_if(begin(all), end(all), [](const auto& entry) {
            return isPartialName(entry.path().filename().string());
        }));
    }

    TestPorts ports{kLogInfo};
    TemporaryDirectory phone;
    TemporaryDirectory served;
    TransferOptions options;

private:
    std::vector<std::unique_ptr<Reports>> m_reports;
    std::unique_ptr<CurlTransfer> m_transfer;
};

class Ftp : public TransferTest {
protected:
    void SetUp() override {
        if (!FtpServer::isInstalled()) {
            GTEST_SKIP() << "python3-pyftpdlib is missing";
        }
    }
};

class Https : public TransferTest {
protected:
    void SetUp() override {
        if (!HttpsServer::isInstalled()) {
            GTEST_SKIP() << "nginx-light or openssl is missing";
        }
    }
};

}  // namespace vireo::test
