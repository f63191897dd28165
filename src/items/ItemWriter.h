#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "items/ChangeNotifier.h"

namespace vireo {

class AgentRegistry;
class BegunWrite;
class DasBridge;
class DataCollection;
class ItemCatalogue;
class ManageableData;
class MgmtAgentIfc;
class OwnItems;
class StoreUpdate;
class WriteBatches;

/// Carries out writes of items. Safe from every thread. A write of several items holds the registry
/// until it is done; observers are told afterwards.
class ItemWriter {
public:
    ItemWriter(ItemCatalogue& catalogue, const DataCollection& collections, AgentRegistry& registry,
               DasBridge& store, ChangeNotifier& notifier, OwnItems& ownItems);

    /// Writes every item of the record. True when all were accepted; else the record carries the
    /// refusals.
    bool setData(ManageableData& record);

    /// Whether the record is one item that only the store keeps, so that its write calls nobody.
    bool isStoredItem(const ManageableData& record) const;
    /// Writes such a record; nothing is told, and the store has not committed it yet.
    std::unique_ptr<BegunWrite> begin(ManageableData record);
    /// Whether the name stands for several items.
    bool isCollection(const std::string& rootId) const;

private:
    struct Write;
    struct Begun;

    bool writeItems(ManageableData& record, const std::vector<std::string>& rootIds,
                    NotificationOrder::Change& change);
    bool writeItem(Write& write, const std::string& rootId);
    bool writeCollection(Write& write, const std::string& rootId);
    bool writeOwnItem(Write& write, const std::string& rootId);
    bool writeOwnValue(Write& write, const std::string& rootId);
    bool store(Write& write, const std::string& rootId);
    static bool writeToAgent(Write& write, MgmtAgentIfc& agent, const std::string& rootId);
    bool writeUnregistered(Write& write, const std::string& managementId,
                           const std::string& rootId);
    bool commitStore(Write& write);
    void tellObservers(const ManageableData& record, bool result, ChangeNotifier::Pending pending);

    ItemCatalogue& m_catalogue;
    const DataCollection& m_collections;
    AgentRegistry& m_registry;
    DasBridge& m_store;
    ChangeNotifier& m_notifier;
    OwnItems& m_ownItems;
    /// Held while a value is stored or kept and put into the order of notifications, so that
    /// observers hear of values in the order in which they replaced each other. Taken after the
    /// registry, and before the store's own locks; the store never calls back.
    std::mutex m_effects;
};

}  // namespace vireo
