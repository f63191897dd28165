#include <string>

#include "Fuzz.h"
#include "snmp/SNMPTrapData.h"

namespace vireo::fuzz {

/// A trap's text is refused as a whole, or is the same trap after it was written and read again.
void run(std::string_view input) {
    SNMPTrapData trap;
    trap.setSpecificTrapNo(7);
    if (!trap.deserialize(std::string(input))) {
        require(trap.specificTrapNo() == 7 && trap.items().empty(), "a failure changes nothing");
        return;
    }
    const std::string text = trap.serialize();
    SNMPTrapData same;
    require(same.deserialize(text), "what was written can be read");
    require(same.serialize() == text, "it is written as it was");
    require(same.specificTrapNo() == trap.specificTrapNo() && same.varbinds() == trap.varbinds(),
            "the same is sent");
}

}  // namespace vireo::fuzz
