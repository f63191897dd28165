#include <string>

#include "Fuzz.h"
#include "Ports.h"
#include "data/DxlCollection.h"
#include "data/DxlResultSet.h"
#include "data/DxlRows.h"

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
std::string rowsOf(const DxlCollection& collection) {
    std::string text;
    for (const auto& document : collection.documents()) {
        for (DxlRows rows(*document, "item", {"rootId", "schema"}); rows.next();) {
            for (std::size_t i = 0; i < 2; ++i) {
                text += rows.has(i) ? rows.text(i) + '|' : "(none)|";
            }
        }
        for (DxlRows rows(*document, "rootId", {}); rows.next();) {
            text += rows.text(0) + '|';
        }
    }
    return text;
}

/// A file that is read without a tree means the same as its tree: with a word to some other program
/// it is no longer plain.
void compareWithTree(const DxlCollection& plain, OneFile& file) {
    const std::size_t end = file.content.rfind("</dxl>");
    if (end == std::string::npos) {
        return;  // "</dxl >", say
    }
    file.content.insert(end, "<?other program?>");
    DxlCollection tree("phone");
    require(tree.importFromFile("any.xml"), "a tree is refused that was read plainly");
    require(rowsOf(tree) == rowsOf(plain), "a tree has other rows");
    require(textOf(tree) == textOf(plain), "a tree has another text");
}

void select(const DxlDocument& document) {
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
        select(*document);
    }
    compareWithTree(collection, file);
    const std::string text = textOf(collection);
    file.content = text;
    DxlCollection again("phone");
    require(again.importFromFile("any.xml"), "what is written can be read");
    require(textOf(again) == text, "a collection comes back from its text");
}

}  // namespace vireo::fuzz
