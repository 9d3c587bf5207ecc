#pragma once

#include <Varnex/Export.h>
#include <Varnex/url/URLImpl.h>

#include <cstdint>
#include <istream>
#include <memory>
#include <streambuf>
#include <string>

namespace Varnex {

/// What is known of an open resource.
class VARNEX_API URLImpl::Object {
public:
    /// A `contentLength` that an int cannot hold becomes -1.
    Object(std::unique_ptr<std::streambuf> buffer, std::string mimeType, long long contentLength);
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;
    virtual ~Object();

    /// May be empty.
    [[nodiscard]] const std::string& getMimeType() const { return mimeType_; }
    /// Bytes of the whole resource, as announced; -1: unknown, or 2 GiB and more.
    [[nodiscard]] int getContentLength() const { return contentLength_; }

protected:
    [[nodiscard]] std::streambuf* buffer() const { return buffer_.get(); }

private:
    [[maybe_unused]] std::uint32_t word_ = 0;
    std::string mimeType_;
    int contentLength_;
    std::unique_ptr<std::streambuf> buffer_;
};

/// An open resource: reads it from its beginning. One thread at a time, the one that opened it.
///
/// A failure on the way is the badbit, where the source can tell it from the end.
class VARNEX_API URLImpl::Stream : public URLImpl::Object, public virtual std::istream {
public:
    Stream(std::unique_ptr<std::streambuf> buffer, std::string mimeType, long long contentLength);
    ~Stream() override;
};

}  // namespace Varnex
