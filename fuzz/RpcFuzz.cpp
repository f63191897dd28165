#include <sstream>
#include <string>

#include "Fuzz.h"
#include "messages/RpcAdapter.h"

namespace vireo::fuzz {
namespace {

std::string textOf(const Method& method) {
    std::string text;
    RpcAdapter::encodeText(method, text);
    return text;
}

}  // namespace

void run(std::string_view input) {
    const Method untouched("untouched", Method::eResponse);
    Method method = untouched;
    const bool isMethod = RpcAdapter::decodeText(input, method);
    std::istringstream in{std::string(input)};
    Method streamed = untouched;
    require(RpcAdapter().decode(in, streamed) == isMethod && textOf(streamed) == textOf(method),
            "a stream is read like a text");
    if (!isMethod) {
        require(textOf(method) == textOf(untouched), "a failure changes nothing");
        return;
    }
    Method again;
    const std::string text = textOf(method);
    require(RpcAdapter::decodeText(text, again) && textOf(again) == text &&
                again.parameters().size() == method.parameters().size(),
            "a method comes back from its text");
    require(text.size() <= input.size(), "no form is shorter than the written one");
}

}  // namespace vireo::fuzz
