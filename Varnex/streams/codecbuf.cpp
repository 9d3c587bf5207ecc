#include <Varnex/streams/codecbuf.h>

#include <algorithm>
#include <cstring>
#include <istream>
#include <limits>
#include <ostream>

namespace Varnex {

codecbuf::codecbuf(std::ostream* target, std::istream* source) : target_(target), source_(source) {}

codecbuf::~codecbuf() = default;

bool codecbuf::isTargetGood() const {
    return target_ != nullptr && target_->good();
}

std::streamsize codecbuf::readSource(char* s, std::streamsize n) {
    return source_->good() ? std::clamp<std::streamsize>(source_->rdbuf()->sgetn(s, n), 0, n) : 0;
}

codecbuf::int_type codecbuf::readSource() {
    return source_->good() ? source_->rdbuf()->sbumpc() : traits_type::eof();
}

codecbuf::int_type codecbuf::peekSource() {
    return source_->good() ? source_->rdbuf()->sgetc() : traits_type::eof();
}

std::streamsize codecbuf::readyInSource() {
    return source_->good() ? source_->rdbuf()->in_avail() : 0;
}

/// A step that throws also gives the target its badbit, quietly: the exception on its way says more.
template <class Step>
auto codecbuf::orFailTarget(Step step) {
    try {
        return step();
    } catch (...) {
        try {
            target_->setstate(std::ios_base::badbit);
        } catch (...) {
        }
        throw;
    }
}

std::streamsize codecbuf::convert(const char* s, std::streamsize n) {
    return orFailTarget([&] { return convertWritten(s, n); });
}

bool codecbuf::finish() {
    return orFailTarget([&] { return finishWritten(); });
}

void codecbuf::flushQuietly() noexcept {
    try {
        pubsync();
    } catch (...) {  // the target has its badbit
    }
}

void codecbuf::makeBuffer() {
    if (buffer_ != nullptr) return;
    ownBuffer_ = std::make_unique_for_overwrite<char[]>(kBufferSize);
    buffer_ = ownBuffer_.get();
    bufferEnd_ = buffer_ + kBufferSize;
}

void codecbuf::clearAreas() {
    setg(nullptr, nullptr, nullptr);
    setp(nullptr, nullptr);
}

// The last byte is kept for the character that `overflow` is given.
void codecbuf::openPutArea() {
    setp(buffer_, bufferEnd_ - 1);
}

bool codecbuf::prepareToWrite() {
    if (target_ == nullptr) return false;
    makeBuffer();
    if (gptr() < egptr()) return false;  // the array still holds input
    setg(nullptr, nullptr, nullptr);
    if (pptr() == nullptr) openPutArea();
    return true;
}

bool codecbuf::convertPending() {
    const std::streamsize pending = pptr() - pbase();
    const char* const begin = pbase();
    clearAreas();  // also when what follows fails or throws
    if (pending > 0 && convert(begin, pending) < pending) return false;
    openPutArea();
    return true;
}

codecbuf::int_type codecbuf::overflow(int_type c) {
    if (!prepareToWrite()) return traits_type::eof();
    const bool atEnd = traits_type::eq_int_type(c, traits_type::eof());
    if (!atEnd) {
        *pptr() = traits_type::to_char_type(c);
        pbump(1);
    }
    if (!convertPending() || (atEnd && !finish())) return traits_type::eof();
    return traits_type::not_eof(c);
}

int codecbuf::sync() {
    const bool hasInput = gptr() < egptr();
    return hasInput || traits_type::eq_int_type(overflow(traits_type::eof()), traits_type::eof()) ? -1 : 0;
}

std::streamsize codecbuf::xsputn(const char* s, std::streamsize n) {
    if (n <= 0 || !prepareToWrite()) return 0;
    if (n >= epptr() - pptr()) return convertPending() ? convert(s, n) : 0;
    std::memcpy(pptr(), s, static_cast<std::size_t>(n));
    pbump(static_cast<int>(n));
    return n;
}

codecbuf::int_type codecbuf::underflow() {
    if (source_ == nullptr) return traits_type::eof();
    if (gptr() < egptr()) return traits_type::to_int_type(*gptr());
    const bool wrote = pptr() != nullptr;  // the text may be open, even with nothing pending
    if (wrote && traits_type::eq_int_type(overflow(traits_type::eof()), traits_type::eof())) return traits_type::eof();
    makeBuffer();
    clearAreas();
    const std::streamsize n = convertRead(buffer_, bufferEnd_ - buffer_);
    if (n <= 0) return traits_type::eof();
    setg(buffer_, buffer_, buffer_ + n);
    return traits_type::to_int_type(*gptr());
}

std::streambuf* codecbuf::setbuf(char* s, std::streamsize n) {
    if (buffer_ != nullptr) return nullptr;
    const bool usable = s != nullptr && n >= 2;
    buffer_ = usable ? s : &slot_;
    bufferEnd_ = usable ? s + std::min<std::streamsize>(n, std::numeric_limits<int>::max()) : &slot_ + 1;
    clearAreas();
    return this;
}

}  // namespace Varnex
