#pragma once

#include <cstdint>

namespace Varnex {

// Private to the library.

/// What the central directory of an archive tells of a member.
struct ZipEntry {
    static constexpr std::uint16_t kStored = 0, kDeflated = 8, kEncryptedFlag = 1, kSizesFollowFlag = 8;
    static constexpr std::uint32_t kZip64Value = 0xFFFFFFFF;  // the true one is elsewhere then

    std::uint16_t flags = 0;
    std::uint16_t method = 0;
    std::uint32_t time = 0;  // as DOS writes date and time
    std::uint32_t crc = 0;
    std::uint32_t compressedSize = 0;
    std::uint32_t size = 0;
    std::uint64_t headerOffset = 0;  // of the local header in the archive

    /// Stored or deflated, not encrypted, with sizes of 32 bits.
    [[nodiscard]] bool isSupported() const {
        return (method == kStored || method == kDeflated) && (flags & kEncryptedFlag) == 0 &&
               compressedSize != kZip64Value && size != kZip64Value;
    }
};

}  // namespace Varnex
