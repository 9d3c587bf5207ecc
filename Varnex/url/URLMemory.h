#pragma once

#include <Varnex/Export.h>
#include <Varnex/url/URLImpl.h>

#include <cstdint>
#include <string>

namespace Varnex {

/// A whole resource in memory. Movable, not copyable.
///
/// What comes from a "data:" or an inline script URL points into the URL object: keep that as long.
class VARNEX_API URLImpl::Memory {
public:
    /// `data`, `size` bytes or null, becomes this object's when `ownsData`; it comes from malloc(3) then.
    Memory(std::string mimeType, std::int32_t size, const char* data, bool ownsData);
    Memory(Memory&& other) noexcept;
    Memory& operator=(Memory&& other) noexcept;
    ~Memory();

    [[nodiscard]] const std::string& getMimeType() const { return mimeType_; }
    /// Bytes.
    [[nodiscard]] std::int32_t getSize() const { return size_; }
    /// May be null when there are none.
    [[nodiscard]] const char* getData() const { return data_; }
    [[nodiscard]] bool ownsData() const { return ownsData_; }

private:
    std::string mimeType_;
    std::int32_t size_;
    const char* data_;
    bool ownsData_;
};

}  // namespace Varnex
