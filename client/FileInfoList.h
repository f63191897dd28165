#pragma once

#include <list>
#include <string>
#include <string_view>

namespace vireo {

/// A list of files as an XML reply carries it: `<fileinfo directory="/a" name="b" />` for each, one
/// behind the other. Stateless, safe from every thread. Private to the library.
class FileInfoList {
public:
    /// Replaces `files` by the full paths. False, and no change, when `xml` is anything else.
    static bool parse(std::string_view xml, std::list<std::string>& files);
};

}  // namespace vireo
