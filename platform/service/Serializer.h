#pragma once

#include <list>
#include <string>
#include <string_view>

#include "Visibility.h"

namespace vireo {

/// The framework's text form of plain values.
///
///   int    `-12;`         bool   `1;` or `0;`
///   string `5;hello`      list   `2;` and its strings
///
/// No int or bool ever holds a colon. Strings are counted in bytes and hold any byte.
/// `serialize` appends. `deserialize` takes one value off the front of its input; on malformed or
/// short input it answers false and changes neither input nor value. Stateless, safe from every
/// thread.
class VIREO_API Serializer {
public:
    static void serialize(std::string& out, int value);
    static void serialize(std::string& out, bool value);
    static void serialize(std::string& out, std::string_view value);
    static void serialize(std::string& out, const std::string& value);
    /// A literal is a string, not the bool that overload resolution would make of it.
    static void serialize(std::string& out, const char* value);
    static void serialize(std::string& out, const std::list<std::string>& values);

    static bool deserialize(std::string_view& in, int& value);
    static bool deserialize(std::string_view& in, bool& value);
    static bool deserialize(std::string_view& in, std::string& value);
    /// As above, without the copy: `value` points into `in`'s text.
    static bool deserialize(std::string_view& in, std::string_view& value);
    static bool deserialize(std::string_view& in, std::list<std::string>& values);

    /// The same on a text of one's own: what was read is removed from its front.
    template <class Value>
    static bool deserialize(std::string& in, Value& value) {
        std::string_view rest(in);
        if (!deserialize(rest, value)) {
            return false;
        }
        in.erase(0, in.size() - rest.size());
        return true;
    }
    /// A view into a text that is about to shrink would dangle.
    static bool deserialize(std::string& in, std::string_view& value) = delete;
};

}  // namespace vireo
