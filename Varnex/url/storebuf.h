#pragma once

#include <Varnex/Export.h>

#include <istream>
#include <memory>
#include <streambuf>

namespace Varnex {

/// A stretch of another stream as a stream of its own, such as an archive member that is not compressed.
///
/// Owns the other stream, and nothing else may move that meanwhile. Failures show as the end. Read by blocks: single
/// characters cost a call each.
class VARNEX_API storebuf : public std::streambuf {
public:
    /// `length` bytes of `source` from `offset` on; one that cannot be moved there is taken to be there.
    storebuf(std::unique_ptr<std::istream> source, unsigned long offset, unsigned long length);
    storebuf(const storebuf&) = delete;
    storebuf& operator=(const storebuf&) = delete;
    ~storebuf() override;

protected:
    int_type underflow() override;
    std::streamsize xsgetn(char* s, std::streamsize n) override;
    std::streamsize showmanyc() override;
    int_type pbackfail(int_type c) override;
    /// Positions count from the start of the stretch; outside it, and for writing, there are none.
    pos_type seekoff(off_type offset, std::ios_base::seekdir from, std::ios_base::openmode which) override;
    pos_type seekpos(pos_type position, std::ios_base::openmode which) override;

private:
    [[nodiscard]] std::streambuf& sourceBuffer() const;
    [[nodiscard]] unsigned long unread() const { return static_cast<unsigned long>(egptr() - gptr()); }
    [[nodiscard]] bool returnUnread();
    void clearGetArea() { setg(nullptr, nullptr, nullptr); }

    std::unique_ptr<std::istream> source_;
    unsigned long offset_;
    unsigned long length_;
    unsigned long consumed_ = 0;  // with what waits in the get area
    char oneByte_ = 0;            // the get area
};

}  // namespace Varnex
