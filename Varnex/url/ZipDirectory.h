#pragma once

#include <Varnex/url/ZipEntry.h>

#include <cstddef>
#include <istream>
#include <optional>
#include <string>
#include <unordered_map>

namespace Varnex {

// Private to the library.

/// The central directory of an archive. After construction any thread may read it.
///
/// Failures throw `URLImpl::Exception` with "Cannot find end of central directory" or "Invalid zip file".
class ZipDirectory {
public:
    /// Reads it from a stream that can be moved, refusing one of more than `maxSize` bytes; 0: no limit.
    ZipDirectory(std::istream& archive, unsigned long maxSize);

    /// The member of that name, as the archive has it; of several the last. Null: none.
    [[nodiscard]] const ZipEntry* find(const std::string& name) const;

    /// Whether the archive still ends as it did when this was read.
    [[nodiscard]] bool isOf(std::istream& archive) const;

private:
    struct End;

    [[nodiscard]] static End findEnd(std::istream& archive);
    void readEntries(const std::string& records, std::size_t count, std::uint64_t shift);

    std::uint64_t endOffset_ = 0;
    std::string endRecord_;  // with the comment
    std::unordered_map<std::string, ZipEntry> entries_;
};

/// What stands before the data of a member.
struct ZipLocalHeader {
    std::string name;
    ZipEntry entry;  // sizes and checksum are 0 when they come after the data
    std::uint64_t dataOffset;

    /// Nothing: there is none.
    [[nodiscard]] static std::optional<ZipLocalHeader> read(std::istream& archive, std::uint64_t offset);

    /// Whether it says the same as the directory, as far as it says anything.
    [[nodiscard]] bool agreesWith(const std::string& member, const ZipEntry& other) const;
};

}  // namespace Varnex
