#pragma once

#include <Varnex/url/BlockBuf.h>

#include <cstdint>
#include <memory>
#include <streambuf>

namespace Varnex {

// Private to the library.

/// The bytes of an archive member, checked: if they are not as many as announced or not what their checksum says, a
/// read that asks for more than is left throws `URLImpl::Exception` "Invalid zip file", which streams show as their
/// badbit.
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
