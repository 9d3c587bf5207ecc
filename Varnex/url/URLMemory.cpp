#include <Varnex/url/URLMemory.h>

#include <cstdlib>
#include <utility>

namespace Varnex {

URLImpl::Memory::Memory(std::string mimeType, std::int32_t size, const char* data, bool ownsData)
    : mimeType_(std::move(mimeType)), size_(size), data_(data), ownsData_(ownsData) {}

URLImpl::Memory::Memory(Memory&& other) noexcept
    : mimeType_(std::move(other.mimeType_)),
      size_(std::exchange(other.size_, 0)),
      data_(std::exchange(other.data_, nullptr)),
      ownsData_(std::exchange(other.ownsData_, false)) {}

URLImpl::Memory& URLImpl::Memory::operator=(Memory&& other) noexcept {
    std::swap(mimeType_, other.mimeType_);
    std::swap(size_, other.size_);
    std::swap(data_, other.data_);
    std::swap(ownsData_, other.ownsData_);
    return *this;
}

URLImpl::Memory::~Memory() {
    if (ownsData_) std::free(const_cast<char*>(data_));
}

}  // namespace Varnex
