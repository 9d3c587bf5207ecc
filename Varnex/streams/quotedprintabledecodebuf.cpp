#include <Varnex/streams/quotedprintabledecodebuf.h>

#include <Varnex/streams/CodedOutput.h>
#include <Varnex/streams/Hex.h>

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
            const std::size_t run = std::min(text.find('='), text.size());
            decodeRun(out, text.substr(0, run));
            if (run < text.size()) escape_ = '=';
            text.remove_prefix(std::min(run + 1, text.size()));
        } else if (decodeEscape(out, text.front())) {
            text.remove_prefix(1);
        }
    }
}

void quotedprintabledecodebuf::decodeRun(CodedOutput& out, std::string_view run) {
    char* const begin = out.reserve(run.size());
    if (headerMode_)
        std::ranges::replace_copy(run, begin, '_', ' ');
    else
        std::ranges::copy(run, begin);
    out.commit(run.size());
}

/// Goes on with what follows a "="; false when `c` does not belong to it.
bool quotedprintabledecodebuf::decodeEscape(CodedOutput& out, char c) {
    if (c == '\n' && hexValue(escape_.back()) < 0) {
        escape_.clear();
        return true;
    }
    if (escape_.size() == 2 && hexValue(escape_[1]) >= 0 && hexValue(c) >= 0) {
        out.put(static_cast<char>(hexValue(escape_[1]) << 4 | hexValue(c)));
        escape_.clear();
        return true;
    }
    if (mayGrow(c)) {
        escape_ += c;
        return true;
    }
    decodeRun(out, escape_);
    escape_.clear();
    return false;
}

/// Whether "=" can still become an escape or a soft line break after `c`: a first digit, or white space, or the
/// carriage return behind that.
bool quotedprintabledecodebuf::mayGrow(char c) const {
    const char last = escape_.back();
    if (last == '\r' || hexValue(last) >= 0) return false;
    if (c == ' ' || c == '\t') return escape_.size() <= kMaxPadding;
    return c == '\r' || (last == '=' && hexValue(c) >= 0);
}

}  // namespace Varnex
