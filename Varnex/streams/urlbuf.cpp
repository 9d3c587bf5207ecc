#include <Varnex/streams/urlbuf.h>

#include <Varnex/streams/CodedOutput.h>
#include <Varnex/streams/Hex.h>

#include <istream>
#include <ostream>
#include <utility>

namespace Varnex {

namespace {

constexpr std::string_view kPlain =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789"
    "-_.!~* ()";  // a space stays a space here: "+" is not its code

bool contains(std::string_view set, unsigned char c) {
    return set.find(static_cast<char>(c)) != std::string_view::npos;
}

}  // namespace

struct urlbuf::Table {
    Table(std::string_view alwaysEncoded, std::string_view allowed) {
        for (unsigned i = 0; i < codes.size(); ++i) {
            const auto c = static_cast<unsigned char>(i);
            codes[i] = codedByte(c, !contains(alwaysEncoded, c) && (contains(kPlain, c) || contains(allowed, c)), '%');
        }
    }

    CodeTable codes;
};

urlbuf::urlbuf(std::ostream* target, std::istream* source, std::string_view alwaysEncoded, std::string_view allowed)
    : codecbuf(target, source),
      table_(target == nullptr ? nullptr : std::make_unique<Table>(alwaysEncoded, allowed)),
      next_(traits_type::eof()) {}

urlbuf::urlbuf(std::ostream& target, std::string_view alwaysEncoded, std::string_view allowed)
    : urlbuf(&target, nullptr, alwaysEncoded, allowed) {}

urlbuf::urlbuf(std::istream& source) : urlbuf(nullptr, &source, "", "") {}

urlbuf::urlbuf(std::iostream& stream, std::string_view alwaysEncoded, std::string_view allowed)
    : urlbuf(&stream, &stream, alwaysEncoded, allowed) {}

urlbuf::~urlbuf() = default;

std::streamsize urlbuf::encode(const char* s, std::streamsize n) {
    const std::span bytes(s, static_cast<std::size_t>(n));
    return putInSlices(*target(), bytes, [this](CodedOutput& out, auto slice) { putCoded(out, slice, table_->codes); });
}

std::streamsize urlbuf::decode(char* s, std::streamsize n) {
    std::streamsize total = 0;
    for (; total < n; ++total) {
        if (total > 0 && readyInSource() <= 0 && traits_type::eq_int_type(next_, traits_type::eof())) break;
        const int_type c = decodeByte();
        if (traits_type::eq_int_type(c, traits_type::eof())) break;
        s[total] = traits_type::to_char_type(c);
    }
    return total;
}

urlbuf::int_type urlbuf::decodeByte() {
    if (!traits_type::eq_int_type(next_, traits_type::eof())) return std::exchange(next_, traits_type::eof());
    const int_type c = readSource();
    if (c != '%' || hexValue(peekSource()) < 0) return c;
    const int_type first = readSource();
    const int second = hexValue(peekSource());
    if (second >= 0) {
        readSource();
        return hexValue(first) << 4 | second;
    }
    next_ = first;
    return c;
}

}  // namespace Varnex
