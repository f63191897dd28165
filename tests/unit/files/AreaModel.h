#pragma once

#include <map>
#include <string>
#include <vector>

#include "LocalMgmtIfc.h"

namespace vireo::test {

/// What the users' areas should look like, on a phone whose software checks the links of users.
/// Nothing ever fails here. Paths and texts are those of `Tree`.
class AreaModel {
public:
    using Ifc = LocalMgmtIfc;
    using Tree = std::map<std::string, std::string>;

    void list(Ifc::eFiletype type, Ifc::eUsertype user);
    void remove(Ifc::eFiletype type, const std::string& name);
    void clean(Ifc::eFiletype type, Ifc::eUsertype user, bool restoresAll);
    void change(Ifc::eUsertype user);
    void clearMobile();

    /// What opening it shows: a file's bytes, also behind links. Null when there is nothing.
    const std::string* contents(const std::string& path) const;
    static std::string directoryOf(Ifc::eFiletype type, Ifc::eUsertype user);
    static std::string deletedOf(Ifc::eFiletype type, Ifc::eUsertype user);
    static std::string nameOf(Ifc::eFiletype type);

    Tree tree;
    std::map<std::string, std::string> defaults;  ///< by "images/a"
    Ifc::eUsertype current = Ifc::USER_UNSET;

private:
    std::vector<std::string> namesIn(const std::string& directory) const;
    void clearDirectory(const std::string& directory);
    void reset(Ifc::eUsertype user);
    void emptyDeleted(bool ofVisitor);
    void migrate();
    void settle(const std::string& name, const std::string& user, const std::string& deleted,
                const std::string& target);

    static std::string areaOf(Ifc::eFiletype type, Ifc::eUsertype user);
};

}  // namespace vireo::test
