#pragma once

#include <functional>
#include <string>

#include "MgmtAgentIfc.h"
#include "image/SoftwareBanks.h"

namespace vireo {

class LocalMgmtIfc;

/// The owner of the items that say which software the phone has: "software-version",
/// "software-bank" and "software-status" of what runs, and the same of both banks. They are read
/// only.
class SoftwareAgent : public MgmtAgentIfc {
public:
    static constexpr const char* kManagementId = "SoftwareMgmtId";
    /// Runs a task on the message thread.
    using Post = std::function<void(std::function<void()>)>;

    /// The banks outlive this.
    explicit SoftwareAgent(SoftwareBanks& banks) : m_banks(banks) {}

    /// Owns the items from now on and announces their changes. Everything outlives this but for its
    /// end. Before the first change of the banks.
    void serve(LocalMgmtIfc& management, Post post);

    bool setData(ManageableData& record) override;
    bool getData(ManageableData& record) override;
    bool manageableDataChanged(ManageableData& /*record*/) override { return true; }
    bool resetUserData() override { return true; }

private:
    std::string valueOf(const std::string& tag, const SoftwareBanks::View& view) const;
    void announce(LocalMgmtIfc& management) const;

    SoftwareBanks& m_banks;
    std::string m_installedVersion;  ///< as the configuration has it
};

}  // namespace vireo
