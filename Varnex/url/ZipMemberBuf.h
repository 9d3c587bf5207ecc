#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <streambuf>

namespace Varnex {

// Private to the library.

/// The bytes of an archive member, checked: past the last one, if they are not as many as announced or not what their
/// checksum says, a read throws `URLImpl::Exception` "Invalid zip file", which streams show as their badbit.
class ZipMemberBuf : public std::streambuf {
public:
    ZipMemberBuf(std::unique_ptr<std::streambuf> source, std::uint32_t size, std::uint32_t crc);
    ZipMemberBuf(const ZipMemberBuf&) = delete;
    ZipMemberBuf& operator=(const ZipMemberBuf&) = delete;
    ~ZipMemberBuf() override;

protected:
    int_type underflow() override;
    std::streamsize xsgetn(char* s, std::streamsize n) override;

private:
    [[nodiscard]] std::streamsize receive(char* s, std::streamsize n);
    void checkEnd() const;

    std::unique_ptr<std::streambuf> source_;
    std::uint32_t left_;
    std::uint32_t crc_;
    unsigned long received_;  // the checksum of what has come
    std::array<char, 4096> buffer_;
};

}  // namespace Varnex
