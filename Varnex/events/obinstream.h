#pragma once

#include <Varnex/Export.h>

#include <iosfwd>
#include <string>

namespace Varnex {

/// Writes single values, big-endian, to a stream that outlives it. Failures show in the stream's state.
///
/// Unlike in events a `bool` takes one byte and the count of a text 32 bits. Nothing else is written: the reader has to
/// ask for the same types in the same order. One thread at a time, as for the stream.
class VARNEX_API obinstream {
public:
    explicit obinstream(std::ostream& stream) : stream_(stream) {}

    obinstream& operator<<(bool value);  ///< 1 byte
    obinstream& operator<<(char value);
    obinstream& operator<<(signed char value);
    obinstream& operator<<(unsigned char value);
    obinstream& operator<<(short value);
    obinstream& operator<<(unsigned short value);
    obinstream& operator<<(int value);
    obinstream& operator<<(unsigned int value);
    /// 4 bytes also where `long` has 8: the low 32 bits. Note that `int64_t` and `size_t` may be `long`.
    obinstream& operator<<(long value);
    obinstream& operator<<(unsigned long value);
    obinstream& operator<<(float value);
    obinstream& operator<<(double value);
    /// A 32-bit count and the bytes, without terminator.
    obinstream& operator<<(const char* text);
    obinstream& operator<<(const std::string& text);

private:
    template <class UInt>
    obinstream& writeNumber(UInt value);
    obinstream& writeText(const char* text, std::size_t size);

    std::ostream& stream_;
};

}  // namespace Varnex
