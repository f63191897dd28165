#include "files/DownloadStatusItems.h"

#include <chrono>
#include <cstdio>

#include "data/ManageableData.h"
#include "files/FileTypeCatalogue.h"

namespace vireo {
namespace {

std::string now() {
    using namespace std::chrono;
    const auto seconds = floor<std::chrono::seconds>(system_clock::now());
    const auto day = floor<days>(seconds);
    const year_month_day date(day);
    const hh_mm_ss time(seconds - day);
    char text[32];
    std::snprintf(text, sizeof text, "%04d-%02u-%02uT%02d:%02d:%02dZ",
                  static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                  static_cast<unsigned>(date.day()), static_cast<int>(time.hours().count()),
                  static_cast<int>(time.minutes().count()),
                  static_cast<int>(time.seconds().count()));
    return text;
}

// Each by itself: a write of several items would wait for owners that others are waiting for.
void write(LocalMgmtIfc& items, const std::string& tag, const std::string& value) {
    ManageableData record;
    record.populate(tag, value);
    record.setRootId(tag, nullptr);
    items.setData(record);
}

}  // namespace

void DownloadStatusItems::recordTimeAndStatus(LocalMgmtIfc& items, const std::string& status,
                                              LocalMgmtIfc::eFiletype type) {
    const std::string_view infix = FileTypeCatalogue::row(type).infix;
    if (infix.empty()) {
        return;
    }
    const std::string stem = "dl-" + std::string(infix);
    write(items, stem + "-last-status", status);
    write(items, stem + "-last-time", now());
}

}  // namespace vireo
