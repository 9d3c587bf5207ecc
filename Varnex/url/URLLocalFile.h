#pragma once

#include <Varnex/Export.h>
#include <Varnex/url/URLImpl.h>

#include <string>

namespace Varnex {

/// A resource as a local file, which goes with this object when it is a temporary one. Movable, not copyable.
class VARNEX_API URLImpl::File {
public:
    /// A `size` that an int cannot hold becomes -1.
    File(std::string mimeType, long long size, std::string name, bool isTemporary);
    File(File&& other) noexcept;
    File& operator=(File&& other) noexcept;
    ~File();

    [[nodiscard]] const std::string& getMimeType() const { return mimeType_; }
    /// Bytes; -1: 2 GiB and more.
    [[nodiscard]] int getSize() const { return size_; }
    /// The path.
    [[nodiscard]] const std::string& getName() const { return name_; }
    [[nodiscard]] bool isTemporary() const { return isTemporary_; }

private:
    std::string mimeType_;
    int size_;
    std::string name_;
    bool isTemporary_;
};

}  // namespace Varnex
