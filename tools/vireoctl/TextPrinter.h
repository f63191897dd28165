#pragma once

#include <string>
#include <vector>

#include "AnswerPrinter.h"
#include "ProgressLine.h"

namespace vireo {

/// Lines for a person: `name = value` for what is there, `name: reason` for what is not.
class TextPrinter : public AnswerPrinter {
public:
    /// On a terminal `out` gets a bar that moves instead of lines of progress.
    TextPrinter(std::ostream& out, std::ostream& errors, bool isTerminal = false)
        : AnswerPrinter(out, errors), m_progress(out, isTerminal) {}

    void record(const RecordAnswer& answer) override;
    void method(const Method& reply) override;
    void text(const std::string& methodName, const std::string& parameterName,
              const std::string& value) override;
    void busyStatus(unsigned mask) override;
    void trap(const std::string& methodName, bool sent) override;
    void limits(const LocalMgmtClient::FileTypeLimits& limits) override;
    void downloadStatus(const std::string& type, int percent) override;
    void validation(const std::string& type, const std::string& name, bool accepted) override;
    void files(const std::list<std::string>& paths) override;
    void deletion(const std::string& type, const std::string& name, bool deleted) override;
    void space(const std::string& id, const std::string& displayName,
               const MemoryInfo& info) override;
    void software(const RecordAnswer& answer) override;
    void outcome(const std::string& methodName, bool result, const std::string& text) override;
    void emptyReply() override;
    void changed(const ItemValues& items) override;
    void serving(const std::string& managementId, const std::string& channelName) override;
    void asked(const std::string& what, const std::vector<std::string>& tags) override;
    void askedToWrite(const ItemValues& items) override;
    void announced(const std::string& tag, const std::string& value, int observers) override;
    void download(const DownloadNews& news) override;

private:
    void remarks(const RecordAnswer& answer);

    ProgressLine m_progress;
};

}  // namespace vireo
