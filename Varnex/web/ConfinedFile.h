#pragma once

#include <Varnex/transport/UniqueFd.h>

#include <string>

namespace Varnex {

// Private to the library.

/// A folder that files are opened in.
class FolderFd {
public:
    /// Not open when `path` is no folder.
    explicit FolderFd(const std::string& path);

    [[nodiscard]] int get() const { return fd_.get(); }

private:
    UniqueFd fd_;
};

/// Opens what `path`, relative to the folder even with "/" at its beginning, names, for reading and without ever
/// waiting for a FIFO. Not open: there is none, or the way to it leaves the folder, also through a symbolic link, even
/// one that is made meanwhile.
[[nodiscard]] UniqueFd openBeneath(const FolderFd& folder, std::string path);

}  // namespace Varnex
