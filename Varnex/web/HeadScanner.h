#pragma once

#include <cstddef>
#include <string_view>

namespace Varnex {

// Private to the library.

/// Finds the end of a request's head in bytes that come in pieces, where the reader of requests will find it.
class HeadScanner {
public:
    /// Whether the bytes, which begin with those of the last call, hold a whole head, or one that is malformed already.
    [[nodiscard]] bool isWhole(std::string_view bytes);

    /// Bytes of the whole head.
    [[nodiscard]] std::size_t getSize() const { return seen_; }
    /// Whether the head leaves open how long the body is.
    [[nodiscard]] bool isAmbiguous() const { return lengths_ > 1; }

private:
    [[nodiscard]] bool endsAt(std::string_view line);

    std::size_t seen_ = 0;      // bytes of whole lines
    std::size_t searched_ = 0;  // bytes
    bool hasBegun_ = false;
    int lengths_ = 0;  // header lines that tell one
};

}  // namespace Varnex
