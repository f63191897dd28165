#include "rivals/ThreeMaps.h"

#include <pugixml.hpp>

#include "harness/Failure.h"
#include "harness/PhoneConfiguration.h"

namespace vireo::bench {

void ThreeMaps::load(const std::string& directory, std::size_t items) {
    readItems(directory + "/Own.xml", "VcmsMgmtId");
    readItems(directory + "/Owned.xml", PhoneConfiguration::kOwnerId);
    readItems(directory + "/Absent.xml", "AbsentMgmtId");
    readPlaces(directory + "/Store.xml");
    require(m_owners.size() == items && m_schemas.size() == items &&
                m_places.size() == PhoneConfiguration(items).storedCount(),
            "the rival did not find all items");
}

void ThreeMaps::readItems(const std::string& path, const char* managementId) {
    pugi::xml_document file;
    require(static_cast<bool>(file.load_file(path.c_str())), "pugixml cannot read a file");
    for (const pugi::xml_node document : file.child("dxl").children("document")) {
        for (const pugi::xml_node item : document.children("item")) {
            const char* tag = item.child_value("rootId");
            m_owners.emplace(tag, managementId);
            m_schemas.emplace(tag, item.child_value("schema"));
        }
    }
}

void ThreeMaps::readPlaces(const std::string& path) {
    pugi::xml_document file;
    require(static_cast<bool>(file.load_file(path.c_str())), "pugixml cannot read a file");
    for (const pugi::xml_node document : file.child("dxl").children("document")) {
        for (const pugi::xml_node item : document.children("item")) {
            std::string place = item.child_value("dasSchemaName");
            place.append("/").append(item.child_value("dasIndexValue"));
            place.append("/").append(item.child_value("dasItemName"));
            m_places.emplace(item.child_value("rootId"), std::move(place));
        }
    }
}

}  // namespace vireo::bench
