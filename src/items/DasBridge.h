#pragma once

#include <functional>
#include <string>

#include "NodeId.h"

namespace vireo {

class DataAccessServiceIfc;
class ItemCatalogue;
class ManageableData;
struct StoreAddress;

/// Reads and writes this service's own items in the persistent store. Items that the store does not
/// keep live in the master collection. Safe from every thread.
class DasBridge {
public:
    /// Answers the store, or null while there is none.
    using StoreSource = std::function<DataAccessServiceIfc*()>;

    DasBridge(ItemCatalogue& catalogue, StoreSource store);

    /// Fills in the one item of the record. All its nodes are tried; false when any failed.
    bool getDasData(ManageableData& record);
    /// Writes the nodes of the one item that the record carries. All are tried; true when the store
    /// acknowledged every one.
    bool setDasData(const ManageableData& record);

private:
    friend class StoreUpdate;

    bool readUnmapped(const std::string& rootId, ManageableData& record);
    bool readNode(const NodeId& node, ManageableData& record);
    bool writeNode(const NodeId& node, const std::string& value);
    /// False when the table has an index column and the node no value for it.
    bool findIndexValue(const NodeId& node, const StoreAddress& address,
                        const std::string& indexColumn, std::string& indexValue) const;
    bool send(const std::string& request, std::string& answer);

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

    /// Writes the one item of the record, as `DasBridge::setDasData` does.
    bool write(const ManageableData& record);
    /// Whether everything that was written is on stable storage now. False: nothing of it happened.
    bool commit();

private:
    DasBridge& m_bridge;
    DataAccessServiceIfc* m_open = nullptr;
};

}  // namespace vireo
