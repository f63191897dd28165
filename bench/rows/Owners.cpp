#include <string>

#include "MgmtAgentIfc.h"
#include "data/ManageableData.h"
#include "harness/Exchange.h"
#include "rivals/DbusService.h"
#include "rows/Rows.h"

namespace vireo::bench {
namespace {

constexpr const char* kChannel = "bench-owner";

/// Owns items that all have one value, and notes how long the records are.
class Owner : public MgmtAgentIfc {
public:
    bool getData(ManageableData& record) override {
        m_asked = record.serialize().size();
        const bool result = record.populate(record.getRootId(), m_value);
        m_answered = record.serialize().size();
        return result;
    }
    bool setData(ManageableData&) override { return false; }
    bool manageableDataChanged(ManageableData&) override { return true; }
    bool resetUserData() override { return true; }

    /// Of the frames in which it was asked and has answered last.
    RawSizes sizes() const {
        const std::size_t names = std::string_view("vireo_textMgmtAgentIfc").size();
        const std::size_t word = std::string_view("getData:").size();
        return {FrameCodec::kHeaderSize + names + word + m_asked,
                FrameCodec::kHeaderSize + names + word + 2 + m_answered};
    }

private:
    const std::string m_value = valueOf('a');
    std::size_t m_asked = 0;
    std::size_t m_answered = 0;
};

/// The same without taking notes.
class SilentOwner : public Owner {
public:
    bool getData(ManageableData& record) override {
        return record.populate(record.getRootId(), m_text);
    }

private:
    const std::string m_text = valueOf('a');
};

Process serveOwner(const Phone& phone) {
    return Process::fork([&](const auto& ready) {
        SilentOwner owner;
        const auto client = phone.connect(&owner, kChannel);
        ready();
        client->serveUntilStopped();
    });
}

}  // namespace

void measureOwners(Bench& bench) {
    const Phone phone(bench.places, PhoneConfiguration(1000));
    const std::string read = readRequest({PhoneConfiguration::ownedTag(0)});
    RawSizes outer;
    RawSizes inner;
    {
        // Registers for the process that comes next under the same name, and learns the sizes.
        Owner owner;
        const auto client = phone.connect(&owner, kChannel);
        bool registered = false;
        require(client->registerManagementIdentity(PhoneConfiguration::kOwnerId, false,
                                                   registered) == CallStatus::eDone &&
                    registered,
                "the owner cannot register");
        outer = exchangeSizes(*client, read);
        inner = owner.sizes();
    }
    const Process owner = serveOwner(phone);
    const auto client = phone.connect();
    RawRelay relay(outer, inner);
    DbusService dbus(bench.places);
    std::string reply;

    Comparison comparison;
    const auto own = comparison.add([&](unsigned count) {
        for (unsigned i = 0; i < count; ++i) {
            exchange(*client, read, reply);
        }
    });
    const auto relayed = comparison.add([&](unsigned count) {
        for (unsigned i = 0; i < count; ++i) {
            relay.exchange();
        }
    });
    const auto onBus = comparison.add([&](unsigned count) {
        for (unsigned i = 0; i < count; ++i) {
            dbus.get();
        }
    });
    comparison.run(bench.pace.rounds, bench.pace.sliceSeconds);

    bench.report.add("read of an item of another process", "raw four-hop relay", comparison, own,
                     relayed, Goal::atMost(1.25));
    bench.report.add("read of an item of another process", "sd-bus Get through the daemon",
                     comparison, own, onBus, Goal::atMost(0.65));
}

}  // namespace vireo::bench
