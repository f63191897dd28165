#include "service/Serializer.h"

#include <charconv>
#include <utility>

namespace vireo {
namespace {

void appendNumber(std::string& out, long long value) {
    char digits[24];
    char* end = std::to_chars(digits, digits + sizeof digits - 1, value).ptr;
    *end++ = ';';
    out.append(digits, static_cast<std::size_t>(end - digits));
}

/// Takes "<digits>;" off the front of `in`.
template <class Number>
bool takeNumber(std::string_view& in, Number& value) {
    Number parsed{};
    const char* end = in.data() + in.size();
    const auto [next, error] = std::from_chars(in.data(), end, parsed);
    if (error != std::errc() || next == end || *next != ';') {
        return false;
    }
    value = parsed;
    in.remove_prefix(static_cast<std::size_t>(next - in.data()) + 1);
    return true;
}

}  // namespace

void Serializer::serialize(std::string& out, int value) {
    appendNumber(out, value);
}

void Serializer::serialize(std::string& out, bool value) {
    out.append(value ? "1;" : "0;");
}

void Serializer::serialize(std::string& out, std::string_view value) {
    appendNumber(out, static_cast<long long>(value.size()));
    out.append(value);
}

void Serializer::serialize(std::string& out, const std::string& value) {
    serialize(out, std::string_view(value));
}

void Serializer::serialize(std::string& out, const char* value) {
    serialize(out, std::string_view(value));
}

void Serializer::serialize(std::string& out, const std::list<std::string>& values) {
    appendNumber(out, static_cast<long long>(values.size()));
    for (const std::string& value : values) {
        serialize(out, value);
    }
}

bool Serializer::deserialize(std::string_view& in, int& value) {
    return takeNumber(in, value);
}

bool Serializer::deserialize(std::string_view& in, bool& value) {
    if (in.size() < 2 || in[1] != ';' || (in[0] != '0' && in[0] != '1')) {
        return false;
    }
    value = in[0] == '1';
    in.remove_prefix(2);
    return true;
}

bool Serializer::deserialize(std::string_view& in, std::string_view& value) {
    std::string_view rest = in;
    std::size_t length = 0;
    if (!takeNumber(rest, length) || length > rest.size()) {
        return false;
    }
    value = rest.substr(0, length);
    in = rest.substr(length);
    return true;
}

bool Serializer::deserialize(std::string_view& in, std::string& value) {
    std::string_view text;
    if (!deserialize(in, text)) {
        return false;
    }
    value.assign(text);
    return true;
}

bool Serializer::deserialize(std::string_view& in, std::list<std::string>& values) {
    std::string_view rest = in;
    std::size_t count = 0;
    if (!takeNumber(rest, count)) {
        return false;
    }
    std::list<std::string> parsed;
    for (std::size_t i = 0; i < count; ++i) {
        std::string_view text;
        if (!deserialize(rest, text)) {
            return false;
        }
        parsed.emplace_back(text);
    }
    values = std::move(parsed);
    in = rest;
    return true;
}

}  // namespace vireo
