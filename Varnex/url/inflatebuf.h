#pragma once

#include <Varnex/Export.h>

#include <istream>
#include <memory>
#include <streambuf>

namespace Varnex {

/// Reads raw deflate (RFC 1951, without a header) from another stream as what it was before.
///
/// Owns the other stream and reads it ahead by up to `kInputSize` bytes. A failure, such as corrupt data, shows as the
/// end. Nothing limits how much comes out of how little: that is up to the reader. Read by blocks: single characters
/// cost a call each.
class VARNEX_API inflatebuf : public std::streambuf {
public:
    /// Bytes of a block that is read from the other stream.
    static constexpr unsigned kInputSize = 1024;

    /// Throws `URLImpl::Exception` "Cannot initialize zlib"; `source` is gone then too.
    explicit inflatebuf(std::unique_ptr<std::istream> source);
    inflatebuf(const inflatebuf&) = delete;
    inflatebuf& operator=(const inflatebuf&) = delete;
    ~inflatebuf() override;

    /// True: `size` bytes are at `out`, or the data ended after at least one. False: an error, or the other stream
    /// ended before the data did.
    bool uncompress(char* out, unsigned size);

protected:
    int_type underflow() override;
    std::streamsize xsgetn(char* s, std::streamsize n) override;

private:
    class Inflater;

    /// Bytes that were put at `out`, up to `size`; fewer only at the end.
    [[nodiscard]] unsigned inflateInto(char* out, unsigned size);
    [[nodiscard]] unsigned readInput();

    std::unique_ptr<std::istream> source_;
    std::unique_ptr<Inflater> inflater_;
    char oneByte_ = 0;  // the get area
    char input_[kInputSize];
};

}  // namespace Varnex
