#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>

#include "support/FtpServer.h"
#include "support/RunningPhone.h"

namespace vireo::test {

inline std::string contents(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// A WAVE file of silence: 8000 samples of 8 bits in a second.
inline std::string silence(std::uint32_t samples) {
    const auto number = [](std::uint32_t value, int bytes) {
        std::string text;
        for (int i = 0; i < bytes; ++i) {
            text += static_cast<char>(value >> (8 * i));
        }
        return text;
    };
    return "RIFF" + number(36 + samples, 4) + "WAVEfmt " + number(16, 4) + number(1, 2) +
           number(1, 2) + number(8000, 4) + number(8000, 4) + number(1, 2) + number(8, 2) + "data" +
           number(samples, 4) + std::string(samples, '\x80');
}

/// A phone and an FTP server that it is set up for.
class DownloadSystem : public testing::Test {
protected:
    void SetUp() override {
        if (!FtpServer::isInstalled()) {
            GTEST_SKIP() << "there is no pyftpdlib on this machine";
        }
        std::filesystem::create_directories(home());
        m_gate = m_directory.file("gate");
        ASSERT_EQ(::mkfifo(m_gate.c_str(), 0600), 0);
        put("bell.wav", silence(20000));
        put("small.png", std::string(2000, 'p'));
        put("large.png", std::string(300001, 'p'));
        put("cut.wav", silence(20000).substr(0, 9000));
        put("foreign", std::string(100000, 'i'));
    }

    /// With `hold`, each file stops after so many bytes until `openGate`.
    void serve(long hold = 0) {
        m_server.emplace(m_directory.path().string(), "", hold, hold > 0 ? m_gate : "");
        set({"dl-ftp-addr=127.0.0.1", "dl-ftp-port=" + m_server->port(),
             "dl-ftp-path=", "dl-ftp-username=a@b", "dl-ftp-password=p/w:#"});
    }
    void endServer() { m_server.reset(); }
    void openGate() { ::close(::open(m_gate.c_str(), O_WRONLY | O_CLOEXEC)); }
    void set(std::vector<std::string> items) {
        items.insert(items.begin(), "set");
        const Outcome written = phone.ctl(items);
        ASSERT_EQ(written.exitCode, 0) << written.err;
    }
    std::string valueOf(const std::string& tag) {
        const std::string line = phone.ctl({"get", tag}).out;
        return line.substr(0, line.size() - 1).substr(tag.size() + 3);
    }
    std::filesystem::path home() const { return m_directory.path() / "home"; }
    void put(const std::string& name, const std::string& bytes) const {
        std::ofstream(home() / name, std::ios::binary) << bytes;
    }
    std::string stored(const std::string& path) const {
        return phone.root() + "/data/vireo/" + path;
    }
    std::vector<std::string> command(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), {VIREOCTL, "--socket", phone.socket()});
        return arguments;
    }

    /// Waits until half of a file has come, where the server holds it.
    void waitForHalf(const std::string& type) const {
        while (phone.ctl({"download-status", type}).out != type + ": 50 %\n") {
        }
    }

    RunningPhone phone;

private:
    TemporaryDirectory m_directory;
    std::string m_gate;
    std::optional<FtpServer> m_server;
};

}  // namespace vireo::test
