#pragma once

#include <Varnex/events/Event.h>

#include <cstring>
#include <memory>
#include <sstream>
#include <string>

/// Bytes as lower-case hexadecimal, two digits a byte.
inline std::string hexOf(const std::string& bytes) {
    std::string hex;
    for (const unsigned char byte : bytes)
        for (const int digit : {byte >> 4, byte & 15}) hex += "0123456789abcdef"[digit];
    return hex;
}

/// Hexadecimal digits, in groups as one likes, without the blanks.
inline std::string digits(std::string hex) {
    std::erase(hex, ' ');
    return hex;
}

inline std::string bytesOf(const std::string& hex) {
    const std::string all = digits(hex);
    std::string bytes;
    for (std::size_t i = 0; i < all.size(); i += 2)
        bytes += static_cast<char>(std::stoi(all.substr(i, 2), nullptr, 16));
    return bytes;
}

/// Bytes in a heap block of exactly their size, so that a sanitizer sees every read past their end.
inline std::unique_ptr<char[]> exactBlock(const std::string& bytes) {
    auto block = std::make_unique_for_overwrite<char[]>(bytes.size());
    std::memcpy(block.get(), bytes.data(), bytes.size());
    return block;
}

inline std::string wireOf(Varnex::Event& event) {
    std::ostringstream wire;
    wire << event;
    return wire.str();
}

/// The event that `bytes` hold, or null.
inline std::unique_ptr<Varnex::Event> parsed(const std::string& bytes) {
    Varnex::Event* event = nullptr;
    Varnex::Event::parse(exactBlock(bytes).get(), static_cast<int>(bytes.size()), event);
    return std::unique_ptr<Varnex::Event>(event);
}

/// MessageEvent(3, "hi").
inline const std::string kMessage = bytesOf("56583031 00000012 000a 0000 0003 0002 6869");
/// An event without fields.
inline const std::string kPlain = bytesOf("56583031 0000000c 0000 0000");
/// An event of a type that nobody registers, with 4 bytes of fields.
inline const std::string kUnknown = bytesOf("56583031 00000010 0007 0000 01020304");
