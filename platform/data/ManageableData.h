#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include "Visibility.h"
#include "data/DxlCollection.h"
#include "data/NamedSet.h"
#include "data/RejectionSpec.h"
#include "data/RootIdList.h"
#include "data/Serializable.h"

namespace vireo {

class LocalMgmtIfc;

/// The record that every read, write and notification carries: root ids (items), one document per
/// item, their schemas, and refusals. A value type: copies share the immutable documents; one
/// instance is used by one thread at a time.
class VIREO_API ManageableData : public Serializable {
public:
    enum serializationType {
        eEverything = 0,
        eWithoutRejections = 1,
    };

    ManageableData();
    /// A record that also finds schemas in `dictionary` (not owned, outlives the record; may be
    /// null).
    explicit ManageableData(DxlDictionary* dictionary);
    /// A record of the one item `rootId` with a copy of `node` as its value tree, rooted in the
    /// schema `schemaName`.
    ManageableData(const std::string& rootId, const std::string& schemaName, const DataNode& node);

    // -- root ids ------------------------------------------------------------------------------

    /// Appends an item; one that is there already stays where it is. `requester` is the local
    /// client to answer, null when the service asks for itself; it is not kept.
    void addRootId(const std::string& rootId, LocalMgmtIfc* requester);
    /// Appends an item and keeps `companion` beside it.
    void addRootId(const std::string& rootId, const std::string& companion);
    /// Makes this a record of the one item `rootId`; documents of other items stay but are not
    /// listed any more.
    void setRootId(const std::string& rootId, LocalMgmtIfc* requester);
    /// Drops an item with its document.
    void removeRootId(const std::string& rootId);
    /// Drops many items with their documents, in one pass.
    void removeRootIds(const std::unordered_set<std::string>& rootIds);
    /// Replaces `rootIds` by all items in the order in which they were added.
    void getRootIds(std::vector<std::string>& rootIds) const;
    const std::vector<std::string>& rootIds() const { return m_rootIds.ids(); }
    /// The only item; empty when there are none or several, so that nobody takes the first of many
    /// for all.
    std::string getRootId() const;
    bool isSingleRecord() const { return m_single; }
    /// The text kept beside an item, if any.
    std::optional<std::string> companion(const std::string& rootId) const;

    // -- values --------------------------------------------------------------------------------

    /// The node that carries the item's value, or a null handle when the record lacks the item.
    DataNode interogate(const std::string& rootId) const;
    /// Reads the first node called `nodeId` below the item's root, in document order. When there is
    /// none and `nodeId` is the item or the root's name: the root. False when the item or the node
    /// is absent; `value` is unchanged then.
    bool interogate(const std::string& rootId, const std::string& nodeId, std::string& value) const;
    /// Writes the node that `interogate` would read, creating it where the schema has it, and lists
    /// the item. A leaf takes `value` as text, a branch parses it as inner XML. An item without
    /// document gets a provisional one rooted `rootId`. False, and no change, when `rootId` is no
    /// XML name, `value` holds what XML cannot carry or is malformed for a branch, or there is no
    /// such node.
    bool populate(const std::string& rootId, const std::string& nodeId, const std::string& value);
    /// Writes the item's value.
    bool populate(const std::string& rootId, const std::string& value);
    /// Makes a copy of `node` the item's value tree. False for a null handle.
    bool populate(const std::string& rootId, const DataNode& node);
    /// Gives the item a document with the defaults of the record's schema `schemaName`; false when
    /// the record does not have that schema. Does not list the item.
    bool makeDocument(const std::string& schemaName, const std::string& rootId);
    /// The two in one step for an item whose schema is a single leaf: gives it a document with the
    /// value, and lists it. False, and no change, when the schema is another or not there, `rootId`
    /// is no XML name or `value` holds what XML cannot carry; `value` is only taken otherwise.
    bool makeLeaf(const std::string& schemaName, const std::string& rootId, std::string&& value);

    // -- documents and schemas -----------------------------------------------------------------

    DxlDocumentPointer getDocument(const std::string& rootId) const;
    /// All documents, ordered by name: those of the root ids and what the record holds beside them.
    std::vector<DxlDocumentPointer> documents() const;
    std::shared_ptr<const DxlSchema> getSchema(const std::string& name) const;
    void putDocument(DxlDocumentPointer document);
    void putSchema(std::shared_ptr<const DxlSchema> schema);
    /// Takes the named document from `source`; false when it has none. Does not list the item.
    bool copyDocument(const std::string& rootId, const DxlCollection& source);
    bool copyDocument(const std::string& rootId, const ManageableData& source);
    bool copySchema(const std::string& name, const DxlCollection& source);
    bool copySchema(const std::string& name, const ManageableData& source);

    // -- refusals ------------------------------------------------------------------------------

    void addRejectReason(std::string rootId, std::string nodePath, std::string reason);
    void addRejectReasons(const std::vector<RejectionSpec>& reasons);
    /// Replaces `reasons` by all refusals in the order in which they were added.
    void getRejectReasons(std::vector<RejectionSpec>& reasons) const { reasons = m_rejections; }
    const std::vector<RejectionSpec>& rejections() const { return m_rejections; }
    void clearRejectReasons();

    // -- text form -----------------------------------------------------------------------------

    std::string serialize() const override { return serialize(eEverything); }
    std::string serialize(serializationType type) const;
    /// Appends what `serialize` answers.
    void appendText(std::string& out) const;
    /// Makes the text of the record as it is and keeps it until the record changes, for one that is
    /// sent several times. Copies have it too.
    void keepText();
    /// Whether it is kept still: then the record has not changed since.
    bool keepsText() const { return m_text != nullptr; }
    /// Lays the record of the text over this one: its documents and schemas replace those of the
    /// same name, unknown root ids and all refusals are appended.
    bool deserialize(const std::string& text) override;
    /// The same with a record instead of a text.
    void overlay(const ManageableData& other);
    /// The same with a record that is given away.
    void overlay(ManageableData&& other);
    /// Empties the record.
    void clearAll();

private:
    friend class RecordText;

    /// Whether nothing was put in yet.
    bool isBlank() const;
    bool writeNode(const std::string& rootId, const std::string& nodeId, const std::string& value);

    RootIdList m_rootIds;
    bool m_single = false;
    DxlDictionary* m_dictionary = nullptr;
    NamedSet<DxlDocument> m_documents;
    NamedSet<DxlSchema> m_schemas;
    std::vector<RejectionSpec> m_rejections;
    std::map<std::string, std::string> m_companions;
    std::shared_ptr<const std::string> m_text;  ///< null unless it was asked for; see `keepText`
};

}  // namespace vireo
