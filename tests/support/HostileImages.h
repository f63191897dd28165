#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "support/SignedImage.h"

namespace vireo::test {

inline constexpr const char* kVersionUnderAttack = "1.5.0";

/// What somebody might have put onto the server, and the one line that says why it is not taken.
struct Hostile {
    const char* what;
    std::string content;
    std::string reason;
};

/// The id of a trusted key with one bit flipped.
inline SignatureKeyId bentKeyId() {
    SignatureKeyId id = keyNumber(1).publicKey().id();
    id[0] ^= 1;
    return id;
}

/// Signed by a stranger, who says that it was somebody else.
inline std::string forgedImage(const std::string& payload) {
    ImageHeader header = headerOf(payload);
    header.keyId = keyNumber(1).publicKey().id();
    const ImageHeader::Bytes bytes = header.encode();
    header.signature = keyNumber(9).sign(std::span(bytes).first(ImageHeader::kSignedSize));
    return textOfBytes(header.encode()) + payload;
}

/// For a phone "desk-1" that runs the version above and trusts the keys number 1 and 2.
inline std::vector<Hostile> hostileImages() {
    const std::string payload = noise(100'000);
    const std::string good = signedImage(payload);
    const auto with = [&](std::size_t at, char flip) {
        std::string bytes = good;
        bytes[at] = static_cast<char>(bytes[at] ^ flip);
        return bytes;
    };
    ImageHeader endless = headerOf(payload);
    endless.payloadSize = std::uint64_t{4} << 30U;
    const std::string signature = "its signature does not fit its header";
    const std::string digest = "its payload is not the one that was signed";
    return {
        {"another variant", signedImage(headerOf(payload, "2.0", "desk-2"), payload),
         "its hardware variant is \"desk-2\", this phone is \"desk-1\""},
        {"magic", with(3, 1), "it is no software image: its magic is another one"},
        {"format version", with(9, 2), "its format version is 3, known is 1"},
        {"header size", with(10, 1), "its header size is 0 instead of 256"},
        {"first reserved bytes", with(13, 1), "its reserved bytes are not zero"},
        {"software version", with(17, 1), signature},
        {"payload size", with(31, 1),
         "its payload size is 100001, but 100000 bytes follow the header: it is cut short"},
        {"hardware variant", with(32, 1),
         "its hardware variant is \"eesk-1\", this phone is \"desk-1\""},
        {"payload digest", with(96, 1), signature},
        {"key id", with(128, 1),
         "its key id " + textOf(bentKeyId()) + " is none of the trusted keys"},
        {"second reserved bytes", with(150, 1), "its reserved bytes are not zero"},
        {"first bit of the signature", with(192, 1), signature},
        {"last bit of the signature", with(255, '\x80'), signature},
        {"first bit of the payload", with(256, 1), digest},
        {"last bit of the payload", with(good.size() - 1, '\x80'), digest},
        {"cut in the payload", good.substr(0, 50'000),
         "its payload size is 100000, but 49744 bytes follow the header: it is cut short"},
        {"cut in the header", good.substr(0, 200),
         "it is no software image: it has 200 bytes, a header alone has 256"},
        {"nothing", "", "it is no software image: it has 0 bytes, a header alone has 256"},
        {"longer than announced", good + "x",
         "its payload size is 100000, but 100001 bytes follow the header: it is longer than "
         "announced"},
        {"unknown key", signedImage(headerOf(payload), payload, keyNumber(9)),
         "its key id " + textOf(keyNumber(9).publicKey().id()) + " is none of the trusted keys"},
        {"another one's signature under a trusted id", forgedImage(payload), signature},
        {"no signature", textOfBytes(headerOf(payload).encode()) + payload, "it is not signed"},
        {"downgrade", signedImage(payload, "1.4.9"),
         "its software version 1.4.9 is older than 1.5.0, and downgrades are not allowed"},
        {"zero length", signedImage(headerOf(""), ""),
         "its payload size is zero: there is nothing in it"},
        {"4 GiB announced and not there", signedImage(endless, payload),
         "its payload size is 4294967296, but 100000 bytes follow the header: it is cut short"},
    };
}

}  // namespace vireo::test
