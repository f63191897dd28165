#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "AnswerPrinter.h"
#include "Assignment.h"
#include "ExitCode.h"
#include "LocalMgmtClient.h"

namespace vireo {

/// The commands that ask the service once: each makes its calls, prints the answer and says what
/// the program shall end with.
class Commands {
public:
    /// Nothing is owned, everything outlives this. `errors` takes what is wrong with the calls
    /// themselves; `timeout` is that of the client.
    Commands(LocalMgmtClient& client, AnswerPrinter& printer, std::ostream& errors,
             std::chrono::milliseconds timeout)
        : m_client(client), m_printer(printer), m_errors(errors), m_timeout(timeout) {}

    /// Reads all items with one record. For a collection its members are printed.
    ExitCode get(const std::vector<std::string>& tags);
    /// Writes all items with one record. Nothing is sent when one of them cannot be.
    ExitCode set(const std::vector<Assignment>& assignments);
    /// Reads the items about the phone's software and its two banks.
    ExitCode software();
    ExitCode schema(const std::string& name);
    ExitCode schemaOf(const std::string& tag);
    ExitCode invalidateCache();
    ExitCode showBusy();
    ExitCode setBusy(unsigned bits);
    ExitCode clearBusy(unsigned bits);
    /// eRefused when it was not sent.
    ExitCode raiseGenericTrap(int dest, int trap);
    /// `trapText`: the text form of a trap.
    ExitCode raiseSpecificTrap(int dest, const std::string& trapText);
    /// `fileType` is one of the names that the service knows; it takes others for software.
    ExitCode limits(const std::string& fileType);
    /// `fileType` likewise. Empty `fileName`: whatever its name is. eRefused when it failed, or was
    /// another one.
    ExitCode downloadStatus(const std::string& fileType, const std::string& fileName);
    ExitCode validate(const std::string& fileType, const std::string& fileName);
    /// `user` is one of the names of `UserTypes`, or empty: the current one.
    ExitCode listFiles(const std::string& fileType, const std::string& user);
    ExitCode deleteFile(const std::string& fileType, const std::string& fileName);
    ExitCode changeUser(const std::string& user);
    ExitCode showSpace();
    ExitCode call(const std::string& methodName, const std::vector<Parameter>& parameters);

    /// Where a password comes from; none, with `error`, when there is none.
    using PasswordSource = std::function<std::optional<std::string>(std::string& error)>;
    /// A person on the terminal, or the first line of standard input.
    static std::optional<std::string> askForPassword(bool readsInput, std::string& error);
    /// eRefused when no reboot was started, which need not be a failure.
    ExitCode factoryReset(const PasswordSource& password);
    ExitCode reboot(const std::string& reason);
    ExitCode resetUserData();

private:
    bool reportFailure(CallStatus status, ExitCode& code);
    ExitCode read(const std::vector<std::string>& tags, RecordAnswer& answer);
    ExitCode print(const RecordAnswer& answer);
    ExitCode printName(CallStatus status, const char* methodName, const char* parameterName,
                       const std::string& value, const std::string& unknown);
    std::optional<bool> isKnown(const std::string& tag);
    std::string explainMissing(const std::string& tag);
    void takeMembers(const ManageableData& record, const std::vector<std::string>& asked,
                     const std::vector<std::string>& missing, RecordAnswer& answer);
    bool bringsMembers(const std::string& tag);
    ExitCode printDone(CallStatus status, const char* methodName);
    ExitCode printOutcome(CallStatus status, const char* methodName, bool result, const char* text);
    ExitCode printSent(CallStatus status, const char* methodName, bool sent);
    void sortOutWritten(const std::vector<Assignment>& assignments, RecordAnswer& answer);

    LocalMgmtClient& m_client;
    AnswerPrinter& m_printer;
    std::ostream& m_errors;
    const std::chrono::milliseconds m_timeout;
};

}  // namespace vireo
