#include <list>
#include <string>

#include "Fuzz.h"
#include "service/Serializer.h"

namespace vireo::fuzz {
namespace {

template <class Value>
bool takeOne(std::string_view& rest) {
    const std::string_view before = rest;
    Value value{};
    if (!Serializer::deserialize(rest, value)) {
        require(rest == before && value == Value{}, "a failure changes nothing");
        return false;
    }
    require(before.ends_with(rest) && rest.size() < before.size(), "it takes from the front");
    std::string again;
    Serializer::serialize(again, value);
    std::string_view text = again;
    Value same{};
    require(Serializer::deserialize(text, same) && text.empty() && same == value,
            "a value comes back from its text");
    return true;
}

}  // namespace

/// The choice says what is read, as long as something is.
void run(std::string_view input) {
    const unsigned char first = takeChoice(input);
    bool isTaken = true;
    for (unsigned kind = first; isTaken; ++kind) {
        switch (kind % 5) {
            case 0:
                isTaken = takeOne<int>(input);
                break;
            case 1:
                isTaken = takeOne<bool>(input);
                break;
            case 2:
                isTaken = takeOne<std::string>(input);
                break;
            case 3:
                isTaken = takeOne<std::string_view>(input);
                break;
            default:
                isTaken = takeOne<std::list<std::string>>(input);
        }
    }
}

}  // namespace vireo::fuzz
