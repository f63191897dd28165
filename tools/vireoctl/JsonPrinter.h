#pragma once

#include <ostream>
#include <string>

#include "AnswerPrinter.h"

namespace vireo {

/// One JSON object per answer, on a line of its own. Bytes that are not UTF-8 become U+FFFD.
class JsonPrinter : public AnswerPrinter {
public:
    /// The stream is not owned and outlives the printer.
    /// Remarks for a person go to `errors`: the objects on `out` have no place for them.
    JsonPrinter(std::ostream& out, std::ostream& errors) : m_out(out), m_errors(errors) {}

    void record(const RecordAnswer& answer) override;
    void method(const Method& reply) override;
    void text(const std::string& methodName, const std::string& parameterName,
              const std::string& value) override;
    void emptyReply() override;

private:
    std::ostream& m_out;
    std::ostream& m_errors;
};

}  // namespace vireo
