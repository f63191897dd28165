#pragma once

#include <map>
#include <string>

namespace vireo {

class AgentRegistry;
class DasBridge;
class DataCollection;
class ItemCatalogue;
class ManageableData;
class MgmtAgentIfc;
class OwnItems;
class ValueCache;

/// Answers reads of items. Takes no lock of its own; safe from every thread.
class ItemReader {
public:
    ItemReader(ItemCatalogue& catalogue, const DataCollection& collections, AgentRegistry& registry,
               DasBridge& store, ValueCache& cache, OwnItems& ownItems);

    /// Fills in every item of the record. Every one is tried; false when any failed.
    bool getData(ManageableData& record);
    /// One simple value. Values of other owners are taken from the value cache when it has them.
    bool getData(const std::string& tag, std::string& value);
    /// One simple value, "???" when it cannot be read.
    std::string getValueFromVCMS(const std::string& tag);

private:
    /// The requests to owners that want all their items in one record, by management id.
    using Requests = std::map<std::string, ManageableData>;

    bool readItem(ManageableData& record, const std::string& rootId, Requests& requests);
    bool readOwnItem(ManageableData& record, const std::string& rootId,
                     const std::string& schemaName);
    bool readOwnValue(ManageableData& item, const std::string& rootId,
                      const std::string& schemaName);
    bool readUnregistered(ManageableData& record, const std::string& rootId,
                          const std::string& schemaName);
    bool readFromAgent(MgmtAgentIfc& agent, ManageableData& record, const std::string& rootId,
                       const std::string& schemaName);
    bool readCollection(ManageableData& record, const std::string& rootId);
    bool readUnmapped(ManageableData& record, const std::string& rootId);
    bool askOwner(const std::string& managementId, ManageableData& request, ManageableData& record);
    void prepare(ManageableData& item, const ManageableData& record, const std::string& rootId,
                 const std::string& schemaName);

    ItemCatalogue& m_catalogue;
    const DataCollection& m_collections;
    AgentRegistry& m_registry;
    DasBridge& m_store;
    ValueCache& m_cache;
    OwnItems& m_ownItems;
};

}  // namespace vireo
