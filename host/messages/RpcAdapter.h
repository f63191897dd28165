#pragma once

#include <string>
#include <string_view>

#include "service/Method.h"
#include "service/ProtocolAdapter.h"

namespace vireo {

/// The default protocol "vireo_rpc": a method as a sequence of `Serializer` values: its name (a
/// string), its type (an int), the number of parameters (an int), and for each of them its name (a
/// string), type (an int, `Parameter::types`), direction (an int) and value (an int, a bool or a
/// string; XML travels as a string).
class RpcAdapter : public ProtocolAdapter {
public:
    bool encode(const Method& method, std::ostream& out) override;
    bool decode(std::istream& in, Method& method) override;
    bool encodeTo(const Method& method, std::string& out) override;
    bool decodeFrom(std::string_view text, Method& method) override;

    /// The same on plain texts. `encodeText` appends.
    static void encodeText(const Method& method, std::string& out);
    static bool decodeText(std::string_view text, Method& method);
};

}  // namespace vireo
