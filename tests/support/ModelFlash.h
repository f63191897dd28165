#pragma once

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "device/StorageError.h"
#include "image/FlashPort.h"

namespace vireo::test {

/// Flash memory as a file system shows it, with what a loss of power takes: content that was not
/// synchronized may be there in part, names that were not may be the old or the new ones.
class ModelFlash : public FlashPort {
public:
    std::uint64_t room = 1U << 30U;  ///< for all files together
    /// Called before each access with its number; what it throws takes the place of the access.
    std::function<void(long number)> onAccess;
    /// Lets all accesses from one number on have no effect, as the power being off does.
    void failFrom(long first) {
        onAccess = [first](long number) {
            if (number >= first) {
                throw StorageError("the flash memory is broken");
            }
        };
    }
    void failOnce(long at) {
        onAccess = [at](long number) {
            if (number == at) {
                throw StorageError("the flash memory hiccups");
            }
        };
    }
    long accesses = 0;

    std::optional<File> open(const std::string& name) override {
        access();
        const auto found = m_names.find(name);
        return found == m_names.end() ? std::nullopt : std::optional(add(found->second));
    }
    File create(const std::string& name) override {
        access();
        m_names[name] = std::make_shared<Content>();
        return add(m_names[name]);
    }
    void close(File file) noexcept override { m_open.erase(file); }
    std::uint64_t size(File file) override {
        access();
        return m_open.at(file)->now.size();
    }
    std::size_t read(File file, std::uint64_t offset, std::span<unsigned char> bytes) override {
        access();
        const std::string& now = m_open.at(file)->now;
        const std::size_t at = std::min(static_cast<std::size_t>(offset), now.size());
        const std::size_t count = std::min(bytes.size(), now.size() - at);
        std::copy_n(now.begin() + static_cast<std::ptrdiff_t>(at), count, bytes.begin());
        return count;
    }
    void write(File file, std::uint64_t offset, std::span<const unsigned char> bytes) override {
        access();
        std::string& now = m_open.at(file)->now;
        if (bytes.size() > freeBytes()) {
            throw StorageError("cannot write to flash memory: No space left on device");
        }
        const auto at = static_cast<std::size_t>(offset);
        now.resize(std::max(now.size(), at + bytes.size()));
        std::copy(bytes.begin(), bytes.end(), now.begin() + static_cast<std::ptrdiff_t>(at));
    }
    void sync(File file) override {
        access();
        m_open.at(file)->kept = m_open.at(file)->now;
    }
    void rename(const std::string& from, const std::string& to) override {
        access();
        m_names[to] = m_names.at(from);
        m_names.erase(from);
    }
    void remove(const std::string& name) override {
        access();
        m_names.erase(name);
    }
    void syncNames() override {
        access();
        m_keptNames = m_names;
    }
    std::uint64_t freeBytes() override {
        std::uint64_t used = 0;
        for (const auto& [name, content] : m_names) {
            used += content->now.size();
        }
        return room > used ? room - used : 0;
    }

    /// The power fails and comes back. `random` says what of the rest has reached the medium.
    void cutPower(std::mt19937& random) {
        m_open.clear();
        for (const auto& [name, content] : m_names) {
            keepSome(name, content, random);
        }
        m_names = m_keptNames;
        for (auto& [name, content] : m_names) {
            if (content->now != content->kept) {
                content->now = tear(*content, random);
            }
            content->kept = content->now;
        }
    }

    bool has(const std::string& name) const { return m_names.contains(name); }
    std::string& bytes(const std::string& name) { return m_names.at(name)->now; }
    /// Puts a file there that always was.
    void put(const std::string& name, const std::string& bytes) {
        m_names[name] = std::make_shared<Content>(Content{bytes, bytes});
        m_keptNames = m_names;
    }

private:
    struct Content {
        std::string now;
        std::string kept;  ///< what is sure to survive
    };
    using Names = std::map<std::string, std::shared_ptr<Content>>;

    void access() {
        ++accesses;
        if (onAccess) {
            onAccess(accesses);
        }
    }
    File add(const std::shared_ptr<Content>& content) {
        m_open[++m_lastFile] = content;
        return m_lastFile;
    }
    /// A name that was given and not synchronized, or was taken away: either may be so.
    void keepSome(const std::string& name, const std::shared_ptr<Content>& content,
                  std::mt19937& random) {
        const auto kept = m_keptNames.find(name);
        if ((kept == m_keptNames.end() || kept->second != content) && random() % 2 == 0) {
            m_keptNames[name] = content;
        }
    }
    static std::string tear(const Content& content, std::mt19937& random) {
        switch (random() % 3) {
            case 0:
                return content.kept;
            case 1:
                return content.now;
            default:
                return content.now.substr(0, random() % (content.now.size() + 1));
        }
    }

    Names m_names;
    Names m_keptNames;
    std::map<File, std::shared_ptr<Content>> m_open;
    File m_lastFile = 0;
};

}  // namespace vireo::test
