#include <Varnex/url/inflatebuf.h>

#include <Varnex/url/Quietly.h>
#include <Varnex/url/URLImpl.h>

#include <algorithm>
#include <limits>
#include <utility>

#include <zlib.h>

namespace Varnex {

namespace {

constexpr int kRawWindowBits = -15;

}  // namespace

/// Owns zlib's record, which must not move.
class inflatebuf::Inflater {
public:
    Inflater() {
        if (::inflateInit2(&stream_, kRawWindowBits) != Z_OK) throw URLImpl::Exception("Cannot initialize zlib");
    }
    Inflater(const Inflater&) = delete;
    Inflater& operator=(const Inflater&) = delete;
    ~Inflater() { ::inflateEnd(&stream_); }

    void setOutput(char* out, unsigned size) {
        stream_.next_out = reinterpret_cast<Bytef*>(out);
        stream_.avail_out = size;
    }
    void setInput(char* in, unsigned size) {
        stream_.next_in = reinterpret_cast<Bytef*>(in);
        stream_.avail_in = size;
    }
    [[nodiscard]] unsigned room() const { return stream_.avail_out; }
    [[nodiscard]] bool needsInput() const { return stream_.avail_in == 0; }
    [[nodiscard]] bool isAtEnd() const { return status_ == Z_STREAM_END; }

    /// False: the end or an error.
    bool run() {
        status_ = ::inflate(&stream_, Z_NO_FLUSH);
        return status_ == Z_OK;
    }

private:
    z_stream stream_{};
    int status_ = Z_OK;
};

inflatebuf::inflatebuf(std::unique_ptr<std::istream> source)
    : source_(std::move(source)), inflater_(std::make_unique<Inflater>()) {}

inflatebuf::~inflatebuf() = default;

unsigned inflatebuf::readInput() {
    const auto read = [this] { return source_->rdbuf()->sgetn(input_, kInputSize); };
    return static_cast<unsigned>(quietly(read, std::streamsize{0}));
}

unsigned inflatebuf::inflateInto(char* out, unsigned size) {
    inflater_->setOutput(out, size);
    while (inflater_->room() > 0 && !inflater_->isAtEnd()) {
        // At the end of the source zlib may still hold output for which there was no room before.
        if (inflater_->needsInput()) inflater_->setInput(input_, readInput());
        if (!inflater_->run()) break;
    }
    return size - inflater_->room();
}

inflatebuf::int_type inflatebuf::underflow() {
    if (gptr() < egptr()) return traits_type::to_int_type(*gptr());
    if (inflateInto(&oneByte_, 1) == 0) return traits_type::eof();
    setg(&oneByte_, &oneByte_, &oneByte_ + 1);
    return traits_type::to_int_type(oneByte_);
}

std::streamsize inflatebuf::xsgetn(char* s, std::streamsize n) {
    std::streamsize total = 0;
    if (n > 0 && gptr() < egptr()) {
        s[total++] = *gptr();
        gbump(1);
    }
    while (total < n) {
        const auto room = std::min<std::streamsize>(n - total, std::numeric_limits<int>::max());
        const unsigned got = inflateInto(s + total, static_cast<unsigned>(room));
        if (got > 0) setg(nullptr, nullptr, nullptr);  // what it holds is no longer the byte before
        total += got;
        if (got < room) break;
    }
    return total;
}

bool inflatebuf::uncompress(char* out, unsigned size) {
    const unsigned got = inflateInto(out, size);
    return got == size || (got > 0 && inflater_->isAtEnd());
}

}  // namespace Varnex
