#pragma once

#include <Varnex/Export.h>

#include <iosfwd>
#include <string>

namespace Varnex {

/// Reads single values, big-endian, from a stream that outlives it: the counterpart of `obinstream`.
///
/// Failures show in the stream's state; a number that could not be read whole becomes 0. One thread at a time, as for
/// the stream.
class VARNEX_API ibinstream {
public:
    explicit ibinstream(std::istream& stream) : stream_(stream) {}

    ibinstream& operator>>(bool& value);  ///< 1 byte, true unless 0
    ibinstream& operator>>(char& value);
    ibinstream& operator>>(signed char& value);
    ibinstream& operator>>(unsigned char& value);
    ibinstream& operator>>(short& value);
    ibinstream& operator>>(unsigned short& value);
    ibinstream& operator>>(int& value);
    ibinstream& operator>>(unsigned int& value);
    ibinstream& operator>>(long& value);           ///< 4 bytes, sign-extended
    ibinstream& operator>>(unsigned long& value);  ///< 4 bytes, zero-extended
    ibinstream& operator>>(float& value);
    ibinstream& operator>>(double& value);

    /// As many bytes as the 32-bit count in the stream says, and a terminator behind them, also when fewer came;
    /// nothing when the count itself is missing. There is no bound: only for streams that the program wrote itself;
    /// otherwise read into a `std::string`.
    ibinstream& operator>>(char* text);

    /// Grows as bytes arrive, whatever count the stream claims; when it ends early, the text holds what came.
    ibinstream& operator>>(std::string& text);

private:
    template <class UInt>
    [[nodiscard]] UInt readNumber();

    std::istream& stream_;
};

}  // namespace Varnex
