#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <zlib.h>

/// 20 MiB of words, of which some are much more frequent than others, and the same as raw deflate of level 6.
struct DeflatedText {
    DeflatedText() : text(words()), coded(compress(text)) {}

    const std::string text;
    const std::string coded;

private:
    static constexpr std::size_t kSize = 20U << 20;

    static std::string words() {
        std::uint64_t x = 88172645463325252ULL;
        const auto next = [&x] { return x ^= x << 13, x ^= x >> 7, x ^= x << 17; };
        std::vector<std::string> vocabulary(4000);
        for (std::string& word : vocabulary)
            for (std::uint64_t n = 2 + next() % 8; n > 0; --n) word += static_cast<char>('a' + next() % 26);
        std::string all;
        while (all.size() < kSize) {
            const double dice = static_cast<double>(next() >> 11) / std::ldexp(1, 53);
            all += vocabulary[static_cast<std::size_t>(dice * dice * dice * 4000)];
            all += next() % 12 != 0 ? ' ' : '\n';
        }
        all.resize(kSize);
        return all;
    }

    static std::string compress(const std::string& content) {
        z_stream stream{};
        deflateInit2(&stream, 6, Z_DEFLATED, -15, 8, Z_DEFAULT_STRATEGY);
        std::string out(deflateBound(&stream, content.size()), '\0');
        stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(content.data()));
        stream.avail_in = static_cast<uInt>(content.size());
        stream.next_out = reinterpret_cast<Bytef*>(out.data());
        stream.avail_out = static_cast<uInt>(out.size());
        deflate(&stream, Z_FINISH);
        out.resize(stream.total_out);
        deflateEnd(&stream);
        return out;
    }
};
