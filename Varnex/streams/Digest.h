#pragma once

#include <Varnex/Export.h>

#include <string_view>

namespace Varnex {

// Digests for handshakes, not for secrets. False when the system's cryptographic library refuses, as it may with MD5;
// `out` is then unchanged. Any thread may call.

/// What a WebSocket server appends to the client's key (RFC 6455, section 1.3).
inline constexpr std::string_view guid = "258EAFA5-E914-47DA-95CA-C5AB0DC85B11";

/// The SHA-1 digest, 20 bytes, of `length` bytes at `data`. A `length` of 0 takes `otherLength` instead, for callers
/// that pass theirs first; false when the one that counts is negative.
VARNEX_API bool calcSHA1Hash(int otherLength, unsigned int length, const char* data, char* out);

/// The MD5 digest, 16 bytes, of exactly 16 bytes at `data`, whatever the lengths: it is for the challenge of the old
/// WebSocket handshake. All 16 must be readable.
VARNEX_API bool calcMD5Hash(int otherLength, unsigned int length, const char* data, char* out);

}  // namespace Varnex
