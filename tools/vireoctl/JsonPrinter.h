#pragma once

#include <ostream>
#include <string>

#include "AnswerPrinter.h"

namespace vireo {

/// One JSON object per answer, on a line of its own. Bytes that are not UTF-8 become U+FFFD.
class JsonPrinter : public AnswerPrinter {
public:
    /// The stream is not owned and outlives the printer.
    explicit JsonPrinter(std::ostream& out) : m_out(out) {}

    void record(const RecordAnswer& answer) override;
    void method(const Method& reply) override;
    void text(const std::string& methodName, const std::string& parameterName,
              const std::string& value) override;
    void emptyReply() override;

private:
    std::ostream& m_out;
};

}  // namespace vireo
