#pragma once

#include <Varnex/protocols/ProtocolHTTP.h>

#include <optional>
#include <string>

struct stat;

namespace Varnex {

// Private to the library.

/// What tells the versions of a file apart, and what a request says of the one it knows (RFC 9110, section 13).
class FileVersion {
public:
    explicit FileVersion(const struct stat& status);

    /// As another form of the same file.
    void setEncoding(const std::string& name);

    void describe(MessageHeader& header) const;
    /// Whether the client has this one.
    [[nodiscard]] bool isKnown(const MessageHeader& request) const;
    /// Whether a range of what the client has is one of this.
    [[nodiscard]] bool allowsRange(const MessageHeader& request) const;

private:
    std::string tag_;
    long modified_;  // seconds since 1970
    std::string date_;
};

/// A part of a file.
struct ByteRange {
    long long offset = 0;
    long long length = 0;
};

/// The single range that a request asks for; of several, or of what is no range, none. `length` 0: it lies outside.
[[nodiscard]] std::optional<ByteRange> parseRange(const std::string& text, long long size);

}  // namespace Varnex
