#include "files/AreaPaths.h"

#include "device/Storage.h"
#include "files/FileTypeCatalogue.h"

namespace vireo {

AreaPaths::AreaPaths(LocalMgmtIfc::eFiletype type, LocalMgmtIfc::eUsertype whose)
    : defaults(kDefaultsRoot) {
    FileTypeCatalogue::appendUserDirectory(user, whose, type);
    deleted = user + kDeleted;
}

void AreaPaths::enter(LocalMgmtIfc::eFiletype type) {
    const std::string_view directory = FileTypeCatalogue::row(type).directory;
    user += directory;
    defaults += directory;
    deleted += directory;
}

void AreaPaths::initialise() {
    Storage::initStorageLocation(user, 0, false);
    Storage::initStorageLocation(deleted, 0, false);
}

}  // namespace vireo
