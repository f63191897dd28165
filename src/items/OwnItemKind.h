#pragma once

#include <string_view>

namespace vireo {

/// Which of the service's sources and sinks stands behind one of its own items.
enum class OwnItemKind { eLockDown, eFileRequest, ePhoneBusy, eMemoryWarning, eStored };

/// Told by what the tag contains, in this order; "file-" may stand anywhere in it.
constexpr OwnItemKind ownItemKind(std::string_view rootId) {
    const auto contains = [rootId](std::string_view part) {
        return rootId.find(part) != std::string_view::npos;
    };
    if (contains("locked-config-menus") || contains("locked-local-function-menus")) {
        return OwnItemKind::eLockDown;
    }
    if (contains("file-")) {
        return OwnItemKind::eFileRequest;
    }
    if (rootId == "phone-busy-status") {
        return OwnItemKind::ePhoneBusy;
    }
    if (rootId == "memory-monitor-remote-callback") {
        return OwnItemKind::eMemoryWarning;
    }
    return OwnItemKind::eStored;
}

}  // namespace vireo
