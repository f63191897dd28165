#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <functional>
#include <string>

#include "Ports.h"
#include "data/ManageableData.h"
#include "rows/Rows.h"
#include "service/Context.h"
#include "service/VireoClientMgmt.h"
#include "snmp/NetSnmpTraps.h"
#include "support/TrapReceiver.h"

namespace vireo::bench {
namespace {

/// A phone without other services.
struct BareContext : SvcRTEContext {
    Executable* findService(const std::string& /*interfaceName*/) override { return nullptr; }
    void postToMessageThread(std::function<void()> task) override { task(); }
    TimerFacility* timers() override { return nullptr; }
};

/// Configuration files of a phone that has nothing but one receiver of traps.
class TrapPhoneFiles : public ConfigPort {
public:
    bool readConfigFile(const std::string& name, std::string& content,
                        std::string& /*error*/) override {
        content = name == "vcmsInit.xml"
                      ? "<dxl><document name=\"vcmsServiceList\" schema=\"serviceList\"><service>"
                        "<import>items.xml</import><managementId>VcmsMgmtId</managementId>"
                        "<itemMap>ownItems</itemMap></service></document></dxl>"
                      : "<dxl><schema name=\"text\" type=\"string\"/>"
                        "<document name=\"ownItems\" schema=\"itemMap\">"
                        "<item><rootId>snmp-traps-active</rootId><schema>text</schema></item>"
                        "<item><rootId>snmp-trap-addr</rootId><schema>text</schema></item>"
                        "<item><rootId>snmp-trap-port</rootId><schema>text</schema></item>"
                        "<item><rootId>snmp-trap-pwd</rootId><schema>text</schema></item>"
                        "</document></dxl>";
        return true;
    }
};

/// What a shell script would do instead.
void spawn(const std::string& port, const std::string& directory) {
    const std::string place = "127.0.0.1:" + port;
    const pid_t child = ::fork();
    if (child == 0) {
        ::setenv("MIBS", "", 1);
        ::setenv("SNMP_PERSISTENT_DIR", directory.c_str(), 1);
        ::execlp("snmptrap", "snmptrap", "-v1", "-c", "public", place.c_str(),
                 "1.3.6.1.4.1.32473.1", "127.0.0.1", "3", "0", "", nullptr);
        ::_exit(127);
    }
    int status = -1;
    require(child > 0 && ::waitpid(child, &status, 0) == child && status == 0,
            "snmptrap has failed");
}

}  // namespace

void measureTraps(Bench& bench) {
    const test::TrapReceiver receiver;  // does not read, so it costs nothing
    const ScratchDirectory root(bench.places.files);
    const PlatformPorts before = installedPorts();
    TrapPhoneFiles files;
    NetSnmpTraps traps(root.path(), {});
    PlatformPorts ports = before;
    ports.config = &files;
    ports.traps = &traps;
    installPorts(ports);
    {
        BareContext context;
        VireoClientMgmt service;
        service.init(context);
        ManageableData record;
        record.populate("snmp-traps-active", "true");
        record.populate("snmp-trap-addr", "127.0.0.1");
        record.populate("snmp-trap-port", receiver.port());
        record.populate("snmp-trap-pwd", "public");
        require(service.setData(record), "the receiver's items cannot be written");
        const auto raise = [&service] {
            return service.raiseGenericTrap(LocalMgmtIfc::TRAP_DEST_SNMP_MANAGER, 3);
        };
        require(raise(), "no trap was sent");
        const auto trap = receiver.take();
        require(trap.has_value(), "no trap has come");

        const int plain = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<std::uint16_t>(std::stoi(receiver.port())));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        // Every slice begins with an empty receiver, or one would be measured with a full one.
        const auto drain = [&receiver] {
            char byte = 0;
            while (::recv(receiver.descriptor(), &byte, 1, MSG_DONTWAIT | MSG_TRUNC) > 0) {
            }
        };
        Comparison comparison;
        const auto timed = [&](auto&& each) {
            return [&drain, each](unsigned count) {
                drain();
                const auto start = std::chrono::steady_clock::now();
                for (unsigned i = 0; i < count; ++i) {
                    each();
                }
                return std::chrono::duration<double>(std::chrono::steady_clock::now() - start)
                    .count();
            };
        };
        const auto own = comparison.addTimed(timed([&] { raise(); }));
        const auto raw = comparison.addTimed(timed([&] {
            ::sendto(plain, trap->bytes.data(), trap->bytes.size(), 0,
                     reinterpret_cast<const sockaddr*>(&address), sizeof address);
        }));
        comparison.run(bench.pace.rounds, bench.pace.sliceSeconds);
        bench.report.add("generic trap, in process", "raw sendto of the same bytes", comparison,
                         own, raw, Goal::atLeast(0.7));
        ::close(plain);

        Comparison spawned;
        const auto alone = spawned.addTimed(timed([&] { raise(); }));
        const auto program = spawned.addTimed(timed([&] { spawn(receiver.port(), root.path()); }));
        spawned.run(bench.pace.heavyRounds, bench.pace.sliceSeconds);
        bench.report.add("generic trap, in process", "the snmptrap command", spawned, alone,
                         program, Goal::atLeast(500));
    }
    installPorts(before);
}

}  // namespace vireo::bench
