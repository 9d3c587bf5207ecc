#include <Varnex/url/ZipDirectory.h>

#include <Varnex/url/LittleEndian.h>
#include <Varnex/url/Quietly.h>
#include <Varnex/url/URLImpl.h>

#include <algorithm>
#include <string_view>

namespace Varnex {

namespace {

constexpr std::string_view kEndSignature("PK\5\6", 4), kEntrySignature("PK\1\2", 4), kLocalSignature("PK\3\4", 4);
constexpr std::string_view kZip64Signature("PK\6\7", 4);
constexpr std::size_t kEndSize = 22, kEntrySize = 46, kLocalSize = 30, kZip64LocatorSize = 20;
constexpr std::size_t kMaxComment = 0xFFFF;

[[noreturn]] void refuse() {
    throw URLImpl::Exception("Invalid zip file");
}

/// Bytes of the stream; -1: it cannot be moved.
std::streamoff sizeOf(std::istream& archive) {
    const auto size = [&] { return archive.rdbuf()->pubseekoff(0, std::ios_base::end, std::ios_base::in); };
    return std::streamoff(quietly(size, std::streampos(-1)));
}

/// The `n` bytes at `offset`, fewer at the end of the stream.
std::string readAt(std::istream& archive, std::uint64_t offset, std::size_t n) {
    std::string bytes(n, '\0');
    const auto read = [&] {
        std::streambuf& buffer = *archive.rdbuf();
        const auto position = static_cast<std::streamoff>(offset);
        if (buffer.pubseekoff(position, std::ios_base::beg, std::ios_base::in) != std::streampos(position))
            return std::streamsize{0};
        return buffer.sgetn(bytes.data(), static_cast<std::streamsize>(n));
    };
    bytes.resize(static_cast<std::size_t>(quietly(read, std::streamsize{0})));
    return bytes;
}

/// What both kinds of headers have from the flags on.
ZipEntry parseFields(std::string_view fields) {
    ZipEntry entry;
    entry.flags = littleEndian<std::uint16_t>(fields, 0);
    entry.method = littleEndian<std::uint16_t>(fields, 2);
    entry.time = littleEndian<std::uint32_t>(fields, 4);
    entry.crc = littleEndian<std::uint32_t>(fields, 8);
    entry.compressedSize = littleEndian<std::uint32_t>(fields, 12);
    entry.size = littleEndian<std::uint32_t>(fields, 16);
    return entry;
}

}  // namespace

/// The record behind the central directory.
struct ZipDirectory::End {
    std::uint64_t offset;
    std::string record;  // to the end of the archive
    bool isZip64;

    [[nodiscard]] std::size_t count() const { return littleEndian<std::uint16_t>(record, 10); }
    [[nodiscard]] std::uint32_t directorySize() const { return littleEndian<std::uint32_t>(record, 12); }
    [[nodiscard]] std::uint32_t directoryOffset() const { return littleEndian<std::uint32_t>(record, 16); }
    /// Several disks, or sizes of 64 bits.
    [[nodiscard]] bool isSupported() const {
        return littleEndian<std::uint32_t>(record, 4) == 0 && littleEndian<std::uint16_t>(record, 8) == count() &&
               !isZip64 && directoryOffset() != ZipEntry::kZip64Value && directorySize() != ZipEntry::kZip64Value;
    }
};

ZipDirectory::End ZipDirectory::findEnd(std::istream& archive) {
    const std::streamoff size = sizeOf(archive);
    const auto tailSize = static_cast<std::size_t>(
        std::clamp<std::streamoff>(size, 0, static_cast<std::streamoff>(kZip64LocatorSize + kEndSize + kMaxComment)));
    const std::uint64_t tailOffset = static_cast<std::uint64_t>(std::max<std::streamoff>(size, 0)) - tailSize;
    const std::string tail = readAt(archive, tailOffset, tailSize);
    for (std::size_t at = tail.rfind(kEndSignature); at != std::string::npos;
         at = at == 0 ? std::string::npos : tail.rfind(kEndSignature, at - 1)) {
        const std::size_t left = tail.size() - at;
        if (left < kEndSize || littleEndian<std::uint16_t>(tail, at + 20) > left - kEndSize) continue;
        const bool isZip64 = at >= kZip64LocatorSize && tail.compare(at - kZip64LocatorSize, 4, kZip64Signature) == 0;
        return {tailOffset + at, tail.substr(at), isZip64};
    }
    throw URLImpl::Exception("Cannot find end of central directory");
}

ZipDirectory::ZipDirectory(std::istream& archive, unsigned long maxSize) {
    End end = findEnd(archive);
    const std::uint64_t size = end.directorySize();
    if (!end.isSupported() || (maxSize > 0 && size > maxSize) || size + end.directoryOffset() > end.offset) refuse();
    // What was put before the archive, such as a program that unpacks it, is not counted in its offsets.
    const std::uint64_t shift = end.offset - size - end.directoryOffset();
    const std::string records = readAt(archive, end.directoryOffset() + shift, static_cast<std::size_t>(size));
    if (records.size() < size) refuse();
    readEntries(records, end.count(), shift);
    endOffset_ = end.offset;
    endRecord_ = std::move(end.record);
}

void ZipDirectory::readEntries(const std::string& records, std::size_t count, std::uint64_t shift) {
    std::string_view rest = records;
    for (std::size_t i = 0; i < count; ++i) {
        if (rest.size() < kEntrySize || !rest.starts_with(kEntrySignature)) refuse();
        const std::size_t nameSize = littleEndian<std::uint16_t>(rest, 28);
        const std::size_t size =
            kEntrySize + nameSize + littleEndian<std::uint16_t>(rest, 30) + littleEndian<std::uint16_t>(rest, 32);
        if (rest.size() < size) refuse();
        ZipEntry entry = parseFields(rest.substr(8));
        entry.headerOffset = littleEndian<std::uint32_t>(rest, 42) + shift;
        entries_.insert_or_assign(std::string(rest.substr(kEntrySize, nameSize)), entry);
        rest.remove_prefix(size);
    }
}

const ZipEntry* ZipDirectory::find(const std::string& name) const {
    const auto entry = entries_.find(name);
    return entry == entries_.end() ? nullptr : &entry->second;
}

bool ZipDirectory::isOf(std::istream& archive) const {
    return readAt(archive, endOffset_, endRecord_.size() + 1) == endRecord_;
}

std::optional<ZipLocalHeader> ZipLocalHeader::read(std::istream& archive, std::uint64_t offset) {
    const std::string header = readAt(archive, offset, kLocalSize);
    if (header.size() < kLocalSize || !header.starts_with(kLocalSignature)) return {};
    const std::size_t nameSize = littleEndian<std::uint16_t>(header, 26);
    const std::size_t extraSize = littleEndian<std::uint16_t>(header, 28);
    return ZipLocalHeader{readAt(archive, offset + kLocalSize, nameSize),
                          parseFields(std::string_view(header).substr(6)), offset + kLocalSize + nameSize + extraSize};
}

bool ZipLocalHeader::agreesWith(const std::string& member, const ZipEntry& other) const {
    if (name != member || entry.method != other.method || entry.time != other.time) return false;
    return (entry.flags & ZipEntry::kSizesFollowFlag) != 0 ||
           (entry.crc == other.crc && entry.compressedSize == other.compressedSize && entry.size == other.size);
}

}  // namespace Varnex
