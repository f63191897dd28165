#pragma once

#include <chrono>
#include <optional>
#include <ostream>
#include <set>
#include <string>
#include <vector>

#include "AnswerPrinter.h"
#include "ExitCode.h"
#include "LocalMgmtClient.h"
#include "MgmtAgentIfc.h"

namespace vireo {

class StopSignal;

/// The command that observes items and prints their changes as they happen. Its channel name is
/// often one that an earlier process had, which may have gone without taking its observations back:
/// they are given up, and what they tell is not printed.
class Watch : private MgmtAgentIfc {
public:
    struct Options {
        std::vector<std::string> tags;  ///< "all-data" for all items
        bool bulk = false;
        std::optional<unsigned> count;                  ///< ends after so many records
        std::optional<std::chrono::milliseconds> span;  ///< ends after so long
    };

    /// Nothing but the options is kept; all outlives this. `out` is what `printer` writes to.
    Watch(Options options, AnswerPrinter& printer, const std::ostream& out, std::ostream& errors)
        : m_options(std::move(options)), m_printer(printer), m_out(out), m_errors(errors) {}

    /// Connects, observes until it is to end, and stops observing.
    ExitCode run(LocalMgmtClient::Options connection, const StopSignal& stop);

private:
    bool setData(ManageableData& record) override;
    bool getData(ManageableData& record) override;
    bool manageableDataChanged(ManageableData& record) override;
    bool resetUserData() override;

    bool giveUpAll(LocalMgmtClient& client);
    bool observeAll(LocalMgmtClient& client);
    ExitCode watch(LocalMgmtClient& client, const StopSignal& stop);
    void stopObserving(LocalMgmtClient& client);
    CallStatus giveUp(LocalMgmtClient& client, const std::string& tag);
    bool giveUpStrays(LocalMgmtClient& client);
    bool isWanted(const std::string& tag) const { return m_wantsAll || m_wanted.contains(tag); }
    bool isDone() const;
    void fail(const LocalMgmtClient& client, CallStatus status);

    const Options m_options;
    AnswerPrinter& m_printer;
    const std::ostream& m_out;
    std::ostream& m_errors;
    std::chrono::milliseconds m_timeout{};
    std::vector<std::string> m_observed;
    std::set<std::string> m_wanted;  // what is printed
    bool m_wantsAll = false;         // or all, also when not all that is observed is known by name
    std::set<std::string> m_strays;  // told, but not wanted
    unsigned m_told = 0;
    bool m_isWatching = false;
    ExitCode m_code = ExitCode::eDone;
};

}  // namespace vireo
