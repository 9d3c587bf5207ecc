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

class URLPolicy;

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

    /// Reads the directory of an archive that was opened under `policy`.
    ZipHandler(URLImpl::Stream& archive, std::shared_ptr<const URLPolicy> policy);

private:
    /// Null: the copy is gone, or was made under another policy, which looked at what this one may refuse.
    [[nodiscard]] std::unique_ptr<std::istream> openArchive(const URLImpl& archive) const;
    [[nodiscard]] bool isCurrent(std::istream& archive, const std::string& name) const;
    [[nodiscard]] Member openMember(std::unique_ptr<std::istream> archive, const std::string& name) const;

    std::shared_ptr<const URLPolicy> policy_;
    std::optional<URLImpl::File> copy_;
    std::optional<ZipDirectory> directory_;  // never empty
};

}  // namespace Varnex
