#include "data/ConfigurationFile.h"

#include <pugixml.hpp>
#include <string_view>

#include "Ports.h"
#include "data/ByteScan.h"
#include "data/RowTable.h"
#include "data/XmlText.h"
#include "data/XmlTree.h"
#include "log/Log.h"

namespace vireo {
namespace {

constexpr const char* kComponent = "DxlCollection";
constexpr const char* kFile = "./host/data/ConfigurationFile";

}  // namespace

bool ConfigurationFile::read(const std::string& fileName) {
    m_fileName = fileName;
    const auto content = std::make_shared<std::string>();
    std::string error = "no configuration directory";
    ConfigPort* port = installedPorts().config;
    if (port != nullptr && port->readConfigFile(fileName, *content, error) &&
        (parsePlain(content) || parse(*content, error))) {
        return true;
    }
    if (loggingOnUni(kLogError)) {
        logAppUni(kComponent, kFile, kLogError, __LINE__,
                  "import of \"%s\" failed: %s; correct it and start again", fileName.c_str(),
                  error.c_str());
    }
    return false;
}

bool ConfigurationFile::parsePlain(const std::shared_ptr<const std::string>& content) {
    PlainXml xml(*content);
    bool isPlain = (ByteScan::isPlainText(*content) || !XmlText::findUncarriable(*content)) &&
                   (!xml.take("<?xml ") || xml.moveBehind("?>")) && xml.skipLayout() &&
                   xml.take("<dxl>") && xml.skipLayout();
    while (isPlain && !xml.take("</dxl>")) {
        isPlain = parsePlainElement(xml, content) && xml.skipLayout();
    }
    isPlain = isPlain && xml.skipLayout() && xml.isAtEnd();
    if (!isPlain) {
        m_documents.clear();
        m_schemas.clear();
    }
    return isPlain;
}

bool ConfigurationFile::parsePlainElement(PlainXml& xml,
                                          const std::shared_ptr<const std::string>& content) {
    if (DxlDocumentPointer table = RowTable::readDocument(xml, content)) {
        m_documents.push_back(std::move(table));
        return true;
    }
    const char* const begin = xml.place();
    const bool isSchema = xml.take("<schema");
    const bool hasTag = xml.moveBehind(">");
    const bool isEmpty = hasTag && xml.place()[-2] == '/';
    if (!hasTag || (!isEmpty && !xml.moveBehind(isSchema ? "</schema>" : "</document>"))) {
        return false;
    }
    // Wherever the mark stands: if all up to it is one well-formed element, this is where it ends.
    const std::string_view element(begin, static_cast<std::size_t>(xml.place() - begin));
    pugi::xml_document source;
    std::string error;
    const pugi::xml_node root =
        XmlTree::parse(source, element, isSchema ? "schema" : "document", error);
    if (root && isSchema) {
        m_schemas.push_back(XmlTree::readSchema(root, error));
        return m_schemas.back() != nullptr;
    }
    m_documents.push_back(
        root ? XmlTree::readDocument(root, XmlTree::Space::eDropIndentation, error) : nullptr);
    return m_documents.back() != nullptr;
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
