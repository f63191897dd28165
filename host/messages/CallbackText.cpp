#include "messages/CallbackText.h"

#include <exception>
#include <stdexcept>

#include "LocalMgmtCallbackIfc.h"
#include "log/Log.h"
#include "service/Serializer.h"

namespace vireo {
namespace {

bool call(LocalMgmtCallbackIfc& callback, std::string_view word, std::string_view values) {
    int percent = 0;
    std::string path;
    if (word == "informDownloadProgress") {
        return Serializer::deserialize(values, percent) && Serializer::deserialize(values, path) &&
               values.empty() && callback.informDownloadProgress(percent, path);
    }
    if (word == "informDownloadCompletion") {
        return Serializer::deserialize(values, path) && values.empty() &&
               callback.informDownloadCompletion(path);
    }
    return word == "requestShutdown" && values.empty() && callback.requestShutdown();
}

// What a callback throws ends here: whoever asked shall get its answer.
bool callGuarded(LocalMgmtCallbackIfc& callback, std::string_view word, std::string_view values) {
    try {
        return call(callback, word, values);
    } catch (const std::exception& exception) {
        logExc("CallbackText", __FILE__, __LINE__, "a callback threw", exception);
    } catch (...) {
        logExc("CallbackText", __FILE__, __LINE__, "a callback threw",
               std::runtime_error("no exception of the standard library"));
    }
    return false;
}

}  // namespace

void CallbackText::serve(LocalMgmtCallbackIfc& callback, std::string_view message,
                         std::string& reply) {
    std::string_view word;
    const bool result =
        Serializer::deserialize(message, word) && callGuarded(callback, word, message);
    reply.clear();
    Serializer::serialize(reply, word);
    Serializer::serialize(reply, result ? "true" : "false");
}

}  // namespace vireo
