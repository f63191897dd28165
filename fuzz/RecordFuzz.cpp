#include <string>

#include "Fuzz.h"
#include "data/ManageableData.h"
#include "data/PlainRecord.h"
#include "data/RecordText.h"

namespace vireo::fuzz {
namespace {

/// Writing what was read into a record, item by item, has to work or change nothing.
void writeAgain(const ManageableData& source) {
    for (const std::string& rootId : source.rootIds()) {
        std::string value;
        if (!source.interogate(rootId, rootId, value)) {
            continue;
        }
        ManageableData target;
        if (!target.populate(rootId, value)) {
            require(target.serialize() == ManageableData().serialize(),
                    "a refused value changes nothing");
            continue;
        }
        std::string read;
        require(target.interogate(rootId, rootId, read) && read == value,
                "a value that was taken is read back");
    }
}

/// The short way for plain records reads what the full reader reads.
void readBothWays(const std::string& text) {
    ManageableData plain;
    if (!PlainRecord::read(text, plain)) {
        return;
    }
    ManageableData full;
    std::string error;
    require(RecordText::readAny(text, full, error), "a plain record is a record");
    require(plain.rootIds() == full.rootIds() && plain.isSingleRecord() == full.isSingleRecord() &&
                plain.serialize() == full.serialize(),
            "both ways read the same");
}

}  // namespace

void run(std::string_view input) {
    readBothWays(std::string(input));
    ManageableData record;
    record.populate("present", "value");
    const std::string before = record.serialize();
    ManageableData fresh;
    const std::string text(input);
    const bool isRecord = fresh.deserialize(text);
    require(record.deserialize(text) == isRecord, "what is there already does not matter");
    if (!isRecord) {
        require(record.serialize() == before, "a failure changes nothing");
        return;
    }
    const std::string once = fresh.serialize();
    // The longest growth that the service reckons with when it looks whether an answer fits.
    require(once.size() <= 8 * input.size() + 64, "a record does not grow without bound");
    ManageableData again;
    require(again.deserialize(once), "what is written can be read");
    require(again.serialize() == once, "a record comes back from its text");
    require(again.rootIds() == fresh.rootIds() &&
                again.isSingleRecord() == fresh.isSingleRecord() &&
                again.rejections().size() == fresh.rejections().size(),
            "a record comes back whole");
    writeAgain(fresh);
}

}  // namespace vireo::fuzz
