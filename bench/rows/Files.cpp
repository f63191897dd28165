#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <list>
#include <memory>
#include <string>
#include <utility>

#include "LocalMgmtClient.h"
#include "harness/Failure.h"
#include "rows/Rows.h"
#include "support/ChildProcess.h"

namespace vireo::bench {
namespace {

constexpr std::size_t kFileSize = 1024;

/// So many files of one type, a tenth of them defaults: half of these are links, the others were
/// replaced by the user's files, which differ in the last byte.
struct Directory {
    const char* type;
    const char* name;
    unsigned files;
    unsigned defaults() const { return files / 10; }
    unsigned replaced() const { return defaults() / 2; }
};

constexpr std::array kDirectories = {Directory{"images", "images/", 100},
                                     Directory{"screensaver", "screensavers/", 1'000},
                                     Directory{"ringer", "ringtones/", 10'000}};

void write(const std::string& path, char last) {
    std::ofstream file(path, std::ios::binary);
    file << std::string(kFileSize - 1, 'a') << last;
    require(static_cast<bool>(file.flush()), "cannot write a file");
}

void fill(const std::string& deployed, const std::string& own, const Directory& directory) {
    std::filesystem::create_directories(deployed);
    std::filesystem::create_directories(own);
    for (unsigned i = 0; i < directory.files; ++i) {
        const bool isReplaced = i < directory.replaced();
        const bool isLink = !isReplaced && i < directory.defaults();
        const std::string name = (isReplaced ? "/replaced-" : "/file-") + std::to_string(i);
        if (isReplaced || isLink) {
            write(deployed + name, 'a');
        }
        if (!isLink) {
            write(own + name, 'b');
        }
    }
}

/// A vireod with such directories, and a client.
class FilledPhone {
public:
    explicit FilledPhone(const Places& places) : m_files(places.files), m_sockets(places.sockets) {
        const std::string root = m_files.file("root");
        std::filesystem::create_directory(root);
        std::filesystem::permissions(root, std::filesystem::perms::owner_all);
        for (const Directory& each : kDirectories) {
            fill(deployed(each), own(each), each);
        }
        LocalMgmtClient::Options options;
        options.socketPath = m_sockets.file("vireo.sock");
        options.channelName = "bench-*";
        m_process = Process::run(
            {VIREOD, "--config", VIREO_CONFIG, "--root", root, "--socket", options.socketPath},
            "vireod: ready on", places.log);
        std::string error;
        m_client = LocalMgmtClient::connect(options, error);
        require(m_client != nullptr, error.c_str());
    }

    std::string deployed(const Directory& directory) const {
        return m_files.file("root/Vireo_Deploy/") + directory.name;
    }
    std::string own(const Directory& directory) const {
        return m_files.file("root/data/vireo/") + directory.name;
    }
    void list(const Directory& directory) {
        std::list<std::string> files;
        require(m_client->getListOfFilesOfType(directory.type, files) == CallStatus::eDone &&
                    files.size() == directory.files,
                "a list has not come, or not all of it");
    }
    /// What a shell script would do to know as much: the files, and whether those that bear the
    /// name of a default differ from it.
    void listByCommands(const Directory& directory) const {
        const auto ended = test::ChildProcess::run(
            {"sh", "-c",
             "ls -l \"$1\" > /dev/null || exit 2\n"
             "for each in \"$1\"replaced-*; do\n"
             "    cmp -s \"$each\" \"$0${each##*/}\"; [ $? -eq 1 ] || exit 2\n"
             "done",
             deployed(directory), own(directory)});
        require(ended.exitCode == 0, "ls or cmp failed");
    }

private:
    ScratchDirectory m_files;
    ScratchDirectory m_sockets;
    Process m_process;
    std::unique_ptr<LocalMgmtClient> m_client;
};

struct Case {
    const Directory& directory;
    std::size_t own;
    std::size_t rival;
};

void reportGrowth(Report& report, const Comparison& comparison, const Case& large,
                  const Case& small, Goal goal) {
    const double factor = static_cast<double>(small.directory.files) / large.directory.files;
    Row row;
    row.measured = "list, time per name at " + std::to_string(large.directory.files);
    row.against = "at " + std::to_string(small.directory.files);
    row.value = comparison.ratio(large.own, small.own);
    row.value.median *= factor;
    row.value.lowerQuartile *= factor;
    row.value.upperQuartile *= factor;
    row.goal = goal;
    row.rounds = comparison.rounds();
    report.add(std::move(row));
}

void reportTime(Report& report, const Comparison& comparison, const Case& each) {
    Row row;
    row.measured = "list of " + std::to_string(each.directory.files) + " files, time per name";
    row.against = "nothing";
    row.value.median = comparison.medianOf(each.own) * 1e6 / each.directory.files;
    row.unit = "us";
    report.add(std::move(row));
}

}  // namespace

void measureFiles(Bench& bench) {
    FilledPhone phone(bench.places);
    Comparison comparison;
    std::list<Case> cases;
    for (const Directory& each : kDirectories) {
        phone.list(each);  // the first one may have links to make
        const auto own = comparison.add([&phone, &each](unsigned count) {
            for (unsigned i = 0; i < count; ++i) {
                phone.list(each);
            }
        });
        const auto rival = comparison.add([&phone, &each](unsigned count) {
            for (unsigned i = 0; i < count; ++i) {
                phone.listByCommands(each);
            }
        });
        cases.push_back({each, own, rival});
    }
    comparison.run(bench.pace.heavyRounds, bench.pace.sliceSeconds);
    for (const Case& each : cases) {
        bench.report.add("list of " + std::to_string(each.directory.files) + " files",
                         "ls -l, and cmp of replaced defaults", comparison, each.own, each.rival,
                         Goal::none());
        reportTime(bench.report, comparison, each);
    }
    const Case& hundred = cases.front();
    const Case& thousand = *std::next(cases.begin());
    reportGrowth(bench.report, comparison, thousand, hundred, Goal::none());
    reportGrowth(bench.report, comparison, cases.back(), thousand, Goal::atMost(1.5));
}

}  // namespace vireo::bench
