#pragma once

#include <map>
#include <string>

namespace vireo::bench {

/// What a program would do that only needs to know owner, schema and place of each item: pugixml,
/// and three ordered maps.
class ThreeMaps {
public:
    /// Reads the files of a phone's configuration. Throws when they hold other than so many items.
    void load(const std::string& directory, std::size_t items);

private:
    void readItems(const std::string& path, const char* managementId);
    void readPlaces(const std::string& path);

    std::map<std::string, std::string> m_owners;
    std::map<std::string, std::string> m_schemas;
    std::map<std::string, std::string> m_places;
};

}  // namespace vireo::bench
