#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "LocalMgmtCallbackIfc.h"
#include "harness/Failure.h"
#include "rows/Rows.h"
#include "support/FtpServer.h"
#include "support/HttpsServer.h"

namespace vireo::bench {
namespace {

using Clock = std::chrono::steady_clock;
using Source = LocalMgmtClient::DownloadSource;

constexpr auto kType = LocalMgmtIfc::FILETYPE_MIDLET;  // of any size
constexpr const char* kFile = "f";
constexpr double kMebi = 1024.0 * 1024;

double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

/// Hears how a download goes on.
class Follower : public LocalMgmtCallbackIfc {
public:
    bool requestShutdown() override { return true; }
    bool informDownloadProgress(int percent, std::string) override {
        m_percent = percent;
        return true;
    }
    bool informDownloadCompletion(std::string) override {
        m_isComplete = true;
        return true;
    }
    void begin() { m_percent = 0, m_isComplete = false; }
    bool isComplete() const {
        require(m_percent >= 0, "a download failed, see the log");
        return m_isComplete;
    }
    bool isNearEnd() const { return isComplete() || m_percent == 99; }

private:
    int m_percent = 0;
    bool m_isComplete = false;
};

/// A vireod with the sample configuration, which has the items of downloads, and a client.
class FetchingPhone {
public:
    FetchingPhone(const Places& places, const std::string& authority)
        : m_files(places.files), m_sockets(places.sockets) {
        const std::string root = m_files.file("root");
        std::filesystem::create_directories(root + "/certificates/authorities");
        std::filesystem::permissions(root, std::filesystem::perms::owner_all);
        std::ofstream(root + "/certificates/authorities/a.pem") << authority;
        m_process = Process::run({VIREOD, "--config", VIREO_CONFIG, "--root", root, "--socket",
                                  m_sockets.file("vireo.sock")},
                                 "vireod: ready on", places.log);
        LocalMgmtClient::Options options;
        options.socketPath = m_sockets.file("vireo.sock");
        options.channelName = "bench-*";
        options.callback = &m_follower;
        std::string error;
        m_client = LocalMgmtClient::connect(options, error);
        require(m_client != nullptr, error.c_str());
    }

    void start(const Source& source) {
        std::filesystem::remove(m_files.file("root/data/vireo/midlets/") + kFile);
        m_follower.begin();
        bool isStarted = false;
        require(m_client->startDownloadFrom(source, kType, false, isStarted) == CallStatus::eDone &&
                    isStarted,
                "a download was not started");
    }
    void waitForNearEnd() {
        while (!m_follower.isNearEnd()) {
            serve();
        }
    }
    void waitForEnd() {
        while (!m_follower.isComplete()) {
            serve();
        }
    }
    double residentBytes() const { return bench::residentBytes(m_process.pid()); }
    double peakBytes() const { return bench::peakBytes(m_process.pid()); }

private:
    void serve() {
        require(m_client->serve(std::chrono::seconds(60)) != CallStatus::eDisconnected,
                "the phone has gone");
    }

    ScratchDirectory m_files;
    ScratchDirectory m_sockets;
    Process m_process;
    Follower m_follower;
    std::unique_ptr<LocalMgmtClient> m_client;
};

/// A file for both kinds of server.
void makeFile(const ScratchDirectory& served, std::size_t size) {
    std::filesystem::create_directories(served.file("home"));
    std::ofstream file(served.file("home/") + kFile, std::ios::binary);
    std::string block(1U << 20U, '\0');
    unsigned state = 1;
    for (std::size_t written = 0; written < size; written += block.size()) {
        for (char& each : block) {
            each = static_cast<char>((state = state * 1664525U + 1013904223U) >> 24U);
        }
        file.write(block.data(),
                   static_cast<std::streamsize>(std::min(block.size(), size - written)));
    }
}

Source ftpSource(const test::FtpServer& server) {
    return {LocalMgmtIfc::DOWNLOAD_FTP, "127.0.0.1", server.port(), "a@b", "p/w:#", "", kFile};
}

struct Route {
    const char* name;
    Source source;
    std::vector<std::string> curlArguments;
};

void compareWithCurl(Bench& bench, FetchingPhone& phone, const Route& route) {
    const ScratchDirectory own(bench.places.files);
    const std::string target = own.file(kFile);
    std::vector<std::string> command = {"curl", "-s", "-f", "-o", target};
    command.insert(command.end(), route.curlArguments.begin(), route.curlArguments.end());
    Comparison comparison;
    const std::size_t measured = comparison.addTimed([&](unsigned) {
        const auto start = Clock::now();
        phone.start(route.source);
        phone.waitForEnd();
        return secondsSince(start);
    });
    const std::size_t rival = comparison.addTimed([&](unsigned) {
        std::filesystem::remove(target);
        const auto start = Clock::now();
        require(test::ChildProcess::run(command).exitCode == 0 &&
                    test::ChildProcess::run({"sync", target}).exitCode == 0,
                "curl failed");
        return secondsSince(start);
    });
    comparison.runSingly(bench.pace.heavyRounds);
    bench.report.add(std::to_string(bench.largeFile / 1'000'000) + " MB over " + route.name,
                     "curl, then sync", comparison, measured, rival, Goal::atLeast(1.3));
}

void addNumber(Report& report, const char* measured, const char* against, double value,
               const char* unit, Goal goal) {
    Row row;
    row.measured = measured;
    row.against = against;
    row.value.median = value;
    row.unit = unit;
    row.goal = goal;
    report.add(std::move(row));
}

/// From the moment when the last byte may leave the server, to the callback, which hears of the end
/// after the status item is on stable storage.
void measureLastByte(Bench& bench, FetchingPhone& phone, const ScratchDirectory& served) {
    const std::string gate = served.file("gate");
    require(::mkfifo(gate.c_str(), 0600) == 0, "a pipe cannot be made");
    const test::FtpServer server(served.path(), "", static_cast<long>(bench.largeFile) - 1, gate);
    Comparison comparison;
    const std::size_t measured = comparison.addTimed([&](unsigned) {
        phone.start(ftpSource(server));
        phone.waitForNearEnd();
        ::close(::open(gate.c_str(), O_WRONLY | O_CLOEXEC));  // the server waits from now on
        const auto start = Clock::now();
        phone.waitForEnd();
        return secondsSince(start) * 1000;
    });
    comparison.runSingly(bench.pace.heavyRounds);
    addNumber(bench.report, "last byte to status item and callback", "nothing",
              comparison.medianOf(measured), "ms", Goal::none());
}

}  // namespace

void measureDownloads(Bench& bench) {
    require(test::FtpServer::isInstalled() && test::HttpsServer::isInstalled() &&
                test::ChildProcess::run({"curl", "--version"}).exitCode == 0,
            "pyftpdlib, nginx, openssl or curl is missing");
    // A file server is another machine, with a processor of its own.
    const AnyProcessor forServers;
    const ScratchDirectory served(bench.places.files);
    makeFile(served, bench.largeFile);
    const test::FtpServer ftp(served.path());
    const test::HttpsServer https(served.file("home"));
    const std::string authority = https.certificate("authority.pem");
    std::ofstream(served.file("authority.pem")) << authority;
    FetchingPhone phone(bench.places, authority);
    const double before = phone.residentBytes();
    const std::string& port = https.port(test::HttpsServer::eGood);
    compareWithCurl(bench, phone,
                    {"FTP",
                     ftpSource(ftp),
                     {"--user", "a@b:p/w:#", "ftp://127.0.0.1:" + ftp.port() + "/" + kFile}});
    compareWithCurl(
        bench, phone,
        {"HTTPS",
         {LocalMgmtIfc::DOWNLOAD_HTTPS, "127.0.0.1", port, "", "", "", kFile},
         {"--cacert", served.file("authority.pem"), "https://127.0.0.1:" + port + "/" + kFile}});
    addNumber(bench.report, "most memory during downloads", "itself before",
              (phone.peakBytes() - before) / kMebi, "MiB", Goal::atMost(8));
    measureLastByte(bench, phone, served);
}

}  // namespace vireo::bench
