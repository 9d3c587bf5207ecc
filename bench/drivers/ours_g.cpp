// Reading a file of 100 MiB through its URL, as a stream in blocks of 64 KiB and, `ours-mem`, at once; `read2-mem` and
// `read2-reused` are read(2) into one block of memory, a new one and always the same. Inflating 20 MiB of text in
// blocks of 64 KiB; `zlib-1k` is zlib over input in the pieces of 1 KiB that the stream buffer reads.
#include "bench.hpp"

#include <Varnex/url/URL.h>
#include <Varnex/url/URLMemory.h>
#include <Varnex/url/URLStream.h>
#include <Varnex/url/inflatebuf.h>
#include <bench/DeflatedText.h>

#include <cstdlib>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

namespace {

using Varnex::URL;
using Varnex::URLImpl;

constexpr std::size_t kFile = 100U << 20, kBlock = 65536;

template <class Function>
void rate(const char* peer, const char* metric, std::size_t bytes, Function function) {
    std::vector<double> times;
    function();
    for (int i = 0; i < 5; ++i) {
        const double start = bench::now();
        function();
        times.push_back(bench::now() - start);
    }
    bench::emit("G", peer, metric, static_cast<double>(bytes) / bench::median(times) / 1e9, "GB/s");
}

std::size_t readInBlocks(std::istream& stream, char* block) {
    std::size_t total = 0;
    while (stream.read(block, kBlock) || stream.gcount() > 0) total += static_cast<std::size_t>(stream.gcount());
    return total;
}

void files(const std::string& path, char* block) {
    const URL url = URL::resolve({}, path);
    rate("ours", "read_100MiB", kFile, [&] {
        const std::unique_ptr<URLImpl::Stream> stream(url->open());
        bench::check(readInBlocks(*stream, block) == kFile, "the size through the stream");
    });
    rate("ours-mem", "read_100MiB", kFile,
         [&] { bench::check(url->read2mem().getSize() == kFile, "the size in memory"); });
    const auto readInto = [&](char* memory) {
        const int fd = ::open(path.c_str(), O_RDONLY);
        bench::check(::read(fd, memory, kFile) == kFile, "read(2)");
        ::close(fd);
    };
    using Memory = std::unique_ptr<char, decltype(&std::free)>;
    rate("read2-mem", "read_100MiB", kFile,
         [&] { readInto(Memory(static_cast<char*>(std::malloc(kFile)), &std::free).get()); });
    const Memory reused(static_cast<char*>(std::malloc(kFile)), &std::free);
    rate("read2-reused", "read_100MiB", kFile, [&] { readInto(reused.get()); });
}

void inflateInPieces(const DeflatedText& text, char* block) {
    z_stream stream{};
    bench::check(inflateInit2(&stream, -15) == Z_OK, "inflateInit2");
    std::size_t at = 0, total = 0;
    for (int status = Z_OK; status != Z_STREAM_END;) {
        stream.next_out = reinterpret_cast<Bytef*>(block);
        stream.avail_out = kBlock;
        while (stream.avail_out > 0 && status == Z_OK) {
            if (stream.avail_in == 0) {
                stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.coded.data())) + at;
                stream.avail_in = static_cast<uInt>(std::min<std::size_t>(1024, text.coded.size() - at));
                at += stream.avail_in;
            }
            status = ::inflate(&stream, Z_NO_FLUSH);
        }
        total += kBlock - stream.avail_out;
    }
    ::inflateEnd(&stream);
    bench::check(total == text.text.size(), "what zlib inflated");
}

void inflating(char* block) {
    const DeflatedText text;
    rate("ours", "inflate_20MiB", text.text.size(), [&] {
        Varnex::inflatebuf buffer(std::make_unique<std::istringstream>(text.coded));
        std::istream stream(&buffer);
        bench::check(readInBlocks(stream, block) == text.text.size(), "what was inflated");
    });
    rate("zlib-1k", "inflate_20MiB", text.text.size(), [&] { inflateInPieces(text, block); });
}

}  // namespace

int main(int argc, char** argv) {
    const bench::Args args{argc, argv};
    bench::guard(120);
    const std::unique_ptr<char[]> block(new char[kBlock]);
    files(args.get("dir", "/tmp/peer_bench") + "/random100m.bin", block.get());
    inflating(block.get());
}
