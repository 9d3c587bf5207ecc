#include <Varnex/url/storebuf.h>

#include <Varnex/url/Quietly.h>

#include <algorithm>
#include <utility>

namespace Varnex {

namespace {

using Traits = std::streambuf::traits_type;

const std::streambuf::pos_type kNowhere(std::streambuf::off_type(-1));

bool isEof(std::streambuf::int_type c) {
    return Traits::eq_int_type(c, Traits::eof());
}

/// Moves a source; whether that worked.
bool seek(std::streambuf& source, std::streamoff offset, std::ios_base::seekdir from) {
    return quietly([&] { return source.pubseekoff(offset, from, std::ios_base::in); }, kNowhere) != kNowhere;
}

}  // namespace

storebuf::storebuf(std::unique_ptr<std::istream> source, unsigned long offset, unsigned long length)
    : source_(std::move(source)), offset_(offset), length_(length) {
    static_cast<void>(seek(sourceBuffer(), static_cast<std::streamoff>(offset), std::ios_base::beg));
}

storebuf::~storebuf() = default;

std::streambuf& storebuf::sourceBuffer() const {
    return *source_->rdbuf();
}

storebuf::int_type storebuf::underflow() {
    if (gptr() < egptr()) return Traits::to_int_type(*gptr());
    if (consumed_ >= length_) return Traits::eof();
    const int_type c = quietly([&] { return sourceBuffer().sbumpc(); }, Traits::eof());
    if (isEof(c)) return c;
    oneByte_ = Traits::to_char_type(c);
    ++consumed_;
    setg(&oneByte_, &oneByte_, &oneByte_ + 1);
    return c;
}

std::streamsize storebuf::xsgetn(char* s, std::streamsize n) {
    if (n <= 0) return 0;
    std::streamsize total = 0;
    if (unread() > 0) {
        s[total++] = *gptr();
        gbump(1);
    }
    const auto wanted = std::min(static_cast<unsigned long>(n - total), length_ - consumed_);
    if (wanted == 0) return total;
    const auto room = static_cast<std::streamsize>(wanted);
    const std::streamsize got = quietly([&] { return sourceBuffer().sgetn(s + total, room); }, std::streamsize{0});
    if (got > 0) clearGetArea();  // what it holds is no longer the byte before
    consumed_ += static_cast<unsigned long>(got);
    return total + got;
}

std::streamsize storebuf::showmanyc() {
    const auto left = static_cast<std::streamsize>(std::min(length_ - consumed_, 1UL << 62));
    const std::streamsize ready = quietly([&] { return sourceBuffer().in_avail(); }, std::streamsize{0});
    return static_cast<std::streamsize>(unread()) + std::max<std::streamsize>(std::min(ready, left), 0);
}

/// Makes the source stand where the reader of this buffer does.
bool storebuf::returnUnread() {
    if (!seek(sourceBuffer(), -static_cast<std::streamoff>(unread()), std::ios_base::cur)) return false;
    consumed_ -= unread();
    clearGetArea();
    return true;
}

storebuf::int_type storebuf::pbackfail(int_type c) {
    if (gptr() > eback() && (isEof(c) || Traits::eq_int_type(c, Traits::to_int_type(gptr()[-1])))) {
        gbump(-1);
        return Traits::to_int_type(*gptr());
    }
    if (consumed_ == unread() || !returnUnread()) return Traits::eof();
    std::streambuf& source = sourceBuffer();
    const auto putBack = [&] { return isEof(c) ? source.sungetc() : source.sputbackc(Traits::to_char_type(c)); };
    const int_type result = quietly(putBack, Traits::eof());
    if (!isEof(result)) --consumed_;
    return result;
}

storebuf::pos_type storebuf::seekoff(off_type offset, std::ios_base::seekdir from, std::ios_base::openmode which) {
    unsigned long start = 0;
    if (from == std::ios_base::cur) start = consumed_ - unread();
    if (from == std::ios_base::end) start = length_;
    const auto target = start + static_cast<unsigned long>(offset);  // wraps when it is before the stretch
    const bool isBack = offset < 0;
    if ((which & std::ios_base::in) == 0 || (isBack ? target > start : target < start) || target > length_)
        return kNowhere;
    if (from == std::ios_base::cur && offset == 0) return pos_type(static_cast<off_type>(target));
    if (offset_ + target < offset_) return kNowhere;  // the length was "to the end"
    if (!seek(sourceBuffer(), static_cast<std::streamoff>(offset_ + target), std::ios_base::beg)) return kNowhere;
    clearGetArea();
    consumed_ = target;
    return pos_type(static_cast<off_type>(target));
}

storebuf::pos_type storebuf::seekpos(pos_type position, std::ios_base::openmode which) {
    return seekoff(off_type(position), std::ios_base::beg, which);
}

}  // namespace Varnex
