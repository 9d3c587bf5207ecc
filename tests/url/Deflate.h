#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include <zlib.h>

/// The same text for the same size; it can be compressed to about half.
inline std::string someText(std::size_t size) {
    std::string text;
    for (std::uint32_t x = 1; text.size() < size; x = x * 1664525 + 1013904223)
        text += static_cast<char>('a' + (x >> 24) % 16);
    return text;
}

/// Raw deflate.
inline std::string deflated(const std::string& content) {
    z_stream stream{};
    EXPECT_EQ(deflateInit2(&stream, 6, Z_DEFLATED, -15, 8, Z_DEFAULT_STRATEGY), Z_OK);
    std::string out(deflateBound(&stream, content.size()), '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(content.data()));
    stream.avail_in = static_cast<uInt>(content.size());
    stream.next_out = reinterpret_cast<Bytef*>(out.data());
    stream.avail_out = static_cast<uInt>(out.size());
    EXPECT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
    out.resize(stream.total_out);
    deflateEnd(&stream);
    return out;
}
