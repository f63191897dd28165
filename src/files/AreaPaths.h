#pragma once

#include <string>

#include "LocalMgmtIfc.h"

namespace vireo {

/// Where the files of one type are. The paths end in "/" and are relative to the storage root until
/// they are initialised; that of the defaults is a path of the phone.
struct AreaPaths {
    /// What the phone was deployed with.
    static constexpr const char* kDefaultsRoot = "/Vireo_Deploy/";
    /// Below an area: the links to the defaults that its user deleted.
    static constexpr const char* kDeleted = "deleted/";

    /// The area that a user's files of the type are in.
    AreaPaths(LocalMgmtIfc::eFiletype type, LocalMgmtIfc::eUsertype whose);

    /// Goes on to the type's own directories.
    void enter(LocalMgmtIfc::eFiletype type);
    /// Makes the user's directory and that of the deleted ones usable, and both paths absolute. May
    /// throw `StorageError`.
    void initialise();

    std::string user;
    std::string defaults;
    std::string deleted;
};

}  // namespace vireo
