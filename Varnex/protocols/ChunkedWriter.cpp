#include <Varnex/protocols/ChunkedWriter.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <limits>
#include <ostream>

namespace Varnex {

namespace {

constexpr int kMaxChunk = std::numeric_limits<int>::max();
constexpr int kMaxSizeLine = 10;  // 8 digits and CR LF

/// The line before a chunk, whatever number format the target has; it ends at `end`.
char* putSizeLine(char* end, std::streamsize n) {
    char digits[16];
    const auto size = std::to_chars(std::begin(digits), std::end(digits), n, 16).ptr - digits;
    std::memcpy(end - 2, "\r\n", 2);
    return static_cast<char*>(std::memcpy(end - 2 - size, digits, static_cast<std::size_t>(size)));
}

}  // namespace

ChunkedWriter::ChunkedWriter(std::ostream& target, int bufferSize)
    : target_(target),
      size_(std::max(bufferSize, 1)),
      buffer_(std::make_unique_for_overwrite<char[]>(static_cast<std::size_t>(size_) + kMaxSizeLine + 2)) {
    openPutArea();
}

ChunkedWriter::~ChunkedWriter() = default;

bool ChunkedWriter::finish(const MessageHeader& trailer) {
    if (!sendPending()) return false;
    return writeAs(State::Finished, [&] { target_.write("0\r\n", 3) << trailer << std::flush; });
}

ChunkedWriter::int_type ChunkedWriter::overflow(int_type c) {
    if (!sendPending()) return traits_type::eof();
    if (!traits_type::eq_int_type(c, traits_type::eof())) sputc(traits_type::to_char_type(c));
    return traits_type::not_eof(c);
}

int ChunkedWriter::sync() {
    if (state_ == State::Finished) return 0;
    return sendPending() && writeAs(State::Open, [&] { target_.flush(); }) ? 0 : -1;
}

std::streamsize ChunkedWriter::xsputn(const char* s, std::streamsize n) {
    if (n <= 0) return 0;
    if (n > epptr() - pptr()) {
        if (!sendPending()) return 0;
        if (n > size_) return sendBlock(s, n) ? n : 0;
    }
    std::memcpy(pptr(), s, static_cast<std::size_t>(n));
    pbump(static_cast<int>(n));
    return n;
}

/// Empties the put area into a chunk, unless there is nothing; false: the body is not open any more.
bool ChunkedWriter::sendPending() {
    const std::streamsize n = pptr() - pbase();
    if (state_ != State::Open || n == 0) return state_ == State::Open;
    char* const begin = putSizeLine(pbase(), n);
    std::memcpy(pptr(), "\r\n", 2);
    return writeAs(State::Open, [&, size = pptr() + 2 - begin] { target_.write(begin, size); });
}

/// Nothing is pending.
bool ChunkedWriter::sendBlock(const char* s, std::streamsize n) {
    for (std::streamsize piece = 0; n > 0; s += piece, n -= piece) {
        piece = std::min<std::streamsize>(n, kMaxChunk);
        char line[kMaxSizeLine];
        const char* const begin = putSizeLine(std::end(line), piece);
        const auto write = [&] { target_.write(begin, std::end(line) - begin).write(s, piece).write("\r\n", 2); };
        if (!writeAs(State::Open, write)) return false;
    }
    return true;
}

void ChunkedWriter::openPutArea() {
    char* const begin = buffer_.get() + kMaxSizeLine;
    setp(begin, begin + size_);
}

/// What the target refuses, or throws at, leaves the coding broken for good; nothing is pending then.
template <class Write>
bool ChunkedWriter::writeAs(State after, Write write) {
    state_ = State::Failed;
    setp(nullptr, nullptr);
    if (!target_.good()) return false;
    write();
    if (!target_.good()) return false;
    state_ = after;
    if (state_ == State::Open) openPutArea();
    return true;
}

}  // namespace Varnex
