#include <cstdlib>
#include <random>

#include "unit/files/AreaHouse.h"
#include "unit/files/AreaModel.h"

namespace vireo::test {
namespace {

using Ifc = LocalMgmtIfc;

constexpr Ifc::eFiletype kTypes[] = {Ifc::FILETYPE_PICTURE, Ifc::FILETYPE_SCREENSAVER,
                                     Ifc::FILETYPE_RINGER,  Ifc::FILETYPE_MUSIC_ON_HOLD,
                                     Ifc::FILETYPE_LDAP,    Ifc::FILETYPE_JAD,
                                     Ifc::FILETYPE_VR_AUDIO};
constexpr std::size_t kTypesWithDefaults = 4;
constexpr const char* kNames[] = {"a", "b", "c", "d e"};
constexpr const char* kTexts[] = {"default", "other", "own", "default of a larger size"};

/// Operations for each kind of test; VIREO_AREA_OPERATIONS for long runs.
unsigned operations(unsigned usual) {
    const char* const wanted = std::getenv("VIREO_AREA_OPERATIONS");
    return wanted != nullptr ? static_cast<unsigned>(std::atol(wanted)) : usual;
}

/// Random work on the areas, done by the service and by the model.
class AreaModelTest : public AreaHouse {
protected:
    AreaModelTest() { setLogLevel(0); }

    template <std::size_t Size, class Value>
    const Value& any(const Value (&values)[Size]) {
        return values[m_random() % Size];
    }
    unsigned anyNumber(unsigned below) { return static_cast<unsigned>(m_random() % below); }
    Ifc::eFiletype anyTypeWithDefaults() { return kTypes[m_random() % kTypesWithDefaults]; }

    /// What somebody else does to the files: deploys, removes what was deployed, downloads.
    void disturb() {
        const unsigned choice = anyNumber(6);
        const Ifc::eFiletype type = choice < 3 ? anyTypeWithDefaults() : any(kTypes);
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
                    Ifc::FILETYPE_JAD};
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
    const unsigned count = operations(2000);
    for (unsigned i = 0; i < count; ++i) {
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

/// Each storage call of random operations fails once. What was a user's file before and would be
/// without the fault is there still, and the next list puts the links right.
TEST_F(AreaModelTest, NoFailingCallLosesAFileOrALink) {
    const unsigned count = operations(1000);
    unsigned failures = 0;
    for (unsigned i = 0; i < count && !HasFailure(); ++i) {
        SCOPED_TRACE("operation " + std::to_string(i));
        disturb();
        disturb();
        const auto [real, model, isList] = anyOperation();
        const AreaModel before = m_model;
        model();
        failing.failAt(1 + anyNumber(12), m_random() % 2 == 0 ? FailingStorage::Fault::eBefore
                                                              : FailingStorage::Fault::eAfter);
        real();
        failures += failing.hasFailed() ? 1U : 0U;
        failing.failAt(0);
        const AreaModel wanted = m_model;
        m_model.tree = tree();
        for (const auto& [path, text] : before.tree) {
            // A list may put a link in the place of an identical file.
            const auto stays = wanted.tree.find(path);
            if (text[0] == '=' && stays != wanted.tree.end() && (isList || stays->second == text)) {
                const std::string* const shown = m_model.contents(path);
                EXPECT_TRUE(shown != nullptr && *shown == text.substr(1)) << path << " is lost";
            }
        }
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
    EXPECT_GT(failures, count / 4) << "too few calls failed to show anything";
}

}  // namespace
}  // namespace vireo::test
