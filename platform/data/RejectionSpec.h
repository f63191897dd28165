#pragma once

#include <string>
#include <utility>

#include "Visibility.h"

namespace vireo {

/// One refusal: which item, which nodes in it ("//*" for all), and why.
class VIREO_API RejectionSpec {
public:
    RejectionSpec(std::string rootId, std::string nodePath, std::string reason)
        : m_rootId(std::move(rootId)),
          m_nodePath(std::move(nodePath)),
          m_reason(std::move(reason)) {}
    RejectionSpec(const RejectionSpec&) = default;
    RejectionSpec(RejectionSpec&&) = default;
    RejectionSpec& operator=(const RejectionSpec&) = default;
    RejectionSpec& operator=(RejectionSpec&&) = default;
    virtual ~RejectionSpec() = default;

    const std::string& rootId() const { return m_rootId; }
    const std::string& nodePath() const { return m_nodePath; }
    const std::string& reason() const { return m_reason; }

private:
    std::string m_rootId;
    std::string m_nodePath;
    std::string m_reason;
};

/// The platform's refusal texts.
struct RejectReasonsStrings {
    static constexpr const char* tag_unknown = "Tag unknown";
    static constexpr const char* invalid_data = "Invalid data";
    static constexpr const char* tags_missing = "Tags missing";
    static constexpr const char* invalid_index = "Invalid index";
    static constexpr const char* not_supported = "Not supported";
    static constexpr const char* request_failed = "Request failed";
    /// Not a failure: the request was started and reports later.
    static constexpr const char* initiated = "Initiated";
};

}  // namespace vireo
