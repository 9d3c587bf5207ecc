#pragma once

#include <Varnex/protocols/MessageHeader.h>

#include <string>

namespace Varnex::Gzip {

// Private to the library: compressed replies.

/// Whether a client takes them.
[[nodiscard]] bool isAccepted(const MessageHeader& request);
/// Whether text of this type is worth it.
[[nodiscard]] bool isWorthwhile(const std::string& type);
/// False: no memory.
[[nodiscard]] bool compress(const std::string& text, std::string& compressed);

}  // namespace Varnex::Gzip
