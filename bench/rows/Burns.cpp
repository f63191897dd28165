#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "image/FlashDirectory.h"
#include "rows/Rows.h"
#include "signature/ImageBurn.h"
#include "signature/Sha256.h"
#include "signature/SignatureKey.h"

namespace vireo::bench {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kPayload = std::size_t{64} << 20U;
constexpr double kMebi = 1024.0 * 1024.0;

double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

/// Knows when everything was written and synchronized, and the reading back begins.
class TimedFlash : public FlashDirectory {
public:
    using FlashDirectory::FlashDirectory;
    void sync(File file) override {
        FlashDirectory::sync(file);
        m_synced = Clock::now();
    }
    void rename(const std::string& from, const std::string& to) override {
        if (from != SoftwareBanks::kNewMarkerFile) {
            readBack = secondsSince(m_synced);
        }
        FlashDirectory::rename(from, to);
    }
    double readBack = 0;  ///< seconds

private:
    Clock::time_point m_synced;
};

void makeImage(const std::string& path) {
    std::mt19937 random(1);
    std::vector<unsigned char> payload(kPayload);
    std::generate(payload.begin(), payload.end(),
                  [&] { return static_cast<unsigned char>(random()); });
    ImageHeader header;
    header.version = *SoftwareVersion::parse("1.0");
    header.hardwareVariant = "desk-1";
    header.payloadSize = payload.size();
    header.payloadDigest = Sha256::of(payload);
    const ImageHeader::Bytes bytes = header.encode();
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    file.write(reinterpret_cast<const char*>(payload.data()),
               static_cast<std::streamsize>(payload.size()));
    require(static_cast<bool>(file.flush()), "cannot write an image");
    ::sync();
}

/// Everything that a burn does after its image was accepted, on a phone that runs what was
/// installed. The seconds that it takes.
double burn(const std::string& image, const std::string& root, FlashPort& flash) {
    std::filesystem::remove_all(root + "/flash");
    std::filesystem::create_directory(root + "/flash");
    std::ofstream(root + "/flash/boot") << BootMarker().text();
    SoftwareBanks banks(flash);
    banks.start();
    const std::atomic<bool> stopping{false};
    std::string reason;
    const auto opened = ImageFile::open(image, reason);
    require(opened.has_value(), "the image cannot be opened");
    const auto start = Clock::now();
    ImageBurn(flash, banks, stopping).run(*opened, Bank::eA, [](int) {});
    return secondsSince(start);
}

/// What a shell would do instead.
void copy(const std::string& from, const std::string& to) {
    const pid_t child = ::fork();
    if (child == 0) {
        ::execlp("sh", "sh", "-c", "cp \"$0\" \"$1\" && sync \"$1\"", from.c_str(), to.c_str(),
                 nullptr);
        ::_exit(127);
    }
    int status = -1;
    require(child > 0 && ::waitpid(child, &status, 0) == child && status == 0, "cp has failed");
}

/// The most memory that this process has had.
double peakBytes() {
    rusage usage{};
    require(::getrusage(RUSAGE_SELF, &usage) == 0, "no memory of this process");
    return static_cast<double>(usage.ru_maxrss) * 1024;
}

/// How much more memory a process has had at most when it has burnt an image.
double grownBytes(const std::string& image, const std::string& root) {
    return measureInFork([&] {
        FlashDirectory flash(root, "flash");
        const double before = peakBytes();
        burn(image, root, flash);
        return peakBytes() - before;
    });
}

}  // namespace

void measureBurns(Bench& bench) {
    const ScratchDirectory files(bench.places.files);
    const std::string image = files.file("image");
    const std::string root = files.file("root");
    std::filesystem::create_directory(root);
    makeImage(image);
    TimedFlash flash(root, "flash");

    Comparison comparison;
    const auto own =
        comparison.addTimed([&](unsigned /*count*/) { return burn(image, root, flash); });
    const auto rival = comparison.addTimed([&](unsigned /*count*/) {
        const std::string copied = files.file("copy");
        std::filesystem::remove(copied);
        const auto start = Clock::now();
        copy(image, copied);
        return secondsSince(start);
    });
    // Of the burn just before it, by turns as everything is.
    const auto readBack = comparison.addTimed([&](unsigned /*count*/) { return flash.readBack; });
    comparison.runSingly(bench.pace.heavyRounds);
    bench.report.add("burn of 64 MiB, digest and read-back", "cp and sync of the same file",
                     comparison, own, rival, Goal::atMost(1.3));
    bench.report.add("of it the read-back", "cp and sync of the same file", comparison, readBack,
                     rival, Goal::none());
    Row row;
    row.measured = "peak memory of a burn of 64 MiB";
    row.against = "itself before";
    row.value.median = grownBytes(image, root) / kMebi;
    row.unit = "MiB";
    row.goal = Goal::atMost(4);
    bench.report.add(std::move(row));
}

}  // namespace vireo::bench
