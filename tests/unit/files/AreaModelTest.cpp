#include <random>

#include "support/Effort.h"
#include "unit/files/AreaHouse.h"
#include "unit/files/AreaModel.h"

namespace vireo::test {
namespace {

using Ifc = LocalMgmtIfc;

constexpr Ifc::eFiletype kTypes[] = {Ifc::FILETYPE_PICTURE, Ifc::FILETYPE_SCREENSAVER,
                                     Ifc::FILETYPE_RINGER,  Ifc::FILETYPE_MUSIC_ON_HOLD,
                                     Ifc::FILETYPE_JAD,     Ifc::FILETYPE_PHD,
                                     Ifc::FILETYPE_LDAP,    Ifc::FILETYPE_VR_AUDIO};
constexpr std::size_t kTypesWithDefaults = 4;
constexpr std::size_t kDeployedTypes = 6;  ///< two more are linked when an area is cleared
constexpr const char* kNames[] = {"a", "b", "c", "d e"};
constexpr const char* kTexts[] = {"default", "other", "own", "default of a larger size"};

constexpr const char* kOperations = "VIREO_AREA_OPERATIONS";

/// Random work on the areas, done by the service and by the model.
class AreaModelTest : public AreaHouse {
protected:
    AreaModelTest() { setLogLevel(0); }

    template <std::size_t Size, class Value>
    const Value& any(const Value (&values)[Size]) {
        return values[m_random() % Size];
    }
    unsigned anyNumber(unsigned below) { return static_cast<unsigned>(m_random() % below); }
    Ifc::eFiletype anyDeployedType() { return kTypes[m_random() % kDeployedTypes]; }

    /// What somebody else does to the files: deploys, removes what was deployed, downloads.
    void disturb() {
        const unsigned choice = anyNumber(6);
        const Ifc::eFiletype type = choice < 3 ? anyDeployedType() : any(kTypes);
        const std::string name = AreaModel::nameOf(type) + any(kNames);
        if (choice < 2) {
            m_model.defaults[name] = any(kTexts);
            deploy(name, m_model.defaults[name]);
        } else if (choice == 2) {
            m_model.defaults.erase(name);
            std::filesystem::remove(deployed(name));
        } else {
            const std::string path = AreaModel::directoryOf(type, m_model.current) + any(kNames);
            m_model.tree[path] = std::string("=") + any(kTexts);
            put(path, m_model.tree[path].substr(1));
        }
    }

    /// One operation of the service, and the same of the model.
    struct Operation {
        std::function<void()> real;
        std::function<void()> model;
        bool isList = false;
    };
    Operation anyOperation() {
        const Ifc::eFiletype type = any(kTypes);
        const std::string name = any(kNames);
        static constexpr Ifc::eUsertype kListed[] = {Ifc::USER_BASE, Ifc::USER_VISITOR,
                                                     Ifc::USER_VISITOR_KSP};
        switch (m_random() % 8) {
            case 0:
            case 1:
                return {[this, type, name] { service.deleteFile(type, name); },
                        [this, type, name] { m_model.remove(type, name); }};
            case 2: {
                static constexpr Ifc::eFiletype kCleaned[] = {
                    Ifc::FILETYPE_PICTURE, Ifc::FILETYPE_SCREENSAVER, Ifc::FILETYPE_RINGER,
                    Ifc::FILETYPE_JAD, Ifc::FILETYPE_PHD};
                const Ifc::eFiletype cleaned = any(kCleaned);
                const Ifc::eUsertype user = any(kListed);
                return {[this, cleaned, user] { service.cleanupUserData(cleaned, user); },
                        [this, cleaned, user] { m_model.clean(cleaned, user, false); }};
            }
            case 3:
            case 4: {
                const auto user = static_cast<Ifc::eUsertype>(m_random() % 10);
                return {[this, user] { service.changeCurrentUser(user); },
                        [this, user] { m_model.change(user); }};
            }
            case 5:
                if (m_random() % 4 == 0) {
                    return {[this] { service.clearMobileUserData(); },
                            [this] { m_model.clearMobile(); }};
                }
                [[fallthrough]];
            default: {
                const Ifc::eUsertype user = any(kListed);
                return {[this, type, user] {
                            std::list<std::string> files;
                            service.getListOfFilesOfType(type, &files, user);
                        },
                        [this, type, user] { m_model.list(type, user); }, true};
            }
        }
    }

    /// Makes the real areas, and who the current user is, those of a model.
    void restore(const AreaModel& model) {
        std::filesystem::remove_all(stored(""));
        for (const auto& [path, text] : model.tree) {
            text[0] == '>' ? link(text.substr(1), path) : put(path, text.substr(1));
        }
        service.changeCurrentUser(Ifc::USER_BASE_KSP);  // from here nothing is cleared
        service.changeCurrentUser(model.current);
    }

    /// Runs the operation with one failing call. False when it has not so many.
    bool fails(const Operation& operation, const AreaModel& before, unsigned call,
               FailingStorage::Fault fault) {
        SCOPED_TRACE("call " + std::to_string(call) +
                     (fault == FailingStorage::Fault::eBefore ? ", before it" : ", after it"));
        m_model = before;
        operation.model();
        const AreaModel wanted = m_model;
        restore(before);
        failing.failAt(call, fault);
        operation.real();
        const bool hasFailed = failing.hasFailed();
        failing.failAt(0);
        m_model.tree = tree();
        if (!hasFailed) {
            EXPECT_EQ(m_model.tree, wanted.tree);
            return false;
        }
        expectFilesOf(before, wanted, operation.isList);
        expectRulesAfterLists();
        return true;
    }

    /// Every file that was there and stays without a fault.
    void expectFilesOf(const AreaModel& before, const AreaModel& wanted, bool isList) {
        for (const auto& [path, text] : before.tree) {
            // A list may put a link in the place of an identical file.
            const auto stays = wanted.tree.find(path);
            if (text[0] == '=' && stays != wanted.tree.end() && (isList || stays->second == text)) {
                const std::string* const shown = m_model.contents(path);
                EXPECT_TRUE(shown != nullptr && *shown == text.substr(1)) << path << " is lost";
            }
        }
    }

    void expectRulesAfterLists() {
        for (const Ifc::eUsertype user : {Ifc::USER_BASE, Ifc::USER_VISITOR}) {
            for (std::size_t type = 0; type < kTypesWithDefaults; ++type) {
                list(kTypes[type], user);
            }
        }
        m_model.tree = tree();
        for (const Ifc::eUsertype user : {Ifc::USER_BASE, Ifc::USER_VISITOR}) {
            for (std::size_t type = 0; type < kTypesWithDefaults; ++type) {
                expectRules(kTypes[type], user);
            }
        }
        for (const auto& [path, text] : m_model.tree) {
            EXPECT_EQ(path.find("/."), std::string::npos) << path << " is left over";
        }
    }

    /// The links of one directory, as they have to be after a list.
    void expectRules(Ifc::eFiletype type, Ifc::eUsertype user) {
        const std::string kind = AreaModel::nameOf(type);
        const std::string own = AreaModel::directoryOf(type, user);
        const std::string deleted = AreaModel::deletedOf(type, user);
        const Tree& found = m_model.tree;
        const auto isLink = [&found](const std::string& path) {
            const auto entry = found.find(path);
            return entry != found.end() && entry->second[0] == '>';
        };
        for (const char* const name : kNames) {
            SCOPED_TRACE(own + name);
            const auto known = m_model.defaults.find(kind + name);
            EXPECT_FALSE(isLink(own + name) && isLink(deleted + name)) << "in both";
            if (known == m_model.defaults.end()) {
                EXPECT_FALSE(isLink(own + name) || isLink(deleted + name)) << "dangles";
            } else if (isLink(own + name)) {
                const std::string* const shown = m_model.contents(own + name);
                EXPECT_TRUE(shown != nullptr && *shown == known->second) << "not the default";
            } else {
                EXPECT_TRUE(found.count(own + name) > 0 || isLink(deleted + name)) << "lost";
            }
        }
    }

    std::mt19937 m_random{20260};
    AreaModel m_model;
};

TEST_F(AreaModelTest, RandomOperationsLeaveWhatTheModelLeaves) {
    const long count = effort(kOperations, 2000);
    for (long i = 0; i < count; ++i) {
        if (m_random() % 2 == 0) {
            disturb();
        }
        const auto [real, model, isList] = anyOperation();
        (void)isList;
        real();
        model();
        ASSERT_EQ(tree(), m_model.tree) << "after operation " << i;
    }
}

/// Every storage call of random operations fails, one after the other. What was a user's file
/// before and would be without the fault is there still, and the next list puts the links right.
TEST_F(AreaModelTest, NoFailingCallLosesAFileOrALink) {
    using Fault = FailingStorage::Fault;
    const long count = effort(kOperations, 10);
    m_model.current = Ifc::USER_BASE;
    long failures = 0;
    for (long i = 0; i < count && !HasFailure(); ++i) {
        for (int change = 0; change < 6; ++change) {
            disturb();
        }
        const Operation operation = anyOperation();
        const AreaModel before = m_model;
        for (const Fault fault : {Fault::eBefore, Fault::eAfter}) {
            for (unsigned call = 1; !HasFailure() && fails(operation, before, call, fault);
                 ++call) {
                ++failures;
            }
        }
        m_model = before;
        operation.model();
    }
    EXPECT_GT(failures, 10 * count) << "too few calls failed to show anything";
}

}  // namespace
}  // namespace vireo::test
