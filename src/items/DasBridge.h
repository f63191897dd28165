#pragma once

#include <functional>
#include <string>

namespace vireo {

class DasResponseParser;
class DataAccessServiceIfc;
class ItemCatalogue;
class ManageableData;

/// Reads and writes this service's own items in the persistent store. Items that the store does not
/// keep live in the master collection. Safe from every thread.
class DasBridge {
public:
    /// Answers the store, or null while there is none.
    using StoreSource = std::function<DataAccessServiceIfc*()>;

    DasBridge(ItemCatalogue& catalogue, StoreSource store);

    /// Fills in the item in the record, which has its schema. All its nodes are tried; false when
    /// any failed.
    bool getDasData(const std::string& rootId, const std::string& schemaName,
                    ManageableData& record);
    /// Writes the nodes of the item that the record carries. All are tried; true when the store
    /// acknowledged every one.
    bool setDasData(const std::string& rootId, const ManageableData& record);

private:
    friend class StoreUpdate;

    struct Place;

    bool readUnmapped(const std::string& rootId, const std::string& schemaName,
                      ManageableData& record);
    bool readNode(const std::string& rootId, const std::string& schemaName,
                  const std::string& nodeId, ManageableData& record);
    bool writeNode(const std::string& rootId, const std::string& nodeId, const std::string& value);
    /// False when the table has an index column and the node no value for it.
    bool findPlace(const std::string& rootId, const std::string& nodeId, Place& place) const;
    bool ask(const std::string& request, const char* reason, DasResponseParser& answer);

    ItemCatalogue& m_catalogue;
    StoreSource m_store;
};

/// Brings the store writes of one record to stable storage together. Commits at the latest when it
/// is destroyed; nobody hears of the outcome then.
class StoreUpdate {
public:
    explicit StoreUpdate(DasBridge& bridge) : m_bridge(bridge) {}
    ~StoreUpdate() { commit(); }
    StoreUpdate(const StoreUpdate&) = delete;
    StoreUpdate& operator=(const StoreUpdate&) = delete;

    /// Writes one item of the record, as `DasBridge::setDasData` does.
    bool write(const std::string& rootId, const ManageableData& record);
    /// Whether everything that was written is on stable storage now. False: nothing of it happened.
    bool commit();

private:
    DasBridge& m_bridge;
    DataAccessServiceIfc* m_open = nullptr;
};

}  // namespace vireo
