#include <string>

#include "Fuzz.h"
#include "data/XmlText.h"
#include "items/DasResponseParser.h"
#include "store/StoreAnswer.h"

namespace vireo::fuzz {
namespace {

/// Every value that the store can hold reaches the reader as it was.
void carry(std::string_view value) {
    DasResponseParser parser;
    std::string read;
    const bool isParsed =
        parser.parseXmlResponse(StoreAnswer::read("T", "Column", std::string(value)));
    require(isParsed && parser.schemaName() == "T" && parser.getItemValue("Column", read) &&
                read == value,
            "a value comes back from the store's answer");
}

}  // namespace

void run(std::string_view input) {
    DasResponseParser parser;
    std::string value = "untouched";
    if (!parser.parseXmlResponse(std::string(input))) {
        parser.parseXmlResponse("<Schema name=\"T\"><A>1</A></Schema>");
        require(parser.getItemValue("A", value) && value == "1",
                "the next answer is read as if nothing had been");
    }
    if (!XmlText::findUncarriable(input)) {
        carry(input);
    }
    require(DasResponseParser().parseXmlResponse(StoreAnswer::error("T", input)),
            "an error can always be told");
}

}  // namespace vireo::fuzz
