#include <Varnex/url/URLLocalFile.h>

#include <Varnex/url/FitInt.h>

#include <utility>

#include <unistd.h>

namespace Varnex {

URLImpl::File::File(std::string mimeType, long long size, std::string name, bool isTemporary)
    : mimeType_(std::move(mimeType)), size_(orUnknown(size)), name_(std::move(name)), isTemporary_(isTemporary) {}

URLImpl::File::File(File&& other) noexcept
    : mimeType_(std::move(other.mimeType_)),
      size_(std::exchange(other.size_, 0)),
      name_(std::exchange(other.name_, {})),
      isTemporary_(std::exchange(other.isTemporary_, false)) {}

URLImpl::File& URLImpl::File::operator=(File&& other) noexcept {
    std::swap(mimeType_, other.mimeType_);
    std::swap(size_, other.size_);
    std::swap(name_, other.name_);
    std::swap(isTemporary_, other.isTemporary_);
    return *this;
}

URLImpl::File::~File() {
    if (isTemporary_) ::unlink(name_.c_str());
}

}  // namespace Varnex
