#include <Varnex/streams/base64encodebuf.h>

#include <Varnex/streams/Base64.h>
#include <Varnex/streams/Base64Decoder.h>
#include <Varnex/streams/CodedOutput.h>

#include <algorithm>
#include <istream>
#include <ostream>
#include <utility>

namespace Varnex {

base64encodebuf::base64encodebuf(std::ostream* target, std::istream* source, std::string lineSeparator)
    : codecbuf(target, source), lineSeparator_(std::move(lineSeparator)), decoder_(std::make_unique<Base64Decoder>()) {}

base64encodebuf::base64encodebuf(std::ostream& target, std::string lineSeparator)
    : base64encodebuf(&target, nullptr, std::move(lineSeparator)) {}

base64encodebuf::base64encodebuf(std::istream& source) : base64encodebuf(nullptr, &source, "") {}

base64encodebuf::base64encodebuf(std::iostream& stream, std::string lineSeparator)
    : base64encodebuf(&stream, &stream, std::move(lineSeparator)) {}

base64encodebuf::~base64encodebuf() = default;

std::streamsize base64encodebuf::encode(const char* s, std::streamsize n) {
    const std::span bytes(s, static_cast<std::size_t>(n));
    return putInSlices(*target(), bytes, [this](CodedOutput& out, auto slice) { encodeSlice(out, slice); });
}

void base64encodebuf::encodeSlice(CodedOutput& out, std::span<const char> bytes) {
    while (!bytes.empty()) {
        std::size_t done = 3 * encodeGroups(out, bytes);
        if (done == 0) {
            encodeByte(out, static_cast<unsigned char>(bytes.front()));
            done = 1;
        }
        bytes = bytes.subspan(done);
    }
}

/// The groups of three bytes at the front that need no line break; how many.
std::size_t base64encodebuf::encodeGroups(CodedOutput& out, std::span<const char> bytes) {
    if (encodeState_ != 0) return 0;
    if (bytes.size() >= 3) breakFullLine(out);
    const std::streamsize width = target()->width();
    std::size_t groups = bytes.size() / 3;
    if (width > 0)
        groups = std::min(groups, static_cast<std::size_t>(std::max<std::streamsize>(width - column_, 0) / 4));
    encodeBase64(out.reserve(groups * 4), bytes.data(), groups * 3);
    out.commit(groups * 4);
    column_ += static_cast<std::streamsize>(groups * 4);
    return groups;
}

bool base64encodebuf::isLineFull(std::streamsize column) const {
    const std::streamsize width = target()->width();
    return width > 0 && column >= width;
}

void base64encodebuf::putCharacter(CodedOutput& out, unsigned value) {
    out.put(basis_64[value]);
    ++column_;
}

/// Between the characters of one step the break is a bare line feed, not the separator, and comes before this character
/// is counted: the format wants it so.
void base64encodebuf::putThenCheckLine(CodedOutput& out, char c) {
    out.put(c);
    if (isLineFull(column_ + 1)) {
        column_ = 0;
        out.put('\n');
    } else {
        ++column_;
    }
}

void base64encodebuf::breakFullLine(CodedOutput& out) {
    if (!isLineFull(column_)) return;
    column_ = 0;
    out.put(lineSeparator_);
}

void base64encodebuf::encodeByte(CodedOutput& out, unsigned char byte) {
    breakFullLine(out);
    if (encodeState_ == 0) putCharacter(out, byte >> 2);
    if (encodeState_ == 1) putCharacter(out, (lastByte_ << 4 & 0x30) | byte >> 4);
    if (encodeState_ == 2) {
        putThenCheckLine(out, basis_64[(lastByte_ << 2 & 0x3C) | byte >> 6]);
        putCharacter(out, byte & 0x3F);
    }
    encodeState_ = (encodeState_ + 1) % 3;
    lastByte_ = byte;
}

bool base64encodebuf::finishencode() {
    const int state = std::exchange(encodeState_, 0);
    if (!isTargetGood()) return false;
    if (state == 0) return true;  // nothing follows the last full line, not even a line end
    CodedOutput out(target()->rdbuf());
    if (isLineFull(column_)) {
        column_ = 0;
        out.put('\n');  // here too not the separator
    }
    putThenCheckLine(out, basis_64[state == 1 ? lastByte_ << 4 & 0x30 : (lastByte_ & 0x0F) << 2]);
    if (state == 1) putThenCheckLine(out, '=');
    out.put('=');
    ++column_;
    if (!out.flush()) target()->setstate(std::ios_base::badbit);
    return isTargetGood();
}

std::streamsize base64encodebuf::decode(char* s, std::streamsize n) {
    std::streamsize total = 0;
    while (total < n && !decoder_->hasEnded()) {
        // As many characters as cannot give more bytes than there is room for, read one by one, for what follows "=" is
        // not ours.
        char text[CodedOutput::kSlice];
        const auto most = std::clamp<std::streamsize>((n - total) * 4 / 3, 1, std::ssize(text));
        std::streamsize size = 0;
        for (int_type c = 0; size < most && c != '=';) {
            if (total + size > 0 && readyInSource() <= 0) break;
            c = readSource();
            if (traits_type::eq_int_type(c, traits_type::eof())) break;
            text[size++] = traits_type::to_char_type(c);
        }
        if (size == 0) break;  // the end, or the rest is not there yet
        total += static_cast<std::streamsize>(
            decoder_->decode(s + total, static_cast<std::size_t>(n - total), {text, static_cast<std::size_t>(size)}));
    }
    return total;
}

}  // namespace Varnex
