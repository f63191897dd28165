#include "messages/RpcAdapter.h"

#include <algorithm>
#include <utility>

#include "messages/StreamText.h"
#include "service/Serializer.h"

namespace vireo {
namespace {

// Room for the numbers beside the texts of a method or a parameter.
constexpr std::size_t kNumberRoom = 32;
// Parameters that memory is made for at once; the number in a message can be anything.
constexpr int kUsualParameters = 4;

void encodeParameter(const Parameter& parameter, std::string& out) {
    Serializer::serialize(out, std::string_view(parameter.name));
    Serializer::serialize(out, static_cast<int>(parameter.type));
    Serializer::serialize(out, static_cast<int>(parameter.direction));
    switch (parameter.type) {
        case Parameter::types::eInt:
            Serializer::serialize(out, parameter.number);
            break;
        case Parameter::types::eBool:
            Serializer::serialize(out, parameter.number != 0);
            break;
        case Parameter::types::eString:
        case Parameter::types::eXML:
            Serializer::serialize(out, std::string_view(parameter.text));
            break;
    }
}

bool decodeValue(std::string_view& rest, Parameter& parameter) {
    bool flag = false;
    switch (parameter.type) {
        case Parameter::types::eInt:
            return Serializer::deserialize(rest, parameter.number);
        case Parameter::types::eBool:
            if (!Serializer::deserialize(rest, flag)) {
                return false;
            }
            parameter.number = flag ? 1 : 0;
            return true;
        case Parameter::types::eString:
        case Parameter::types::eXML:
            return Serializer::deserialize(rest, parameter.text);
    }
    return false;
}

bool decodeParameter(std::string_view& rest, Parameter& parameter) {
    int type = 0;
    int direction = 0;
    if (!Serializer::deserialize(rest, parameter.name) || !Serializer::deserialize(rest, type) ||
        !Serializer::deserialize(rest, direction)) {
        return false;
    }
    if (type < static_cast<int>(Parameter::types::eInt) ||
        type > static_cast<int>(Parameter::types::eXML) || direction < Parameter::eIn ||
        direction > Parameter::eInOut) {
        return false;
    }
    parameter.type = static_cast<Parameter::types>(type);
    parameter.direction = static_cast<Parameter::directions>(direction);
    return decodeValue(rest, parameter);
}

}  // namespace

void RpcAdapter::encodeText(const Method& method, std::string& out) {
    std::size_t size = method.name().size() + kNumberRoom;
    for (const Parameter& parameter : method.parameters()) {
        size += parameter.name.size() + parameter.text.size() + kNumberRoom;
    }
    out.reserve(out.size() + size);
    Serializer::serialize(out, std::string_view(method.name()));
    Serializer::serialize(out, static_cast<int>(method.type()));
    Serializer::serialize(out, static_cast<int>(method.parameters().size()));
    for (const Parameter& parameter : method.parameters()) {
        encodeParameter(parameter, out);
    }
}

bool RpcAdapter::decodeText(std::string_view text, Method& method) {
    std::string name;
    int type = 0;
    int count = 0;
    if (!Serializer::deserialize(text, name) || !Serializer::deserialize(text, type) ||
        !Serializer::deserialize(text, count) || type < Method::eRequest ||
        type > Method::eResponse || count < 0) {
        return false;
    }
    Method decoded(std::move(name), static_cast<Method::methodTypes>(type));
    decoded.reserveParameters(static_cast<std::size_t>(std::min(count, kUsualParameters)));
    for (int i = 0; i < count; ++i) {
        Parameter parameter;
        if (!decodeParameter(text, parameter)) {
            return false;
        }
        decoded.addParameter(std::move(parameter));
    }
    if (!text.empty()) {
        return false;
    }
    method = std::move(decoded);
    return true;
}

bool RpcAdapter::encode(const Method& method, std::ostream& out) {
    std::string text;
    encodeText(method, text);
    out.write(text.data(), static_cast<std::streamsize>(text.size()));
    return out.good();
}

bool RpcAdapter::decode(std::istream& in, Method& method) {
    return decodeText(StreamText::takeAll(in), method);
}

bool RpcAdapter::encodeTo(const Method& method, std::string& out) {
    encodeText(method, out);
    return true;
}

bool RpcAdapter::decodeFrom(std::string_view text, Method& method) {
    return decodeText(text, method);
}

}  // namespace vireo
