#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "AgentValues.h"
#include "AnswerPrinter.h"
#include "ExitCode.h"
#include "LocalMgmtClient.h"
#include "MgmtAgentIfc.h"

namespace vireo {

class StopSignal;

/// The command that owns the items of a management id, prints what it is asked and announces the
/// changes that are typed.
class OwnerAgent : private MgmtAgentIfc {
public:
    struct Options {
        std::string managementId;
        std::vector<Assignment> initial;
        bool bulk = false;
        std::vector<Assignment> refusals;    ///< of writes: tag and reason
        std::chrono::milliseconds delay{0};  ///< before each answer
        bool hang = false;                   ///< never answers
    };

    /// All but the options outlives this. `out` is what `printer` writes to.
    OwnerAgent(Options options, AnswerPrinter& printer, const std::ostream& out,
               std::ostream& errors, const StopSignal& stop);

    /// Connects, registers, and serves until a signal comes, reading announcements from `input`. An
    /// id that no item has is refused instead: nobody would ever ask, and it would stay registered.
    ExitCode run(LocalMgmtClient::Options connection, int input);

private:
    bool setData(ManageableData& record) override;
    bool getData(ManageableData& record) override;
    bool manageableDataChanged(ManageableData& record) override;
    bool resetUserData() override;

    bool checkId();
    bool registerAsOwner();
    void serve(int input);
    bool readInput(int input);
    void announce(const std::string& line);
    bool pause() const;
    std::string findSchema(const std::string& tag, ManageableData& record);
    void fail(CallStatus status);

    const Options m_options;
    AnswerPrinter& m_printer;
    const std::ostream& m_out;
    std::ostream& m_errors;
    const StopSignal& m_stop;
    std::chrono::milliseconds m_timeout{};
    std::map<std::string, std::string> m_schemaNames;  // those that the service has told
    std::map<std::string, std::string> m_refusals;
    AgentValues m_values;
    std::string m_typed;  // the beginning of a line
    ExitCode m_code = ExitCode::eDone;
    std::unique_ptr<LocalMgmtClient> m_client;  // last: it calls this object
};

}  // namespace vireo
