#include "files/FirstLinks.h"

#include <string>
#include <unordered_set>

#include "device/DevicePorts.h"
#include "log/Log.h"

namespace vireo {
namespace {

constexpr const char* kDeployed = "/Vireo_Deploy/";
constexpr const char* kDirectories[] = {"music/", "images/", "screensavers/", "ringtones/"};

void logLine(int level, int line, const std::string& text) {
    if (loggingOnUni(level)) {
        logAppUni("Files", "./host/files/FirstLinks", level, line, "%s", text.c_str());
    }
}

template <class Work>
bool attempt(Work work) {
    try {
        work();
        return true;
    } catch (const StorageError& error) {
        logLine(kLogError, __LINE__, error.what());
        return false;
    }
}

std::string initialised(StoragePort& storage, std::string path) {
    storage.initStorageLocation(path);
    return path;
}

void makeIn(StoragePort& storage, const std::string& directory) {
    const std::string defaults = kDeployed + directory;
    std::vector<StorageEntry> deployed;
    try {
        deployed = storage.list(defaults);
    } catch (const MissingDirectoryError&) {
        return;
    }
    const std::string user = initialised(storage, directory);
    std::unordered_set<std::string> known;
    for (const std::string& place : {user, initialised(storage, "deleted/" + directory)}) {
        for (StorageEntry& entry : storage.list(place)) {
            known.insert(std::move(entry.name));
        }
    }
    unsigned count = 0;
    for (const StorageEntry& entry : deployed) {
        if (entry.kind == StorageEntry::eFile && !known.contains(entry.name)) {
            const bool isMade =
                attempt([&] { storage.createSymlink(defaults + entry.name, user + entry.name); });
            count += isMade ? 1U : 0U;
        }
    }
    if (count > 0) {
        logLine(kLogInfo, __LINE__, std::to_string(count) + " deployed files are new in " + user);
    }
}

}  // namespace

void FirstLinks::make(StoragePort& storage) {
    for (const char* const directory : kDirectories) {
        attempt([&] { makeIn(storage, directory); });
    }
}

}  // namespace vireo
