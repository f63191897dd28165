#include "JsonPrinter.h"

#include <nlohmann/json.hpp>

namespace vireo {
namespace {

using Json = nlohmann::ordered_json;

void printLine(std::ostream& out, const Json& object) {
    out << object.dump(-1, ' ', false, Json::error_handler_t::replace) << '\n';
}

void printMethod(std::ostream& out, const std::string& name, Json parameters) {
    printLine(out, Json{{"method", name}, {"parameters", std::move(parameters)}});
}

Json objectOf(const ItemValues& items) {
    Json object = Json::object();
    for (const auto& [tag, value] : items) {
        object[tag] = value;
    }
    return object;
}

Json valueOf(const Parameter& parameter) {
    switch (parameter.type) {
        case Parameter::types::eInt:
            return parameter.number;
        case Parameter::types::eBool:
            return parameter.number != 0;
        case Parameter::types::eString:
        case Parameter::types::eXML:
            break;
    }
    return parameter.text;
}

}  // namespace

void JsonPrinter::record(const RecordAnswer& answer) {
    for (const std::string& remark : answer.remarks) {
        m_errors << remark << '\n';
    }
    Json refusals = Json::array();
    for (const RejectionSpec& refusal : answer.refusals) {
        refusals.push_back(Json{{"rootId", refusal.rootId()},
                                {"path", refusal.nodePath()},
                                {"reason", refusal.reason()}});
    }
    Json object{{"result", answer.result},
                {"items", objectOf(answer.items)},
                {"refusals", std::move(refusals)}};
    if (!answer.remarks.empty()) {
        object["remarks"] = answer.remarks;
    }
    printLine(m_out, object);
}

void JsonPrinter::method(const Method& reply) {
    Json parameters = Json::object();
    for (const Parameter& parameter : reply.parameters()) {
        parameters.emplace(parameter.name,
                           valueOf(parameter));  // of two of a name the first counts
    }
    printMethod(m_out, reply.name(), std::move(parameters));
}

void JsonPrinter::text(const std::string& methodName, const std::string& parameterName,
                       const std::string& value) {
    printMethod(m_out, methodName, Json{{parameterName, value}});
}

void JsonPrinter::busyStatus(unsigned mask) {
    printMethod(m_out, "retrievePhoneBusyStatus", Json{{"busyStatus", mask}});
}

void JsonPrinter::trap(const std::string& methodName, bool sent) {
    printMethod(m_out, methodName, Json{{"result", sent}});
}

void JsonPrinter::limits(const LocalMgmtClient::FileTypeLimits& limits) {
    printMethod(m_out, "getFileTypeMetadata",
                Json{{"maxFileTypeEntries", limits.entries},
                     {"maxFileTypeNameChars", limits.nameCharacters}});
}

void JsonPrinter::downloadStatus(const std::string& /*type*/, int percent) {
    printMethod(m_out, "requestCurrentDownloadStatus", Json{{"result", percent}});
}

void JsonPrinter::validation(const std::string& /*type*/, const std::string& /*name*/,
                             bool accepted) {
    printMethod(m_out, "validateFile", Json{{"result", accepted}});
}

void JsonPrinter::files(const std::list<std::string>& paths) {
    printMethod(m_out, "getListOfFilesOfType", Json{{"FileNames", paths}});
}

void JsonPrinter::deletion(const std::string& /*type*/, const std::string& /*name*/, bool deleted) {
    printMethod(m_out, "deleteFile", Json{{"result", deleted}});
}

void JsonPrinter::space(const std::string& id, const std::string& displayName,
                        const MemoryInfo& info) {
    printMethod(m_out, "getUserDataSpaceInfo",
                Json{{"identifier", id},
                     {"displayname", displayName},
                     {"totalBytes", info.totalBytes()},
                     {"freeBytes", info.freeBytes()}});
}

void JsonPrinter::software(const RecordAnswer& answer) {
    record(answer);
}

void JsonPrinter::outcome(const std::string& methodName, bool result, const std::string& text) {
    if (!result) {
        m_errors << text << '\n';
    }
    printMethod(m_out, methodName, Json{{"result", result}});
}

void JsonPrinter::emptyReply() {
    printLine(m_out, Json{{"method", nullptr}});
}

void JsonPrinter::changed(const ItemValues& items) {
    printLine(m_out, Json{{"items", objectOf(items)}});
    m_out.flush();
}

void JsonPrinter::serving(const std::string& managementId, const std::string& channelName) {
    printLine(m_out, Json{{"serving", managementId}, {"channel", channelName}});
    m_out.flush();
}

void JsonPrinter::asked(const std::string& what, const std::vector<std::string>& tags) {
    printLine(m_out, Json{{"asked", what}, {"tags", tags}});
    m_out.flush();
}

void JsonPrinter::askedToWrite(const ItemValues& items) {
    printLine(m_out, Json{{"asked", "set"}, {"items", objectOf(items)}});
    m_out.flush();
}

void JsonPrinter::announced(const std::string& tag, const std::string& value, int observers) {
    printLine(m_out, Json{{"announced", Json::object({{tag, value}})}, {"observers", observers}});
    m_out.flush();
}

void JsonPrinter::download(const DownloadNews& news) {
    // In the order of the enumeration.
    static constexpr const char* kStates[] = {"started", "refused", "fetching", "burning",
                                              "done",    "failed",  "left",     "lost"};
    Json object{{"download", news.type}, {"state", kStates[news.what]}};
    if (news.what == DownloadNews::eFetching || news.what == DownloadNews::eBurning) {
        object["percent"] = news.percent;
    } else if (news.what == DownloadNews::eDone) {
        object["file"] = news.path;
    }
    printLine(m_out, object);
    m_out.flush();
}

}  // namespace vireo
