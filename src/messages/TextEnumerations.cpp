#include "messages/TextEnumerations.h"

#include "LogMacros.h"
#include "files/FileTypeCatalogue.h"

namespace vireo {

LocalMgmtIfc::eFiletype convertXMLStringToFileTypeEnum(const std::string& name) {
    VIREO_LOG("LocalMgmtInvoker", kLogDebug, "LocalMgmtInvoker::convertXMLStringToFileTypeEnum");
    const FileTypeRow* row = FileTypeCatalogue::findByXmlName(name);
    // Deliberate: an unknown name is no error.
    return row != nullptr ? row->type : LocalMgmtIfc::FILETYPE_SOFTWARE;
}

}  // namespace vireo
