#include <string>

#include "Fuzz.h"
#include "Ports.h"
#include "data/DxlCollection.h"
#include "data/DxlResultSet.h"

namespace vireo::fuzz {
namespace {

/// The one configuration file of this phone.
struct OneFile : ConfigPort {
    OneFile() { installPorts({.log = nullptr, .config = this}); }
    bool readConfigFile(const std::string& /*name*/, std::string& into,
                        std::string& /*error*/) override {
        into = content;
        return true;
    }
    std::string content;
};

std::string textOf(const DxlCollection& collection) {
    std::string text = "<dxl>";
    for (const auto& schema : collection.schemas()) {
        text += schema->text();
    }
    for (const auto& document : collection.documents()) {
        text += document->text();
    }
    return text + "</dxl>";
}

/// Start-up walks documents by their rows.
void walk(const DxlDocument& document) {
    std::string value;
    for (const char* path : {"//*", "/", "/item/rootId", "/service/import"}) {
        const auto rows = document.select(path);
        for (bool isNull = false; !rows->eof(); rows->next()) {
            rows->getValue(value, isNull);
        }
    }
}

}  // namespace

void run(std::string_view input) {
    static OneFile file;
    DxlCollection collection("phone");
    file.content = input;
    if (!collection.importFromFile("any.xml")) {
        require(textOf(collection) == "<dxl></dxl>", "a file is taken whole or not at all");
        return;
    }
    for (const auto& document : collection.documents()) {
        walk(*document);
    }
    const std::string text = textOf(collection);
    file.content = text;
    DxlCollection again("phone");
    require(again.importFromFile("any.xml"), "what is written can be read");
    require(textOf(again) == text, "a collection comes back from its text");
}

}  // namespace vireo::fuzz
