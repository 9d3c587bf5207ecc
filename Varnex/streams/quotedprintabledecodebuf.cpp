#include <Varnex/streams/quotedprintabledecodebuf.h>

#include <Varnex/streams/CodedOutput.h>
#include <Varnex/streams/Hex.h>

#include <algorithm>

namespace Varnex {

quotedprintabledecodebuf::quotedprintabledecodebuf(std::streambuf* target, bool headerMode)
    : target_(target), headerMode_(headerMode) {}

quotedprintabledecodebuf::~quotedprintabledecodebuf() = default;

quotedprintabledecodebuf::int_type quotedprintabledecodebuf::overflow(int_type c) {
    if (traits_type::eq_int_type(c, traits_type::eof())) return 0;
    const char byte = traits_type::to_char_type(c);
    return xsputn(&byte, 1) == 1 ? traits_type::to_int_type(byte) : traits_type::eof();
}

std::streamsize quotedprintabledecodebuf::xsputn(const char* s, std::streamsize n) {
    if (n <= 0) return 0;
    return putInSlices(target_, {s, static_cast<std::size_t>(n)}, [this](CodedOutput& out, auto slice) {
        decodeSlice(out, {slice.data(), slice.size()});
    });
}

int quotedprintabledecodebuf::sync() {
    return target_ == nullptr ? -1 : target_->pubsync();
}

void quotedprintabledecodebuf::decodeSlice(CodedOutput& out, std::string_view text) {
    while (!text.empty()) {
        if (escape_.empty()) {
            text.remove_prefix(decodeWhole(out, text));
            if (text.empty()) break;
            escape_ = '=';
            text.remove_prefix(1);
        } else if (decodeEscape(out, text.front())) {
            text.remove_prefix(1);
        }
    }
}

/// Everything before the first "=" that is not followed by two digits; how many characters.
std::size_t quotedprintabledecodebuf::decodeWhole(CodedOutput& out, std::string_view text) {
    char* const begin = out.reserve(text.size());
    char* next = begin;
    std::size_t done = 0;
    while (true) {
        const std::size_t run = std::min(text.find('=', done), text.size());
        next = decodeRun(next, text.substr(done, run - done));
        done = run;
        const int value = text.size() - done < 3 ? -1 : hexPair(text[done + 1], text[done + 2]);
        if (value < 0) break;
        *next++ = static_cast<char>(value);
        done += 3;
    }
    out.commit(static_cast<std::size_t>(next - begin));
    return done;
}

char* quotedprintabledecodebuf::decodeRun(char* out, std::string_view run) const {
    if (headerMode_) return std::ranges::replace_copy(run, out, '_', ' ').out;
    return std::ranges::copy(run, out).out;
}

/// Goes on with what follows a "="; false when `c` does not belong to it.
bool quotedprintabledecodebuf::decodeEscape(CodedOutput& out, char c) {
    if (c == '\n' && hexValue(escape_.back()) < 0) {
        escape_.clear();
        return true;
    }
    if (const int value = escape_.size() == 2 ? hexPair(escape_[1], c) : -1; value >= 0) {
        out.put(static_cast<char>(value));
        escape_.clear();
        return true;
    }
    if (mayGrow(c)) {
        escape_ += c;
        return true;
    }
    out.put(escape_);
    escape_.clear();
    return false;
}

/// Whether "=" can still become an escape or a soft line break after `c`: a first digit, or white space, or the
/// carriage return behind that.
bool quotedprintabledecodebuf::mayGrow(char c) const {
    const char last = escape_.back();
    if (last == '\r' || hexValue(last) >= 0) return false;
    if (c == ' ' || c == '\t') return maxPadding_ == 0 || escape_.size() <= maxPadding_;
    return c == '\r' || (last == '=' && hexValue(c) >= 0);
}

}  // namespace Varnex
