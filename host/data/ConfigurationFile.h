#pragma once

#include <memory>
#include <string>
#include <vector>

#include "data/DxlDocument.h"
#include "data/DxlSchema.h"

namespace vireo {

class PlainXml;

/// The documents and schemas of one configuration file,
/// `<dxl><schema name="S">...</schema><document name="D" schema="S">...</document></dxl>`.
class ConfigurationFile {
public:
    /// Reads the file through the configuration port. All or nothing; one error line when it is
    /// missing or malformed.
    bool read(const std::string& fileName);

    std::vector<DxlDocumentPointer>& documents() { return m_documents; }
    std::vector<std::shared_ptr<const DxlSchema>>& schemas() { return m_schemas; }

    /// Says that something of this file was left out.
    void warnOfTakenName(const char* kind, const std::string& name) const;

private:
    /// Reads the file without a tree of it. False when it is not written plainly, or malformed:
    /// `parse` finds out.
    bool parsePlain(const std::shared_ptr<const std::string>& content);
    bool parsePlainElement(PlainXml& xml, const std::shared_ptr<const std::string>& content);
    bool parse(const std::string& content, std::string& error);

    std::string m_fileName;
    std::vector<DxlDocumentPointer> m_documents;
    std::vector<std::shared_ptr<const DxlSchema>> m_schemas;
};

}  // namespace vireo
