#include "service/ProtocolAdapter.h"

#include <sstream>

namespace vireo {

bool ProtocolAdapter::encodeTo(const Method& method, std::string& out) {
    std::ostringstream stream;
    if (!encode(method, stream)) {
        return false;
    }
    out.append(stream.view());
    return true;
}

bool ProtocolAdapter::decodeFrom(std::string_view text, Method& method) {
    std::istringstream stream{std::string(text)};
    return decode(stream, method);
}

}  // namespace vireo
