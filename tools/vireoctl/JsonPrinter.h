#pragma once

#include <string>

#include "AnswerPrinter.h"

namespace vireo {

/// One JSON object per answer, on a line of its own. Bytes that are not UTF-8 become U+FFFD.
class JsonPrinter : public AnswerPrinter {
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
