#include <stdexcept>
#include <string>

#include "Fuzz.h"
#include "LocalMgmtCallbackIfc.h"
#include "messages/CallbackText.h"
#include "service/Serializer.h"

namespace vireo::fuzz {
namespace {

class Callback : public LocalMgmtCallbackIfc {
public:
    bool requestShutdown() override { return true; }
    bool informDownloadProgress(int progress, std::string /*filepath*/) override {
        if (progress == -7) {
            throw std::runtime_error("as it was told");
        }
        return true;
    }
    bool informDownloadCompletion(std::string filepath) override { return filepath != "refuse"; }
};

}  // namespace

void run(std::string_view input) {
    Callback callback;
    std::string reply = "of an earlier message";
    CallbackText::serve(callback, input, reply);
    std::string_view expected;
    Serializer::deserialize(input, expected);
    std::string_view rest = reply;
    std::string_view word;
    std::string_view answer;
    require(Serializer::deserialize(rest, word) && word == expected, "the command word is echoed");
    require(Serializer::deserialize(rest, answer) && (answer == "true" || answer == "false"),
            "an answer follows");
    require(rest.empty(), "and nothing else");
}

}  // namespace vireo::fuzz
