#pragma once

#include <Varnex/url/CharacterSet.h>

#include <cstddef>
#include <string>

namespace Varnex {

// Private to the library: percent-encoding and -decoding with the rules of `URLImpl`, in linear time.

/// Letters, digits and "$-_.!~*'(),".
inline constexpr CharacterSet kUnreserved("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789$-_.!~*'(),");

inline constexpr CharacterSet kNoCharacters("");

/// Characters that keep a meaning of their own in a path.
inline constexpr char kSpecialCharacters[] = ";/?:@&=+%#";

/// Encodes every byte that is not in `plain`.
void percentEncode(std::string& text, const CharacterSet& plain);

/// Decodes up to `end` but for the bytes in `keep`; the position of the "%" where it stopped, or npos.
std::size_t percentDecode(std::string& text, const CharacterSet& keep, std::size_t end = std::string::npos);

}  // namespace Varnex
