#include "unit/files/AreaModel.h"

#include <set>

namespace vireo::test {
namespace {

using Ifc = LocalMgmtIfc;

const std::map<int, std::string> kDirectories{{Ifc::FILETYPE_MUSIC_ON_HOLD, "music/"},
                                              {Ifc::FILETYPE_PICTURE, "images/"},
                                              {Ifc::FILETYPE_SCREENSAVER, "screensavers/"},
                                              {Ifc::FILETYPE_RINGER, "ringtones/"},
                                              {Ifc::FILETYPE_LDAP, "ldap/"},
                                              {Ifc::FILETYPE_JAD, "jad/"},
                                              {Ifc::FILETYPE_PHD, "phd/"},
                                              {Ifc::FILETYPE_VR_AUDIO, "voice_recog_playbacks/"},
                                              {Ifc::FILETYPE_VR_PATTERN, "voice_recog_patterns/"}};
const std::set<int> kWithDefaults{Ifc::FILETYPE_MUSIC_ON_HOLD, Ifc::FILETYPE_PICTURE,
                                  Ifc::FILETYPE_SCREENSAVER, Ifc::FILETYPE_RINGER};
const std::set<int> kOfVisitor{Ifc::FILETYPE_PICTURE, Ifc::FILETYPE_SCREENSAVER,
                               Ifc::FILETYPE_RINGER,  Ifc::FILETYPE_LDAP,
                               Ifc::FILETYPE_JAD,     Ifc::FILETYPE_PHD};
const std::set<int> kOfKspVisitor{Ifc::FILETYPE_PICTURE, Ifc::FILETYPE_SCREENSAVER,
                                  Ifc::FILETYPE_RINGER};
constexpr int kLastDeletable = 12;
const std::string kDeployed = "/Vireo_Deploy/";
const std::string kStored = "/files/";

}  // namespace

std::string AreaModel::nameOf(Ifc::eFiletype type) {
    return kDirectories.at(type);
}

std::string AreaModel::areaOf(Ifc::eFiletype type, Ifc::eUsertype user) {
    const bool isVisitors = user == Ifc::USER_VISITOR       ? kOfVisitor.count(type) > 0
                            : user == Ifc::USER_VISITOR_KSP ? kOfKspVisitor.count(type) > 0
                                                            : false;
    return isVisitors ? "visitor/" : "";
}

std::string AreaModel::directoryOf(Ifc::eFiletype type, Ifc::eUsertype user) {
    return areaOf(type, user) + nameOf(type);
}

std::string AreaModel::deletedOf(Ifc::eFiletype type, Ifc::eUsertype user) {
    return areaOf(type, user) + "deleted/" + nameOf(type);
}

const std::string* AreaModel::contents(const std::string& path) const {
    static thread_local std::string text;
    const auto found = tree.find(path);
    if (found == tree.end()) {
        return nullptr;
    }
    if (found->second[0] == '=') {
        text = found->second.substr(1);
        return &text;
    }
    const std::string target = found->second.substr(1);
    if (target.rfind(kStored, 0) == 0) {
        return contents(target.substr(kStored.size()));
    }
    const auto deployed = target.rfind(kDeployed, 0) == 0
                              ? defaults.find(target.substr(kDeployed.size()))
                              : defaults.end();
    return deployed != defaults.end() ? &deployed->second : nullptr;
}

std::vector<std::string> AreaModel::namesIn(const std::string& directory) const {
    std::vector<std::string> names;
    for (auto each = tree.lower_bound(directory);
         each != tree.end() && each->first.rfind(directory, 0) == 0; ++each) {
        names.push_back(each->first.substr(directory.size()));
    }
    return names;
}

void AreaModel::clearDirectory(const std::string& directory) {
    for (const std::string& name : namesIn(directory)) {
        tree.erase(directory + name);
    }
}

void AreaModel::settle(const std::string& name, const std::string& user, const std::string& deleted,
                       const std::string& target) {
    const bool isDeleted = tree.count(deleted + name) > 0;
    const auto found = tree.find(user + name);
    if (found != tree.end() && found->second[0] == '>') {
        tree.erase(deleted + name);
    } else if (found != tree.end() && !isDeleted) {
        if (found->second == "=" + defaults.at(target + name)) {
            found->second = ">" + kDeployed + target + name;
        }
    } else if (!isDeleted) {
        tree[deleted + name] = ">" + kDeployed + target + name;
    }
}

void AreaModel::list(Ifc::eFiletype type, Ifc::eUsertype user) {
    if (kWithDefaults.count(type) == 0) {
        return;
    }
    const std::string directory = directoryOf(type, user);
    const std::string deleted = deletedOf(type, user);
    const std::string kind = nameOf(type);
    for (const auto& [path, text] : defaults) {
        if (path.rfind(kind, 0) == 0) {
            settle(path.substr(kind.size()), directory, deleted, kind);
        }
    }
    for (const std::string& name : namesIn(directory)) {
        if (tree[directory + name][0] == '>') {
            const auto known = defaults.find(kind + name);
            const std::string* const shown = contents(directory + name);
            if (known == defaults.end()) {
                tree.erase(directory + name);
            } else if (shown == nullptr || *shown != known->second) {
                tree[directory + name] = ">" + kDeployed + kind + name;
            }
        }
    }
    for (const std::string& name : namesIn(deleted)) {
        if (defaults.count(kind + name) == 0) {
            tree.erase(deleted + name);
        }
    }
}

void AreaModel::remove(Ifc::eFiletype type, const std::string& name) {
    if (type > kLastDeletable) {
        return;  // meant is the directory of the area, where there is nothing
    }
    const auto found = tree.find(directoryOf(type, current) + name);
    if (found == tree.end()) {
        return;
    }
    if (found->second[0] == '>') {
        tree[deletedOf(type, current) + name] = found->second;
    }
    tree.erase(directoryOf(type, current) + name);
}

void AreaModel::clean(Ifc::eFiletype type, Ifc::eUsertype user, bool restoresAll) {
    const std::string directory = directoryOf(type, user);
    clearDirectory(directory);
    if (user == Ifc::USER_VISITOR_KSP) {
        if (type != Ifc::FILETYPE_PICTURE) {
            for (const std::string& name : namesIn(nameOf(type))) {
                tree[directory + name] = ">" + kStored + nameOf(type) + name;
            }
        }
        return;
    }
    if (user == Ifc::USER_VISITOR && !restoresAll &&
        (type == Ifc::FILETYPE_SCREENSAVER || type == Ifc::FILETYPE_RINGER)) {
        return;
    }
    for (const auto& [path, text] : defaults) {
        if (path.rfind(nameOf(type), 0) == 0) {
            tree[directory + path.substr(nameOf(type).size())] = ">" + kDeployed + path;
        }
    }
}

void AreaModel::reset(Ifc::eUsertype user) {
    clean(Ifc::FILETYPE_PICTURE, user, false);
    clean(Ifc::FILETYPE_SCREENSAVER, user, false);
    clean(Ifc::FILETYPE_RINGER, user, false);
    if (user == Ifc::USER_VISITOR) {
        clean(Ifc::FILETYPE_JAD, user, false);
        clean(Ifc::FILETYPE_PHD, user, false);
    }
}

void AreaModel::emptyDeleted(bool ofVisitor) {
    clearDirectory(ofVisitor ? "visitor/deleted/" : "deleted/");
}

void AreaModel::migrate() {
    for (const Ifc::eFiletype type :
         {Ifc::FILETYPE_PICTURE, Ifc::FILETYPE_SCREENSAVER, Ifc::FILETYPE_LDAP,
          Ifc::FILETYPE_RINGER, Ifc::FILETYPE_JAD, Ifc::FILETYPE_PHD, Ifc::FILETYPE_VR_AUDIO,
          Ifc::FILETYPE_VR_PATTERN}) {
        list(type, Ifc::USER_BASE);
        const std::string from = directoryOf(type, Ifc::USER_BASE);
        const std::string to = directoryOf(type, Ifc::USER_VISITOR);
        for (const std::string& name : namesIn(from)) {
            const std::string* const text = contents(from + name);
            if (from != to && text != nullptr) {
                tree[to + name] = "=" + *text;
            }
        }
    }
}

void AreaModel::change(Ifc::eUsertype user) {
    const bool wasBase = current == Ifc::USER_BASE;
    switch (user) {
        case Ifc::USER_BASE:
            if (current == Ifc::USER_VISITOR) {
                reset(Ifc::USER_VISITOR);
                emptyDeleted(true);
            }
            current = user;
            break;
        case Ifc::USER_VISITOR:
            if (wasBase) {
                reset(Ifc::USER_VISITOR);
                emptyDeleted(true);
                clean(Ifc::FILETYPE_RINGER, Ifc::USER_VISITOR, true);
                clean(Ifc::FILETYPE_SCREENSAVER, Ifc::USER_VISITOR, true);
            }
            current = user;
            break;
        case Ifc::USER_MIGRATE_TO_VISITOR:
            if (wasBase) {
                migrate();
            }
            current = Ifc::USER_VISITOR;
            break;
        case Ifc::USER_CLEAR_DATA_VISITOR:
            reset(Ifc::USER_VISITOR);
            emptyDeleted(true);
            current = Ifc::USER_VISITOR;
            break;
        case Ifc::USER_BASE_KSP:
        case Ifc::USER_VISITOR_KSP:
            current = user;
            break;
        case Ifc::USER_CLEAR_DATA_VISITOR_KSP:
            reset(Ifc::USER_VISITOR_KSP);
            emptyDeleted(true);
            current = Ifc::USER_VISITOR_KSP;
            break;
        default:
            break;
    }
}

void AreaModel::clearMobile() {
    emptyDeleted(true);
    reset(Ifc::USER_VISITOR_KSP);
}

}  // namespace vireo::test
