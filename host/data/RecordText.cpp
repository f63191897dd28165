#include "data/RecordText.h"

#include <pugixml.hpp>
#include <string_view>

#include "data/XmlText.h"
#include "data/XmlTree.h"

namespace vireo {
namespace {

/// Ids and reasons can come from anywhere; what XML cannot carry must not spoil the whole record.
std::string carriable(const std::string& text) {
    std::string safe = text;
    if (XmlText::findUncarriable(safe)) {
        for (char& c : safe) {
            const auto byte = static_cast<unsigned char>(c);
            c = byte < 0x20 || byte >= 0x7F ? '?' : c;
        }
    }
    return safe;
}

void appendAttribute(std::string& out, const char* name, const std::string& value) {
    out.append(1, ' ').append(name).append("=\"");
    XmlText::appendEscapedAttribute(out, carriable(value));
    out.push_back('"');
}

void appendRootIds(std::string& out, const ManageableData& record) {
    for (const std::string& rootId : record.rootIds()) {
        out.append("<rootId");
        if (const auto companion = record.companion(rootId)) {
            appendAttribute(out, "with", *companion);
        }
        out.push_back('>');
        XmlText::appendEscaped(out, carriable(rootId));
        out.append("</rootId>");
    }
}

void appendDocuments(std::string& out, const ManageableData& record, const DxlCollection& items) {
    // Items in their order first, then what a record may hold beside them.
    RootIdList listed;
    for (const std::string& rootId : record.rootIds()) {
        listed.add(rootId);
        if (const DxlDocumentPointer document = items.getDocument(rootId)) {
            out.append(document->text());
        }
    }
    for (const DxlDocumentPointer& document : items.documents()) {
        if (!listed.contains(document->getName())) {
            out.append(document->text());
        }
    }
}

void readRefusal(const pugi::xml_node& element, ManageableData& record) {
    record.addRejectReason(element.attribute("rootId").value(), element.attribute("path").value(),
                           element.attribute("reason").value());
}

void readRootId(const pugi::xml_node& element, ManageableData& record) {
    const std::string rootId = element.text().get();
    if (const pugi::xml_attribute companion = element.attribute("with")) {
        record.addRootId(rootId, std::string(companion.value()));
    } else {
        record.addRootId(rootId, nullptr);
    }
}

bool readElement(const pugi::xml_node& element, ManageableData& record, std::string& error) {
    const std::string_view kind = element.name();
    if (kind == "rootId" || kind == "refusal") {
        if (!XmlTree::checkElement(element, false, error)) {
            return false;
        }
        kind == "rootId" ? readRootId(element, record) : readRefusal(element, record);
        return true;
    }
    if (kind == "document") {
        auto document = XmlTree::readDocument(element, XmlTree::Space::eKeep, error);
        if (document) {
            record.putDocument(document);
        }
        return document != nullptr;
    }
    if (kind == "schema") {
        auto schema = XmlTree::readSchema(element, error);
        if (schema) {
            record.putSchema(schema);
        }
        return schema != nullptr;
    }
    error = "<" + std::string(kind) + "> does not belong into a record";
    return false;
}

}  // namespace

std::string RecordText::write(const ManageableData& record,
                              ManageableData::serializationType type) {
    std::string out("<record");
    out.append(record.isSingleRecord() ? " single=\"1\">" : ">");
    appendRootIds(out, record);
    for (const auto& schema : record.m_items.schemas()) {
        out.append(schema->text());
    }
    appendDocuments(out, record, record.m_items);
    if (type != ManageableData::eWithoutRejections) {
        for (const RejectionSpec& refusal : record.rejections()) {
            out.append("<refusal");
            appendAttribute(out, "rootId", refusal.rootId());
            appendAttribute(out, "path", refusal.nodePath());
            appendAttribute(out, "reason", refusal.reason());
            out.append("/>");
        }
    }
    out.append("</record>");
    return out;
}

bool RecordText::read(const std::string& text, ManageableData& record, std::string& error) {
    pugi::xml_document source;
    const pugi::xml_node root = XmlTree::parse(source, text, "record", error);
    if (!root || !XmlTree::checkElement(root, true, error)) {
        return false;
    }
    for (const pugi::xml_node& element : root.children()) {
        if (element.type() == pugi::node_element && !readElement(element, record, error)) {
            return false;
        }
    }
    record.m_single = root.attribute("single") && record.rootIds().size() == 1;
    return true;
}

}  // namespace vireo
