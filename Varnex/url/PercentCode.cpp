#include <Varnex/url/PercentCode.h>

#include <Varnex/streams/Hex.h>

#include <algorithm>
#include <utility>

namespace Varnex {

namespace {

/// One pass over a text that shrinks on the way: what is decoded moves to the front.
class Decoding {
public:
    explicit Decoding(std::string& text) : text_(text) {}

    /// Moves what stands before the next "%"; false: there is none.
    bool skipToEscape() {
        const std::size_t next = std::min(text_.find('%', read_), text_.size());
        move(next - read_);
        return next < text_.size();
    }

    /// The byte that the "%" here stands for; -1: none.
    [[nodiscard]] int escapedByte() const { return hexPair(digit(1), digit(2)); }
    [[nodiscard]] bool isEscapeCut() const { return text_.size() - read_ < 3; }
    [[nodiscard]] std::size_t position() const { return written_; }

    void move(std::size_t n) {
        if (read_ != written_) std::copy_n(text_.begin() + offset(read_), n, text_.begin() + offset(written_));
        read_ += n;
        written_ += n;
    }

    void replaceEscape(int byte) {
        text_[written_++] = static_cast<char>(byte);
        read_ += 3;
    }

    void finish() {
        move(text_.size() - read_);
        text_.resize(written_);
    }

private:
    static std::ptrdiff_t offset(std::size_t position) { return static_cast<std::ptrdiff_t>(position); }
    [[nodiscard]] int digit(std::size_t i) const { return static_cast<unsigned char>(text_[read_ + i]); }

    std::string& text_;
    std::size_t read_ = 0;
    std::size_t written_ = 0;
};

}  // namespace

void percentEncode(std::string& text, const CharacterSet& plain) {
    constexpr char kDigits[] = "0123456789abcdef";
    const auto coded = std::count_if(text.begin(), text.end(), [&](char c) { return !plain.contains(c); });
    if (coded == 0) return;
    std::string result;
    result.reserve(text.size() + 2 * static_cast<std::size_t>(coded));
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (plain.contains(c))
            result += c;
        else
            result.append({'%', kDigits[byte >> 4], kDigits[byte & 0x0F]});
    }
    text = std::move(result);
}

std::size_t percentDecode(std::string& text, const CharacterSet& keep, std::size_t end) {
    end = std::min(end, text.size());
    Decoding decoding(text);
    std::size_t stop = std::string::npos;
    while (stop == std::string::npos && decoding.skipToEscape()) {
        if (decoding.position() >= end || decoding.isEscapeCut()) {
            stop = decoding.position();
            break;
        }
        const int byte = decoding.escapedByte();
        if (byte <= 0)
            decoding.move(1);
        else if (keep.contains(static_cast<char>(byte)))
            decoding.move(3);
        else
            decoding.replaceEscape(byte);
    }
    decoding.finish();
    return stop;
}

}  // namespace Varnex
