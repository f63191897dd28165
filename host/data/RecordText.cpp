#include "data/RecordText.h"

#include <pugixml.hpp>
#include <string_view>

#include "data/PlainRecord.h"
#include "data/XmlText.h"
#include "data/XmlTree.h"

namespace vireo {
namespace {

// Room for a record of one item with a value that is not long.
constexpr std::size_t kUsualSize = 512;

/// Ids and reasons can come from anywhere; what XML cannot carry must not spoil the whole record.
template <class Append>
void appendCarriable(std::string& out, const std::string& text, Append&& append) {
    if (!XmlText::findUncarriable(text)) {
        append(out, text);
        return;
    }
    std::string safe = text;
    for (char& c : safe) {
        const auto byte = static_cast<unsigned char>(c);
        c = byte < 0x20 || byte >= 0x7F ? '?' : c;
    }
    append(out, safe);
}

void appendAttribute(std::string& out, const char* name, const std::string& value) {
    out.append(1, ' ').append(name).append("=\"");
    appendCarriable(out, value, XmlText::appendEscapedAttribute);
    out.push_back('"');
}

void appendRootIds(std::string& out, const ManageableData& record) {
    for (const std::string& rootId : record.rootIds()) {
        out.append("<rootId");
        if (const auto companion = record.companion(rootId)) {
            appendAttribute(out, "with", *companion);
        }
        out.push_back('>');
        appendCarriable(out, rootId, XmlText::appendEscaped);
        out.append("</rootId>");
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
    std::string out;
    append(out, record, type);
    return out;
}

void RecordText::append(std::string& out, const ManageableData& record,
                        ManageableData::serializationType type) {
    out.reserve(out.size() + kUsualSize);
    out.append("<record");
    out.append(record.isSingleRecord() ? " single=\"1\">" : ">");
    appendRootIds(out, record);
    record.m_schemas.forEachSorted([&out](const auto& schema) { schema->appendText(out); });
    appendDocuments(out, record);
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
}

// Items in their order first, then what a record may hold beside them.
void RecordText::appendDocuments(std::string& out, const ManageableData& record) {
    std::size_t written = 0;
    for (const std::string& rootId : record.rootIds()) {
        if (const DxlDocumentPointer document = record.m_documents.find(rootId)) {
            document->appendText(out);
            ++written;
        }
    }
    if (written == record.m_documents.values().size()) {
        return;
    }
    RootIdList listed;
    for (const std::string& rootId : record.rootIds()) {
        listed.add(rootId);
    }
    for (const DxlDocumentPointer& document : record.m_documents.sorted()) {
        if (!listed.contains(document->getName())) {
            document->appendText(out);
        }
    }
}

bool RecordText::read(const std::string& text, ManageableData& record, std::string& error) {
    if (PlainRecord::read(text, record)) {
        return true;
    }
    record.clearAll();
    return readAny(text, record, error);
}

bool RecordText::readAny(const std::string& text, ManageableData& record, std::string& error) {
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
