// Codecs on 1 MiB: beside OpenSSL's Base64, the stream buffers beside the plain functions, and blocks beside streams
// whose every byte goes through `overflow`. All streams write into the same memory; bytes/s are of the unencoded side.
#include <Varnex/streams/Base64.h>
#include <Varnex/streams/base64decodebuf.h>
#include <Varnex/streams/base64encodebuf.h>
#include <Varnex/streams/quotedprintabledecodebuf.h>
#include <Varnex/streams/quotedprintableencodebuf.h>
#include <Varnex/streams/urlbuf.h>
#include <bench/MemoryTarget.h>

#include <benchmark/benchmark.h>
#include <openssl/evp.h>

#include <cstring>
#include <ostream>
#include <random>
#include <streambuf>
#include <string>

namespace {

constexpr std::size_t kSize = 1 << 20;

std::string randomBytes() {
    std::mt19937 random(1);
    std::string bytes(kSize, 0);
    for (char& c : bytes) c = static_cast<char>(random());
    return bytes;
}

/// Text with line ends, of which three characters in a hundred need an escape.
std::string someText() {
    std::mt19937 random(2);
    std::string text(kSize, 0);
    for (std::size_t i = 0; i < kSize; ++i) {
        const auto dice = static_cast<int>(random() % 1000);
        text[i] = i % 71 == 70 ? '\n' : dice < 30 ? static_cast<char>(0xA0 + dice) : static_cast<char>('a' + dice % 26);
    }
    return text;
}

std::string encodedText() {
    static const std::string text = [] {
        std::string all(Varnex::encodedBase64Size(kSize), 0);
        Varnex::encodeBase64(all.data(), randomBytes().data(), kSize);
        return all;
    }();
    return text;
}

template <class Function>
void run(benchmark::State& state, Function function) {
    for (auto _ : state) {
        function();
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(kSize) * state.iterations());
}

void base64Encode(benchmark::State& state) {
    const std::string in = randomBytes();
    std::string out = encodedText();
    run(state, [&] { Varnex::encodeBase64(out.data(), in.data(), in.size()); });
}

void base64EncodeOpenSSL(benchmark::State& state) {
    const std::string in = randomBytes();
    std::string out = encodedText() + '\0';
    run(state, [&] {
        EVP_EncodeBlock(reinterpret_cast<unsigned char*>(out.data()), reinterpret_cast<const unsigned char*>(in.data()),
                        static_cast<int>(in.size()));
    });
    if (out.substr(0, out.size() - 1) != encodedText()) state.SkipWithError("they differ");
}

void base64Decode(benchmark::State& state, Varnex::Base64Mode mode) {
    const std::string in = encodedText();
    std::string out(kSize, 0);
    run(state, [&] {
        unsigned long size = out.size();
        if (decodeBase64(out.data(), size, in, mode) != Varnex::Base64Result::Decoded) state.SkipWithError("bad");
    });
    if (out != randomBytes()) state.SkipWithError("they differ");
}

void base64DecodeOpenSSL(benchmark::State& state) {
    const std::string in = encodedText();
    std::string out(kSize + 3, 0);
    run(state, [&] {
        EVP_DecodeBlock(reinterpret_cast<unsigned char*>(out.data()), reinterpret_cast<const unsigned char*>(in.data()),
                        static_cast<int>(in.size()));
    });
    if (out.substr(0, kSize) != randomBytes()) state.SkipWithError("they differ");
}

/// Each round writes `in` through a new `Buffer` on the memory and flushes it.
template <class Buffer>
void throughStream(benchmark::State& state, const std::string& in, int width = 0) {
    MemoryTarget memory(4 * kSize);
    std::ostream target(&memory);
    target.width(width);
    run(state, [&] {
        memory.restart();
        Buffer buffer(target);
        if (buffer.sputn(in.data(), std::ssize(in)) != std::ssize(in) || buffer.pubsync() != 0)
            state.SkipWithError("write failed");
    });
}

template <class Buffer>
struct OnTarget : Buffer {
    explicit OnTarget(std::ostream& target) : Buffer(target.rdbuf()) {}
};
using QuotedPrintableEncoder = OnTarget<Varnex::quotedprintableencodebuf>;
using QuotedPrintableDecoder = OnTarget<Varnex::quotedprintabledecodebuf>;

/// What such encoders look like when the standard library hands them one byte at a time.
class ByteByByte : public std::streambuf {
public:
    ByteByByte(std::ostream& target, char lead) : target_(*target.rdbuf()), lead_(lead) {}

protected:
    virtual bool isPlain(int c) const = 0;
    int_type overflow(int_type c) override {
        if (lead_ == '=' && c == '\n') return target_.sputc('\r'), target_.sputc('\n');
        if (isPlain(c)) return target_.sputc(static_cast<char>(c));
        target_.sputc(lead_);
        target_.sputc("0123456789ABCDEF"[c >> 4]);
        return target_.sputc("0123456789ABCDEF"[c & 15]);
    }

private:
    std::streambuf& target_;
    char lead_;
};

struct QuotedPrintableByByte : ByteByByte {
    explicit QuotedPrintableByByte(std::ostream& target) : ByteByByte(target, '=') {}
    bool isPlain(int c) const override { return (c >= 33 && c <= 126 && c != '=') || c == ' ' || c == '\t'; }
};

struct UrlByByte : ByteByByte {
    explicit UrlByByte(std::ostream& target) : ByteByByte(target, '%') {}
    bool isPlain(int c) const override {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
               (c != 0 && std::strchr("-_.!~* ()", c) != nullptr);
    }
};

std::string quotedPrintable(const std::string& text) {
    MemoryTarget memory(4 * kSize);
    Varnex::quotedprintableencodebuf(&memory).sputn(text.data(), std::ssize(text));
    return memory.written();
}

template <class... Arguments>
void add(const char* name, Arguments... arguments) {
    benchmark::RegisterBenchmark(name, arguments...)->MinTime(0.1)->Repetitions(9)->ReportAggregatesOnly();
}

}  // namespace

int main(int count, char** arguments) {
    using Varnex::Base64Mode;
    const std::string bytes = randomBytes(), text = someText();
    add("base64 encode", base64Encode);
    add("base64 encode, OpenSSL", base64EncodeOpenSSL);
    add("base64 encode, stream", throughStream<Varnex::base64encodebuf>, bytes, 0);
    add("base64 encode, stream, lines of 76", throughStream<Varnex::base64encodebuf>, bytes, 76);
    add("base64 decode", base64Decode, Base64Mode::Strict);
    add("base64 decode, skipping", base64Decode, Base64Mode::Skip);
    add("base64 decode, OpenSSL", base64DecodeOpenSSL);
    add("base64 decode, stream", throughStream<Varnex::base64decodebuf>, encodedText(), 0);
    add("quoted-printable encode", throughStream<QuotedPrintableEncoder>, text, 0);
    add("quoted-printable encode, byte by byte", throughStream<QuotedPrintableByByte>, text, 0);
    add("quoted-printable encode of any bytes", throughStream<QuotedPrintableEncoder>, bytes, 0);
    add("quoted-printable encode of any bytes, byte by byte", throughStream<QuotedPrintableByByte>, bytes, 0);
    add("quoted-printable decode", throughStream<QuotedPrintableDecoder>, quotedPrintable(text), 0);
    add("urlbuf encode", throughStream<Varnex::urlbuf>, text, 0);
    add("urlbuf encode, byte by byte", throughStream<UrlByByte>, text, 0);
    add("urlbuf encode of any bytes", throughStream<Varnex::urlbuf>, bytes, 0);
    add("urlbuf encode of any bytes, byte by byte", throughStream<UrlByByte>, bytes, 0);
    benchmark::Initialize(&count, arguments);
    benchmark::RunSpecifiedBenchmarks();
}
