#pragma once

#include <filesystem>
#include <fstream>
#include <future>
#include <mutex>
#include <sstream>
#include <thread>

#include "LocalMgmtCallbackIfc.h"
#include "device/AdminProgressCallback.h"
#include "files/FileStorage.h"
#include "services/CertificateMgmtSvcIfc.h"
#include "services/MediaControlServiceIfc.h"
#include "unit/items/ItemHouse.h"
#include "unit/service/ServiceHouse.h"

namespace vireo::test {

/// Work of the platform, done as a test says, on a thread of its own as the platform does.
class ScriptedWork {
public:
    using Script = std::function<void(ScriptedWork&)>;

    ~ScriptedWork() { join(); }
    /// A start may come from another thread while the work of the last one is waited for.
    void join() {
        std::thread ended;
        {
            const std::lock_guard lock(m_mutex);
            ended.swap(m_thread);
        }
        if (ended.joinable()) {
            ended.join();
        }
    }
    void run(Script work) {
        join();
        const std::lock_guard lock(m_mutex);
        m_thread = std::thread([this, run = std::move(work)] { run(*this); });
    }
    void runToEnd(Script work) {
        run(std::move(work));
        join();
    }
    /// Puts the file where it was to appear, when there is one.
    void put(const std::string& bytes) const { std::ofstream(path, std::ios::binary) << bytes; }
    /// The last report is `last`.
    bool report(int percent, int last) {
        active = active && percent >= 0 && percent != last;
        return progress->progressNotify(percent);
    }

    std::atomic<bool> active{false};
    bool isRefusing = false;
    Script script;  ///< begins at once, before the start returns
    std::string path;
    AdminProgressCallback* progress = nullptr;

protected:
    bool start(const std::string& where, AdminProgressCallback& callback, std::string& error) {
        error = "it is refused";
        if (isRefusing) {
            return false;
        }
        join();
        active = true;
        path = where;
        progress = &callback;
        if (script) {
            run(script);
        }
        return true;
    }

private:
    std::mutex m_mutex;
    std::thread m_thread;
};

struct ScriptedTransfer : TransferPort, ScriptedWork {
    void setSecurityDetails(const SecurityDetails&) override { ++secured; }
    bool getFile(const TransferRequest& request, AdminProgressCallback& callback,
                 std::string& error) override {
        requests.push_back(request);
        isDiscarded = false;
        return start(request.localPath, callback, error);
    }
    bool isActive() override { return active; }
    void discard(const std::string& directory) override {
        isDiscarded = isDiscarded || directory == path.substr(0, path.rfind('/') + 1);
    }
    bool tell(int percent) { return report(percent, 100); }
    /// The file comes, unless it was discarded.
    void complete(const std::string& bytes) {
        runToEnd([&](ScriptedWork&) {
            tell(40);
            if (!isDiscarded) {
                put(bytes);
            }
            tell(isDiscarded ? -1 : 100);
        });
    }
    void fail() {
        runToEnd([this](ScriptedWork&) { tell(-1); });
    }

    std::vector<TransferRequest> requests;
    int secured = 0;
    std::atomic<bool> isDiscarded{false};
};

struct ScriptedImage : ImagePort, ScriptedWork {
    std::string hardwareVariant() override { return "desk-1"; }
    bool verify(const std::string&, const std::string&, std::string& error) override {
        error = "it is for another phone";
        return isForThisPhone;
    }
    bool burn(const std::string& where, AdminProgressCallback& callback,
              std::string& error) override {
        ++burns;
        return start(where, callback, error);
    }
    bool isActive() override { return active; }
    bool tell(int percent) { return report(percent, 99); }

    bool isForThisPhone = true;
    int burns = 0;
};

/// What somebody is told, in order: percentages and paths.
struct Told {
    void add(const std::string& text) {
        const std::lock_guard lock(m_mutex);
        m_texts.push_back(text);
    }
    Texts texts() {
        const std::lock_guard lock(m_mutex);
        return m_texts;
    }

private:
    std::mutex m_mutex;
    Texts m_texts;
};

struct Follower : Executable, LocalMgmtCallbackIfc, Told {
    bool requestShutdown() override { return consents; }
    bool informDownloadProgress(int percent, std::string) override {
        add(std::to_string(percent));
        onTold();
        return true;
    }
    bool informDownloadCompletion(std::string path) override {
        add(path.substr(path.rfind('/') + 1));
        onTold();
        return true;
    }

    bool consents = false;
    std::function<void()> onTold = [] {};
};

struct RemoteFollower : RemoteMgmtCallbackIfc, Told {
    void informRemoteProgress(int percent, eRemoteOperationType type) override {
        add(std::to_string(percent) + (type == eNoRemoteRequest ? "" : "?"));
    }
    void informRemoteWarning(eRemoteOperationType) override {}
};

struct ScriptedMedia : Executable, MediaControlServiceIfc {
    int checkAudioFile(eAudioKind kind, const std::string& path) override {
        asked.push_back(std::to_string(kind) + path.substr(path.rfind('/')));
        return answer;
    }
    int answer = 0;
    Texts asked;
};

struct OneAuthority : Executable, CertificateMgmtSvcIfc {
    bool getSecurityDetails(SecurityDetails& details) override {
        details = {{}, {{SecurityCertificate::eAuthority, "pem"}}};
        return true;
    }
};

/// The whole service with the sample configuration and real files, on a platform that fetches and
/// burns as the test says.
class DownloadHouse : public ServiceHouse {
protected:
    using Ifc = LocalMgmtIfc;

    DownloadHouse() : storage(directory.path(), "files") {
        ports.files.clear();
        for (const auto& entry : std::filesystem::directory_iterator(VIREO_CONFIG)) {
            std::ostringstream text;
            text << std::ifstream(entry.path()).rdbuf();
            ports.files[entry.path().filename()] = text.str();
        }
        std::string error;
        const auto catalogue = StoreCatalogue::parse(ports.files["store.xml"], error);
        store = SqliteDataAccess::open(directory.file("sample.db"), *catalogue, error);
        context.store = store.get();
        context.others = {{"MediaControlServiceIfc", &media}};
        PlatformPorts all = installedPorts();
        all.storage = &storage;
        all.transfer = &transfer;
        all.image = &image;
        installPorts(all);
        start();
        EXPECT_TRUE(service.subscribeForRemoteProgress(&remote));
    }
    ~DownloadHouse() override {
        transfer.join();
        image.join();
    }

    void set(const std::string& tag, const std::string& value) {
        ManageableData record;
        EXPECT_TRUE(record.populate(tag, value));
        EXPECT_TRUE(service.setData(record)) << tag;
    }
    std::string get(const std::string& tag) {
        std::string value;
        EXPECT_TRUE(service.getData(tag, value)) << tag;
        return value;
    }
    // The forms of a start; all of them for the same source.
    bool startPlain(Ifc::eFiletype type) { return service.startDownload(type); }
    bool startBySettings(Ifc::eFiletype type) { return service.startDownload(type, &follower); }
    bool startFrom(Ifc::eFiletype type, bool overrideBusy = false, const std::string& file = "f",
                   Ifc::eDownloadProtocol protocol = Ifc::DOWNLOAD_FTP) {
        return service.startDownload(protocol, "", "server", "", "", type, "", file, &follower,
                                     overrideBusy);
    }
    bool fetch(Ifc::eFiletype type, const std::string& file = "f") {
        return service.startDownload(Ifc::DOWNLOAD_FTP, "", "server", "", "", type, "", file);
    }
    std::string stored(const std::string& path) const { return directory.file("files/" + path); }
    bool exists(const std::string& path) const { return std::filesystem::exists(stored(path)); }

    FileStorage storage;
    ScriptedTransfer transfer;
    ScriptedImage image;
    ScriptedMedia media;
    OneAuthority certificates;
    Follower follower;
    RemoteFollower remote;
};

}  // namespace vireo::test
