// Base64 and quoted-printable of 1 MiB: the plain functions, and the stream buffers as `ours-stream`.
#include "bench.hpp"

#include <Varnex/streams/Base64.h>
#include <Varnex/streams/base64decodebuf.h>
#include <Varnex/streams/base64encodebuf.h>
#include <Varnex/streams/quotedprintabledecodebuf.h>
#include <Varnex/streams/quotedprintableencodebuf.h>
#include <bench/MemoryTarget.h>

#include <ostream>
#include <string>

namespace {

constexpr std::size_t kSize = 1 << 20;

template <class Function>
void figure(const char* peer, const char* metric, Function function) {
    bench::emit("D", peer, metric, static_cast<double>(kSize) / bench::time_median(function) / 1e9, "GB/s");
}

/// One bulk write through a new `Buffer` into `memory`.
template <class Buffer, class Target>
void write(MemoryTarget& memory, Target& target, const std::string& bytes) {
    memory.restart();
    Buffer buffer(target);
    const auto size = static_cast<std::streamsize>(bytes.size());
    bench::check(buffer.sputn(bytes.data(), size) == size && buffer.pubsync() == 0, "write");
}

std::uint64_t next() {
    static std::uint64_t x = 88172645463325252ull;
    x ^= x << 13;
    x ^= x >> 7;
    return x ^= x << 17;
}

std::string randomBytes() {
    std::string bytes(kSize, 0);
    for (char& c : bytes) c = static_cast<char>(next() >> 32);
    return bytes;
}

/// Mostly ASCII text with 3 % bytes that need an escape, as the other programs of the job have it, with CR LF.
std::string someText() {
    std::string text;
    for (int column = 1; text.size() < kSize - 2; ++column) {
        const unsigned dice = static_cast<unsigned>(next() >> 33) % 1000;
        if (column > 60 && dice < 100) {
            text += "\r\n";
            column = 0;
        } else {
            text += static_cast<char>(dice < 30 ? 0xA0 + dice : dice % 6 == 0 ? ' ' : 'a' + dice % 26);
        }
    }
    return text.append(kSize - text.size(), 'z');
}

void base64() {
    const std::string bytes = randomBytes();
    std::string text(Varnex::encodedBase64Size(kSize), 0), back(kSize, 0);
    figure("ours", "b64enc_1MiB", [&] { Varnex::encodeBase64(text.data(), bytes.data(), kSize); });
    figure("ours", "b64dec_1MiB", [&] {
        unsigned long size = kSize;
        bench::check(Varnex::decodeBase64(back.data(), size, text) == Varnex::Base64Result::Decoded, "decode");
    });
    bench::check(back == bytes, "base64");
    MemoryTarget memory(4 * kSize);
    std::ostream target(&memory);
    figure("ours-stream", "b64enc_1MiB", [&] { write<Varnex::base64encodebuf>(memory, target, bytes); });
    bench::check(memory.written() == text, "base64 stream");
    figure("ours-stream", "b64dec_1MiB", [&] { write<Varnex::base64decodebuf>(memory, target, text); });
    bench::check(memory.written() == bytes, "base64 stream back");
}

void quotedPrintable() {
    const std::string text = someText();
    MemoryTarget memory(4 * kSize);
    std::streambuf* target = &memory;
    figure("ours", "qpenc_1MiB", [&] { write<Varnex::quotedprintableencodebuf>(memory, target, text); });
    const std::string coded = memory.written();
    figure("ours", "qpdec_1MiB", [&] { write<Varnex::quotedprintabledecodebuf>(memory, target, coded); });
    bench::check(memory.written() == text, "quoted-printable");
}

}  // namespace

int main() {
    bench::guard(120);
    base64();
    quotedPrintable();
}
