#include <fstream>
#include <optional>

#include "support/RunningPhone.h"

namespace vireo::test {
namespace {

struct Exchange {
    std::string protocol;
    int line = 0;  // of the document, where the request starts
    std::string request;
    std::string reply;
};

/// Reads the exchanges of a document: in blocks fenced as their protocol, the lines of a request
/// behind '>', then those of its reply behind '<'.
class TranscriptReader {
public:
    static std::vector<Exchange> read(const std::string& path) {
        TranscriptReader reader;
        std::ifstream file(path);
        for (std::string line; std::getline(file, line);) {
            reader.take(line);
        }
        EXPECT_TRUE(reader.m_protocol.empty()) << "a block is not closed";
        return std::move(reader.m_exchanges);
    }

private:
    void take(const std::string& line) {
        ++m_line;
        if (line.starts_with("```")) {
            const std::string label = line.substr(3);
            m_protocol = label.starts_with("vireo_") ? label : "";
            m_last = '\0';
        } else if (!m_protocol.empty() && !line.empty()) {
            takeMessage(line);
        }
    }

    void takeMessage(const std::string& line) {
        const char direction = line.front();
        const std::string text = line.size() > 1 ? line.substr(2) : "";
        const bool isGood = direction == '>' || (direction == '<' && m_last != '\0');
        ASSERT_TRUE(isGood && (line.size() == 1 || line[1] == ' ')) << "line " << m_line;
        if (direction == '>' && m_last != '>') {
            m_exchanges.push_back({m_protocol, m_line, "", ""});
        }
        Exchange& exchange = m_exchanges.back();
        (direction == '>' ? exchange.request : exchange.reply) += text;
        m_last = direction;
    }

    std::vector<Exchange> m_exchanges;
    std::string m_protocol;
    char m_last = '\0';
    int m_line = 0;
};

TEST(Transcripts, TheServiceAnswersAsDocumentedByteForByte) {
    const std::vector<Exchange> exchanges = TranscriptReader::read(VIREO_DOCS "/transcripts.md");
    std::vector<std::string> protocols;
    std::optional<RunningPhone> phone;
    std::unique_ptr<LocalMgmtClient> client;
    for (const Exchange& exchange : exchanges) {
        if (protocols.empty() || protocols.back() != exchange.protocol) {
            protocols.push_back(exchange.protocol);
            client.reset();
            phone.emplace();
            client = phone->connect();
            ASSERT_TRUE(client);
        }
        std::string reply;
        const CallStatus status = client->callRaw(exchange.protocol, exchange.request, reply);
        EXPECT_EQ(status, exchange.reply.empty() ? CallStatus::eEmptyReply : CallStatus::eDone)
            << "line " << exchange.line << ": " << describe(status);
        EXPECT_EQ(reply, exchange.reply) << "line " << exchange.line;
    }
    EXPECT_EQ(protocols, (std::vector<std::string>{"vireo_rpc", "vireo_svc_xml"}));
}

}  // namespace
}  // namespace vireo::test
