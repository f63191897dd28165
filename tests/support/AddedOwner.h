#pragma once

#include <fstream>
#include <string>
#include <vector>

#include "support/RunningPhone.h"

namespace vireo::test {

/// Gives the configuration of a phone that was not started yet another owner, with items of one
/// text each.
inline void addOwner(const RunningPhone& phone, const std::string& managementId,
                     const std::vector<std::string>& tags) {
    std::ofstream items(phone.config(managementId + ".xml"));
    items << "<dxl><document name=\"" << managementId << "Items\" schema=\"itemMap\">";
    for (const std::string& tag : tags) {
        items << "<item><rootId>" << tag << "</rootId><schema>text</schema></item>";
    }
    items << "</document></dxl>";
    const std::string path = phone.config("vcmsInit.xml");
    std::string services = readFile(path);
    services.insert(services.find("</document>"), "<service><import>" + managementId +
                                                      ".xml</import><managementId>" + managementId +
                                                      "</managementId><itemMap>" + managementId +
                                                      "Items</itemMap></service>");
    writeFile(path, services);
}

}  // namespace vireo::test
