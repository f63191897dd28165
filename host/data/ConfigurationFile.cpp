#include "data/ConfigurationFile.h"

#include <pugixml.hpp>
#include <string_view>

#include "Ports.h"
#include "data/XmlTree.h"
#include "log/Log.h"

namespace vireo {
namespace {

constexpr const char* kComponent = "DxlCollection";
constexpr const char* kFile = "./host/data/ConfigurationFile";

}  // namespace

bool ConfigurationFile::read(const std::string& fileName) {
    m_fileName = fileName;
    std::string content;
    std::string error = "no configuration directory";
    ConfigPort* port = installedPorts().config;
    if (port != nullptr && port->readConfigFile(fileName, content, error) &&
        parse(content, error)) {
        return true;
    }
    if (loggingOnUni(kLogError)) {
        logAppUni(kComponent, kFile, kLogError, __LINE__,
                  "import of \"%s\" failed: %s; correct it and start again", fileName.c_str(),
                  error.c_str());
    }
    return false;
}

bool ConfigurationFile::parse(const std::string& content, std::string& error) {
    pugi::xml_document source;
    const pugi::xml_node root = XmlTree::parse(source, content, "dxl", error);
    if (!root) {
        return false;
    }
    std::vector<DxlDocumentPointer> documents;
    std::vector<std::shared_ptr<const DxlSchema>> schemas;
    for (const pugi::xml_node& element : root.children()) {
        const std::string_view kind = element.name();
        if (element.type() != pugi::node_element) {
            continue;
        }
        if (kind == "document") {
            documents.push_back(
                XmlTree::readDocument(element, XmlTree::Space::eDropIndentation, error));
        } else if (kind == "schema") {
            schemas.push_back(XmlTree::readSchema(element, error));
        } else {
            error = "<" + std::string(kind) + "> is neither a document nor a schema";
            return false;
        }
        if ((kind == "document" && !documents.back()) || (kind == "schema" && !schemas.back())) {
            return false;
        }
    }
    m_documents = std::move(documents);
    m_schemas = std::move(schemas);
    return true;
}

void ConfigurationFile::warnOfTakenName(const char* kind, const std::string& name) const {
    if (loggingOnUni(kLogWarning)) {
        logAppUni(kComponent, kFile, kLogWarning, __LINE__,
                  "%s \"%s\" of \"%s\" left out: the name is taken", kind, name.c_str(),
                  m_fileName.c_str());
    }
}

}  // namespace vireo
