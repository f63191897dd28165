#pragma once

#include <string>

#include "AnswerPrinter.h"

namespace vireo {

/// Lines for a person: `name = value` for what is there, `name: reason` for what is not.
class TextPrinter : public AnswerPrinter {
public:
    using AnswerPrinter::AnswerPrinter;

    void record(const RecordAnswer& answer) override;
    void method(const Method& reply) override;
    void text(const std::string& methodName, const std::string& parameterName,
              const std::string& value) override;
    void busyStatus(unsigned mask) override;
    void limits(const LocalMgmtClient::FileTypeLimits& limits) override;
    void emptyReply() override;
};

}  // namespace vireo
