#pragma once

#include <istream>
#include <ostream>
#include <string>
#include <string_view>

#include "Visibility.h"

namespace vireo {

class Method;

/// Turns methods into the bytes of one protocol and back. Adapters are stateless and safe from
/// every thread; they are owned by the framework.
class VIREO_API ProtocolAdapter {
public:
    /// Writes `method` to `out`; false when the protocol cannot carry it (nothing is written).
    virtual bool encode(const Method& method, std::ostream& out) = 0;
    /// Reads all of `in`, which holds exactly one message. False when it is malformed; `method` is
    /// unchanged then.
    virtual bool decode(std::istream& in, Method& method) = 0;
    virtual ~ProtocolAdapter() = default;
    /// Appends `method` to `out`; false when the protocol cannot carry it (nothing is appended).
    /// By default through a stream; an adapter that can do without overrides it.
    virtual bool encodeTo(const Method& method, std::string& out);
    /// Reads one whole message, likewise. False when it is malformed; `method` is unchanged then.
    virtual bool decodeFrom(std::string_view text, Method& method);
};

/// Names of the protocols that the framework knows.
struct VireoProtocols {
    static constexpr const char* DEFAULT = "vireo_rpc";
    static constexpr const char* SERVICE_XML = "vireo_svc_xml";
    static constexpr const char* TEXT = "vireo_text";
};

}  // namespace vireo
