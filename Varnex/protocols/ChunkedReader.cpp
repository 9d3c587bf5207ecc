#include <Varnex/protocols/ChunkedReader.h>

#include <Varnex/streams/Hex.h>

#include <algorithm>
#include <cstring>
#include <istream>
#include <utility>

namespace Varnex {

namespace {

using Traits = std::streambuf::traits_type;

constexpr std::uint32_t kSizeWithoutRoom = 0x10000000;  // for one more digit

bool isOver(std::uint64_t count, std::uint64_t limit) {
    return limit > 0 && count > limit;
}

/// What may stand in extensions, quoted strings and all.
bool isText(int c) {
    return (c >= ' ' && c != 0x7F) || c == '\t';
}

/// Passes lines on as long as they end in CR LF and none begins with a blank; what is not so is the end.
class StrictLines : public std::streambuf {
public:
    explicit StrictLines(std::streambuf& source) : source_(source) {}

protected:
    int_type underflow() override {
        const int_type next = source_.sgetc();
        const bool isPaired = (previous_ == '\r') == (next == '\n');
        const bool isContinuation = previous_ == '\n' && (next == ' ' || next == '\t');
        return isPaired && !isContinuation && next != '\0' ? next : Traits::eof();
    }
    int_type uflow() override {
        const int_type next = underflow();
        if (next != Traits::eof()) previous_ = source_.sbumpc();
        return next;
    }

private:
    std::streambuf& source_;
    int_type previous_ = '\n';
};

}  // namespace

ChunkedReader::ChunkedReader(std::istream& source)
    : source_(source.rdbuf()), buffer_(std::make_unique_for_overwrite<char[]>(kBufferSize)) {}

ChunkedReader::~ChunkedReader() = default;

ChunkedReader::int_type ChunkedReader::underflow() {
    if (gptr() < egptr()) return Traits::to_int_type(*gptr());
    if (!openChunk()) return Traits::eof();
    // A live source may send no more until it is answered, so nothing is waited for but the first byte.
    source_->sgetc();
    const std::streamsize ready = std::clamp<std::streamsize>(source_->in_avail(), 1, kBufferSize);
    const std::streamsize n = receive(buffer_.get(), ready);
    setg(buffer_.get(), buffer_.get(), buffer_.get() + n);
    return Traits::to_int_type(*gptr());
}

std::streamsize ChunkedReader::xsgetn(char* s, std::streamsize n) {
    std::streamsize total = std::clamp<std::streamsize>(n, 0, egptr() - gptr());
    if (total > 0) std::memcpy(s, gptr(), static_cast<std::size_t>(total));
    gbump(static_cast<int>(total));
    if (total >= n) return total;
    setg(nullptr, nullptr, nullptr);  // what it holds is no longer what comes before
    while (total < n && openChunk()) total += receive(s + total, n - total);
    return total;
}

/// Goes on to the next bytes of the body; false: there are none.
bool ChunkedReader::openChunk() {
    if (state_ == State::Data) return true;
    if (state_ == State::Complete) return false;
    const State before = std::exchange(state_, State::Damaged);  // until it is known to be good
    const bool isGood = source_ != nullptr && before != State::Damaged && (before != State::DataEnd || readLineEnd()) &&
                        readSizeLine() && (remaining_ > 0 || readTrailer());
    if (!isGood) throw std::ios_base::failure("Malformed or incomplete chunked body.");
    state_ = remaining_ > 0 ? State::Data : State::Complete;
    return remaining_ > 0;
}

/// At most `n` bytes of the chunk.
std::streamsize ChunkedReader::receive(char* s, std::streamsize n) {
    state_ = State::Damaged;
    const std::streamsize received = source_->sgetn(s, std::min<std::streamsize>(n, remaining_));
    if (received <= 0) throw std::ios_base::failure("Incomplete chunk.");
    remaining_ -= static_cast<std::uint32_t>(received);
    state_ = remaining_ > 0 ? State::Data : State::DataEnd;
    return received;
}

/// chunk-size [ chunk-ext ] CRLF
bool ChunkedReader::readSizeLine() {
    std::uint64_t length = 0;
    const auto take = [&] {
        source_->sbumpc();
        return !isOver(++length, maxSizeLine_);
    };
    const auto takeSkipped = [&] { return take() && !isOver(++overhead_, maxOverhead_); };
    remaining_ = 0;
    int next = source_->sgetc();
    for (; hexValue(next) >= 0; next = source_->sgetc()) {
        const bool isCounted = remaining_ > 0 || next != '0';
        if (remaining_ >= kSizeWithoutRoom || !(isCounted ? take() : takeSkipped())) return false;
        remaining_ = remaining_ << 4 | static_cast<std::uint32_t>(hexValue(next));
    }
    if (length == 0 || (next != ';' && next != ' ' && next != '\t' && next != '\r')) return false;
    for (; isText(next); next = source_->sgetc())
        if (!takeSkipped()) return false;
    body_ += remaining_;
    return readLineEnd() && !isOver(body_, maxBody_);
}

bool ChunkedReader::readLineEnd() {
    return source_->sbumpc() == '\r' && source_->sbumpc() == '\n';
}

/// trailer-section CRLF
bool ChunkedReader::readTrailer() {
    StrictLines strict(*source_);
    std::istream lines(&strict);
    lines >> trailer_;
    if (!lines.good()) trailer_.clear();  // the end of a header may be the stream's end, but not that of a trailer
    return lines.good();
}

}  // namespace Varnex
