#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace Varnex {

// Private to the library.

/// A set of bytes, asked byte by byte.
class CharacterSet {
public:
    constexpr explicit CharacterSet(std::string_view members) {
        for (const char c : members) set_[static_cast<unsigned char>(c)] = true;
    }
    constexpr CharacterSet(const CharacterSet& other, std::string_view members) : CharacterSet(other) {
        for (const char c : members) set_[static_cast<unsigned char>(c)] = true;
    }

    [[nodiscard]] constexpr bool contains(char c) const { return set_[static_cast<unsigned char>(c)]; }

    /// The position of the first member in `text`, or its length.
    [[nodiscard]] constexpr std::size_t findIn(std::string_view text, std::size_t from = 0) const {
        while (from < text.size() && !contains(text[from])) ++from;
        return from;
    }

private:
    std::array<bool, 256> set_{};
};

}  // namespace Varnex
