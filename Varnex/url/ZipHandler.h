#pragma once

#include <Varnex/url/URLLocalFile.h>
#include <Varnex/url/ZipDirectory.h>

#include <cstdint>
#include <istream>
#include <memory>
#include <optional>
#include <streambuf>
#include <string>

namespace Varnex {

// Private to the library.

/// An archive with its directory; one that cannot be read in any order has a copy on the disk. Any thread.
class ZipHandler {
public:
    struct Member {
        std::unique_ptr<std::streambuf> buffer;
        std::uint32_t size;
    };

    /// Opens the member `name` of an archive, with the directory that the cache has if the archive is still the same.
    /// Throws `URLImpl::Exception`: what opening the archive throws, "Cannot find end of central directory", "Invalid
    /// zip file", "Zip does not contain file", or "Unsupported compression method", also for encrypted members.
    [[nodiscard]] static Member open(const URLImpl& archive, const std::string& name);

    /// Reads the directory.
    explicit ZipHandler(URLImpl::Stream& archive);

private:
    [[nodiscard]] std::unique_ptr<std::istream> openArchive(const URLImpl& archive) const;
    [[nodiscard]] bool isCurrent(std::istream& archive, const std::string& name) const;
    [[nodiscard]] Member openMember(std::unique_ptr<std::istream> archive, const std::string& name) const;

    std::optional<URLImpl::File> copy_;
    std::optional<ZipDirectory> directory_;  // never empty
};

}  // namespace Varnex
