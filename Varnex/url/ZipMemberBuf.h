#pragma once

#include <Varnex/url/BlockBuf.h>

#include <cstdint>
#include <memory>
#include <streambuf>

namespace Varnex {

// Private to the library.

/// The bytes of an archive member, checked: when they are not as many as announced, or not what their checksum says,
/// the end is an `URLImpl::Exception` "Invalid zip file".
class ZipMemberBuf : public BlockBuf {
public:
    ZipMemberBuf(std::unique_ptr<std::streambuf> source, std::uint32_t size, std::uint32_t crc);
    ~ZipMemberBuf() override;

protected:
    std::streamsize receive(char* s, std::streamsize n) override;
    void checkEnd() override;

private:
    std::unique_ptr<std::streambuf> source_;
    std::uint32_t left_;
    std::uint32_t crc_;
    unsigned long received_;  // the checksum of what has come
};

}  // namespace Varnex
