#include "options/DeviceDeclarations.h"

#include <cstddef>
#include <string>
#include <vector>

#include "image/ImageHeader.h"
#include "options/OptionKinds.h"
#include "snmp/TrapReceiverText.h"

namespace vireo {
namespace {

std::string checkVariant(const std::string& text) {
    return ImageHeader::isVariant(text)
               ? std::string()
               : "\"" + text + "\" has not 1 to 64 letters, digits, '.', '_' and '-'";
}

void declarePlaces(CLI::App& app, DeviceOptions& devices) {
    app.add_option("--hardware-variant", devices.hardwareVariant,
                   "What software images for this phone are made for")
        ->type_name("TEXT")
        ->check(checkVariant)
        ->capture_default_str();
    const auto declareDirectory = [&app](const char* name, std::string& value,
                                         const char* description) {
        app.add_option(name, value, description)
            ->type_name("DIR")
            ->check(checkBelow)
            ->capture_default_str();
    };
    declareDirectory("--storage-directory", devices.storageDirectory,
                     "The phone's files, below the root");
    declareDirectory("--certificate-directory", devices.certificateDirectory,
                     "Certificates for HTTPS, below the root");
    declareDirectory("--flash-directory", devices.flashDirectory,
                     "Software that was burnt, below the root");
    declareDirectory("--software-key-directory", devices.keyDirectory,
                     "Public keys of those who may sign software images, below the root");
    declareDirectory("--password-directory", devices.passwordDirectory,
                     "Hashes of the phone's passwords, below the root");
    declareAnswer(app, "--allow-downgrade", devices.allowsDowngrade,
                  "Whether software may be replaced by an older version: yes or no");
    declareAnswer(app, "--allow-device-commands", devices.allowsDeviceCommands,
                  "Whether a phone with the root \"/\" runs shell commands and reboots: yes or no");
}

void declareTransfer(CLI::App& app, TransferOptions& transfer) {
    declareTime(app, "--connect-timeout-ms", transfer.connectTimeout, 600'000,
                "How long a file server may take to accept a connection");
    declareTime(app, "--stall-timeout-ms", transfer.stallTimeout, 3'600'000,
                "How long a file server may send nothing");
    app.add_option_function<std::string>(
           "--ftp-mode",
           [&transfer](const std::string& mode) { transfer.usesActiveFtp = mode == "active"; },
           "FTP data: passive, the phone connects to the server, or active, the server to the "
           "phone")
        ->type_name("TEXT")
        ->check(CLI::IsMember({"passive", "active"}))
        ->default_str(transfer.usesActiveFtp ? "active" : "passive");
}

std::string checkObjectId(const std::string& text) {
    constexpr std::size_t kMostNumbers = 31;
    constexpr std::size_t kMostDigits = 9;
    std::size_t numbers = 1;
    std::size_t digits = 0;
    bool isRight = !text.empty() && text.front() <= '2';  // of the three roots there are
    for (const char c : text) {
        if (c == '.') {
            isRight = isRight && digits > 0;
            digits = 0;
            ++numbers;
        } else {
            isRight = isRight && c >= '0' && c <= '9' && ++digits <= kMostDigits;
            isRight = isRight && (numbers > 1 || digits == 1);
        }
    }
    isRight = isRight && digits > 0 && numbers > 1 && numbers <= kMostNumbers;
    return isRight ? std::string() : "\"" + text + "\" is no object identifier";
}

void declareTraps(CLI::App& app, TrapOptions& traps) {
    app.add_option("--trap-enterprise", traps.enterprise, "Object identifier of this phone")
        ->type_name("OID")
        ->check(checkObjectId)
        ->capture_default_str();
    app.add_option("--trap-agent-address", traps.agentAddress,
                   "Address of this phone that traps of version 1 bear")
        ->type_name("IPV4")
        ->check([](const std::string& text) {
            return text.empty() ? std::string() : CLI::ValidIPV4(text);
        })
        ->capture_default_str();
    app.add_option_function<std::vector<std::string>>(
           "--trap-receiver",
           [&traps](const std::vector<std::string>& texts) {
               traps.receivers.clear();
               for (const std::string& text : texts) {
                   std::string ignored;
                   traps.receivers.push_back(*TrapReceiverText::parse(text, ignored));
               }
           },
           "How a receiver wants its traps: HOST[:PORT] v1|v2c|v3 [inform] [user=NAME]; any number "
           "of times, the first that fits counts")
        ->type_name("TEXT")
        ->check([](const std::string& text) {
            std::string error;
            TrapReceiverText::parse(text, error);
            return error;
        })
        ->allow_extra_args(false);
    app.add_option("--trap-user-file", traps.userFile, "Users of version 3, below the root")
        ->type_name("PATH")
        ->check(checkBelow)
        ->capture_default_str();
    declareNumber(app, "--trap-inform-retries", traps.informRetries, 0, 20,
                  "How often a trap that is not confirmed is sent again");
    declareNumber(app, "--trap-queue-length", traps.queueLength, std::size_t{1},
                  std::size_t{10'000}, "Traps that may wait for a receiver that confirms them");
    declareTime(app, "--trap-inform-timeout-ms", traps.informTimeout, 60'000,
                "How long a receiver may take to confirm a trap");
    declareTime(app, "--trap-resolve-timeout-ms", traps.resolveTimeout, 10'000,
                "How long the first trap waits for the address of a receiver's name");
    declareTime(app, "--trap-resolve-life-ms", traps.resolveLife, 86'400'000,
                "How long such an address holds");
}

}  // namespace

void declareDevices(CLI::App& app, DeviceOptions& devices) {
    declarePlaces(app, devices);
    declareTransfer(app, devices.transfer);
    declareTraps(app, devices.traps);
}

}  // namespace vireo
