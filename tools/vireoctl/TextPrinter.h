#pragma once

#include <ostream>
#include <string>

#include "AnswerPrinter.h"

namespace vireo {

/// Lines for a person: `name = value` for what is there, `name: reason` for what is not.
class TextPrinter : public AnswerPrinter {
public:
    /// The streams are not owned and outlive the printer.
    TextPrinter(std::ostream& out, std::ostream& errors) : m_out(out), m_errors(errors) {}

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
