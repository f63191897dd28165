#pragma once

#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <string>
#include <type_traits>

#include "services/MobilityServiceIfc.h"
#include "unit/files/DownloadHouse.h"

namespace vireo::test {

/// The real storage, of which one call fails: before it has done anything, or after it has done
/// everything.
class FailingStorage : public StoragePort {
public:
    enum class Fault { eBefore, eAfter };

    explicit FailingStorage(StoragePort& real) : m_real(real) {}

    /// The call of that number fails, counted from 1 now; 0: none.
    void failAt(unsigned number, Fault fault = Fault::eBefore) {
        m_calls = 0;
        m_failAt = number;
        m_fault = fault;
    }
    bool hasFailed() const { return m_failAt != 0 && m_calls >= m_failAt; }

    /// What another thread does just before a file or link goes because of what it was found to be.
    std::function<void(const std::string& path)> meanwhile = [](const std::string&) {};

    void initStorageLocation(std::string& path) override {
        run([&] { m_real.initStorageLocation(path); });
    }
    std::uint64_t fileSize(const std::string& path) override {
        return run([&] { return m_real.fileSize(path); });
    }
    int compareFiles(const std::string& one, const std::string& other) override {
        return run([&] { return m_real.compareFiles(one, other); });
    }
    void deleteFile(const std::string& path) override {
        run([&] { m_real.deleteFile(path); });
    }
    std::vector<StorageEntry> list(const std::string& directory) override {
        return run([&] { return m_real.list(directory); });
    }
    void renameFile(const std::string& from, const std::string& to) override {
        run([&] { m_real.renameFile(from, to); });
    }
    void renameSymlink(const std::string& from, const std::string& to) override {
        meanwhile(from);
        run([&] { m_real.renameSymlink(from, to); });
    }
    void createSymlink(const std::string& target, const std::string& link) override {
        run([&] { m_real.createSymlink(target, link); });
    }
    void replaceBySymlink(const std::string& target, const std::string& link) override {
        meanwhile(link);
        run([&] { m_real.replaceBySymlink(target, link); });
    }
    void deleteSymlink(const std::string& link) override {
        meanwhile(link);
        run([&] { m_real.deleteSymlink(link); });
    }
    void copyFile(const std::string& from, const std::string& to) override {
        run([&] { m_real.copyFile(from, to); });
    }
    void getStorageName(std::string& id, std::string& name) override {
        run([&] { m_real.getStorageName(id, name); });
    }
    StorageSpace space() override {
        return run([&] { return m_real.space(); });
    }

private:
    template <class Call>
    std::invoke_result_t<Call> run(Call call) {
        const bool fails = ++m_calls == m_failAt;
        if (fails && m_fault == Fault::eBefore) {
            throw StorageError("the disk fails");
        }
        if constexpr (std::is_void_v<std::invoke_result_t<Call>>) {
            call();
            if (fails) {
                throw StorageError("the disk fails afterwards");
            }
        } else {
            auto result = call();
            if (fails) {
                throw StorageError("the disk fails afterwards");
            }
            return result;
        }
    }

    StoragePort& m_real;
    unsigned m_calls = 0;
    unsigned m_failAt = 0;
    Fault m_fault = Fault::eBefore;
};

struct MobilityNotes : Executable, MobilityServiceIfc {
    void pictureDownloaded(const std::string& name) override { notes.push_back("new " + name); }
    void pictureDeleted(const std::string& name) override { notes.push_back("gone " + name); }
    void refreshPictureClips() override {}
    Texts notes;
};

/// What is below a directory: a file with "=" and what is in it, a link with ">" and its target,
/// which is as the phone sees it.
using Tree = std::map<std::string, std::string>;

/// The whole service with the sample configuration, on real files.
class AreaHouse : public DownloadHouse {
protected:
    AreaHouse() {
        PlatformPorts all = installedPorts();
        all.storage = &failing;
        installPorts(all);
        context.others["MobilityServiceIfc"] = &mobility;
    }

    static void write(const std::string& path, const std::string& content) {
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        std::filesystem::remove(path);
        std::ofstream(path, std::ios::binary) << content;
    }
    std::string deployed(const std::string& path) const {
        return directory.file("Vireo_Deploy/" + path);
    }
    void deploy(const std::string& path, const std::string& content = "default") const {
        write(deployed(path), content);
    }
    void put(const std::string& path, const std::string& content) const {
        write(stored(path), content);
    }
    /// A link of the storage to a path as the phone sees it.
    void link(const std::string& target, const std::string& path) const {
        std::filesystem::create_directories(std::filesystem::path(stored(path)).parent_path());
        std::filesystem::remove(stored(path));
        std::filesystem::create_symlink(directory.path().string() + target, stored(path));
    }
    Tree tree() const {
        namespace fs = std::filesystem;
        Tree all;
        fs::create_directories(stored(""));
        for (const auto& entry : fs::recursive_directory_iterator(stored(""))) {
            const std::string path = entry.path().lexically_relative(stored("")).string();
            if (entry.is_symlink()) {
                const std::string target = fs::read_symlink(entry.path()).string();
                all[path] = ">" + target.substr(directory.path().string().size());
            } else if (entry.is_regular_file()) {
                std::ostringstream text;
                text << std::ifstream(entry.path(), std::ios::binary).rdbuf();
                all[path] = "=" + text.str();
            }
        }
        return all;
    }
    /// The names in a list; its paths are checked.
    Texts list(Ifc::eFiletype type, Ifc::eUsertype user) {
        std::list<std::string> files{"old"};
        EXPECT_TRUE(service.getListOfFilesOfType(type, &files, user));
        std::string directoryOfAll;
        service.getFilePathFromType(type, directoryOfAll, user);
        Texts names;
        for (const std::string& path : files) {
            EXPECT_EQ(path.rfind(stored(directoryOfAll), 0), 0U) << path;
            names.push_back(path.substr(stored(directoryOfAll).size()));
        }
        return names;
    }

    FailingStorage failing{storage};
    MobilityNotes mobility;
};

}  // namespace vireo::test
