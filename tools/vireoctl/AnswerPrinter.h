#pragma once

#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "LocalMgmtClient.h"
#include "data/RejectionSpec.h"
#include "service/Method.h"

namespace vireo {

/// What came of reading or writing items.
struct RecordAnswer {
    bool result = false;
    std::vector<std::pair<std::string, std::string>> items;  ///< those read or written
    std::vector<RejectionSpec> refusals;
    std::vector<std::string> remarks;  ///< lines for a person about the rest
};

/// Writes the service's answers for the reader of the program's output. The streams are not owned
/// and outlive the printer.
class AnswerPrinter {
public:
    AnswerPrinter(std::ostream& out, std::ostream& errors) : m_out(out), m_errors(errors) {}
    virtual ~AnswerPrinter() = default;

    virtual void record(const RecordAnswer& answer) = 0;
    virtual void method(const Method& reply) = 0;
    /// The answer of `methodName` with its only parameter, which a person reads as it is.
    virtual void text(const std::string& methodName, const std::string& parameterName,
                      const std::string& value) = 0;
    virtual void busyStatus(unsigned mask) = 0;
    virtual void limits(const LocalMgmtClient::FileTypeLimits& limits) = 0;
    virtual void emptyReply() = 0;

protected:
    std::ostream& m_out;
    std::ostream& m_errors;  ///< refusals and remarks, where they have no place in the answer
};

}  // namespace vireo
