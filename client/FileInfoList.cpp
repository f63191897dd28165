#include "FileInfoList.h"

#include <expat.h>

#include <cstring>
#include <memory>

namespace vireo {
namespace {

constexpr std::string_view kBegin = "<files>";
constexpr std::string_view kEnd = "</files>";

struct Reading {
    std::list<std::string> files;
    int depth = 0;
    bool isGood = true;
};

void startElement(void* data, const XML_Char* name, const XML_Char** attributes) {
    auto& reading = *static_cast<Reading*>(data);
    if (++reading.depth == 1) {
        return;
    }
    const char* directory = nullptr;
    const char* file = nullptr;
    for (; *attributes != nullptr; attributes += 2) {
        if (std::strcmp(attributes[0], "directory") == 0) {
            directory = attributes[1];
        } else if (std::strcmp(attributes[0], "name") == 0) {
            file = attributes[1];
        }
    }
    if (reading.depth != 2 || std::strcmp(name, "fileinfo") != 0 || directory == nullptr ||
        file == nullptr) {
        reading.isGood = false;
        return;
    }
    reading.files.push_back(std::string(directory) + '/' + file);
}

void endElement(void* data, const XML_Char* /*name*/) {
    --static_cast<Reading*>(data)->depth;
}

}  // namespace

bool FileInfoList::parse(std::string_view xml, std::list<std::string>& files) {
    const std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser(
        XML_ParserCreate("UTF-8"), &XML_ParserFree);
    if (!parser) {
        return false;
    }
    Reading reading;
    XML_SetUserData(parser.get(), &reading);
    XML_SetElementHandler(parser.get(), startElement, endElement);
    const auto feed = [&parser](std::string_view text, bool isLast) {
        return XML_Parse(parser.get(), text.data(), static_cast<int>(text.size()),
                         isLast ? XML_TRUE : XML_FALSE) == XML_STATUS_OK;
    };
    if (!feed(kBegin, false) || !feed(xml, false) || !feed(kEnd, true) || !reading.isGood) {
        return false;
    }
    files.swap(reading.files);
    return true;
}

}  // namespace vireo
