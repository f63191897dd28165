#include "TextPrinter.h"

#include <algorithm>

#include "BusyMask.h"
#include "CallStatus.h"

namespace vireo {

void TextPrinter::record(const RecordAnswer& answer) {
    for (const auto& [tag, value] : answer.items) {
        m_out << tag << " = " << value << '\n';
    }
    remarks(answer);
}

void TextPrinter::remarks(const RecordAnswer& answer) {
    m_out.flush();  // before the refusals, where both go to one terminal
    for (const RejectionSpec& refusal : answer.refusals) {
        m_errors << refusal.rootId() << ": " << refusal.reason() << '\n';
    }
    for (const std::string& remark : answer.remarks) {
        m_errors << remark << '\n';
    }
}

void TextPrinter::method(const Method& reply) {
    for (const Parameter& parameter : reply.parameters()) {
        m_out << parameter.name << " = ";
        switch (parameter.type) {
            case Parameter::types::eInt:
                m_out << parameter.number;
                break;
            case Parameter::types::eBool:
                m_out << (parameter.number != 0 ? "true" : "false");
                break;
            case Parameter::types::eString:
            case Parameter::types::eXML:
                m_out << parameter.text;
                break;
        }
        m_out << '\n';
    }
}

void TextPrinter::text(const std::string& /*methodName*/, const std::string& /*parameterName*/,
                       const std::string& value) {
    if (!value.empty()) {
        m_out << value << '\n';
    }
}

void TextPrinter::busyStatus(unsigned mask) {
    m_out << "busy = " << mask << " (" << BusyMask::describe(mask) << ")\n";
}

void TextPrinter::trap(const std::string& /*methodName*/, bool sent) {
    if (sent) {
        m_out << "sent\n";
    } else {
        m_errors << "not sent: its receiver is switched off or unknown, or it cannot be sent; the "
                    "log of the service says why\n";
    }
}

void TextPrinter::limits(const LocalMgmtClient::FileTypeLimits& limits) {
    m_out << "entries = " << limits.entries << (limits.entries == -1 ? " (no limit)" : "")
          << "\nname characters = " << limits.nameCharacters << '\n';
}

void TextPrinter::downloadStatus(const std::string& type, int percent) {
    constexpr int kNoSuchDownload = -1;
    m_out << type << ": ";
    if (percent >= 0) {
        m_out << percent << " %\n";
    } else {
        m_out << (percent == kNoSuchDownload ? "failed, or there was none\n" : "failed\n");
    }
}

void TextPrinter::validation(const std::string& type, const std::string& name, bool accepted) {
    m_out << type << ": " << name << (accepted ? ": accepted\n" : ": rejected\n");
}

void TextPrinter::files(const std::list<std::string>& paths) {
    for (const std::string& path : paths) {
        m_out << path << '\n';
    }
}

void TextPrinter::deletion(const std::string& type, const std::string& name, bool deleted) {
    m_out << type << ": " << name << (deleted ? ": deleted\n" : ": not deleted\n");
}

void TextPrinter::space(const std::string& id, const std::string& displayName,
                        const MemoryInfo& info) {
    constexpr std::uint64_t kMegabyte = 1'000'000;
    m_out << displayName << " (" << id << "): ";
    if (info.totalBytes() == 0) {
        m_out << "the room cannot be found out\n";
        return;
    }
    m_out << info.freeBytes() / kMegabyte << " MB free of " << info.totalBytes() / kMegabyte
          << " MB\n";
}

void TextPrinter::software(const RecordAnswer& answer) {
    const auto valueOf = [&answer](const std::string& tag) {
        const auto found = std::find_if(answer.items.begin(), answer.items.end(),
                                        [&](const auto& item) { return item.first == tag; });
        return found != answer.items.end() ? found->second : std::string();
    };
    if (!answer.items.empty()) {
        const std::string bank = valueOf("software-bank");
        m_out << "runs: " << valueOf("software-version")
              << (bank == "installed" ? ", installed, no bank" : ", bank " + bank) << ", "
              << valueOf("software-status") << '\n';
        for (const char* const name : {"a", "b"}) {
            const std::string tag = std::string("software-bank-") + name;
            const std::string version = valueOf(tag + "-version");
            m_out << "bank " << name << ": " << version << (version.empty() ? "" : ", ")
                  << valueOf(tag + "-status") << '\n';
        }
    }
    remarks(answer);
}

void TextPrinter::outcome(const std::string& /*methodName*/, bool result, const std::string& text) {
    (result ? m_out : m_errors) << text << '\n';
}

void TextPrinter::emptyReply() {
    m_errors << "vireoctl: " << describe(CallStatus::eEmptyReply)
             << ": it could not serve this request, its log says why\n";
}

void TextPrinter::changed(const ItemValues& items) {
    for (const auto& [tag, value] : items) {
        m_out << tag << " = " << value << '\n';
    }
    m_out.flush();
}

void TextPrinter::serving(const std::string& managementId, const std::string& channelName) {
    m_out << "serving " << managementId << " as " << channelName << '\n';
    m_out.flush();
}

void TextPrinter::asked(const std::string& what, const std::vector<std::string>& tags) {
    m_out << what;
    for (const std::string& tag : tags) {
        m_out << ' ' << tag;
    }
    m_out << '\n';
    m_out.flush();
}

void TextPrinter::askedToWrite(const ItemValues& items) {
    for (const auto& [tag, value] : items) {
        m_out << "set " << tag << " = " << value << '\n';
    }
    m_out.flush();
}

void TextPrinter::announced(const std::string& tag, const std::string& value, int observers) {
    m_out << "announced " << tag << " = " << value << " (messages to observers: " << observers
          << ")\n";
    m_out.flush();
}

void TextPrinter::download(const DownloadNews& news) {
    if (news.what == DownloadNews::eFetching || news.what == DownloadNews::eBurning) {
        m_progress.show(news.type, news.what == DownloadNews::eBurning ? "burning" : "",
                        news.percent);
        return;
    }
    m_progress.end();
    switch (news.what) {
        case DownloadNews::eStarted:
            m_out << news.type << ": started\n";
            break;
        case DownloadNews::eRefused:
            m_out << news.type << ": not started\n";
            break;
        case DownloadNews::eDone:
            m_out << news.type << ": " << news.path << '\n';
            break;
        case DownloadNews::eFailed:
            m_out << news.type << ": failed\n";
            break;
        default:
            break;
    }
    m_out.flush();
}

}  // namespace vireo
