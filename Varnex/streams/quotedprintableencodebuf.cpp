#include <Varnex/streams/quotedprintableencodebuf.h>

#include <Varnex/streams/CodedOutput.h>

namespace Varnex {

namespace {

constexpr CodeTable makeTable(bool headerMode) {
    CodeTable table{};
    for (unsigned i = 0; i < table.size(); ++i) {
        const auto c = static_cast<unsigned char>(i);
        const bool special = c == '=' || (headerMode && (c == '_' || c == '?'));
        const bool plain = (c >= 33 && c <= 126 && !special) || (!headerMode && (c == ' ' || c == '\t'));
        table[i] = codedByte(c, plain, '=');
    }
    if (headerMode) table[' '] = {{'_'}, 1};
    table['\r'].size = table['\n'].size = 0;  // what becomes of one depends on its neighbour
    return table;
}

constexpr CodeTable kBodyTable = makeTable(false);
constexpr CodeTable kHeaderTable = makeTable(true);

}  // namespace

quotedprintableencodebuf::quotedprintableencodebuf(std::streambuf* target, bool headerMode)
    : target_(target), headerMode_(headerMode) {}

quotedprintableencodebuf::~quotedprintableencodebuf() = default;

quotedprintableencodebuf::int_type quotedprintableencodebuf::overflow(int_type c) {
    if (traits_type::eq_int_type(c, traits_type::eof())) return 0;  // nothing is buffered that could be flushed
    const char byte = traits_type::to_char_type(c);
    if (xsputn(&byte, 1) == 1) return traits_type::to_int_type(byte);
    pendingCR_ = -1;
    return traits_type::eof();
}

std::streamsize quotedprintableencodebuf::xsputn(const char* s, std::streamsize n) {
    if (n <= 0) return 0;
    return putInSlices(target_, {s, static_cast<std::size_t>(n)},
                       [this](CodedOutput& out, auto slice) { encodeSlice(out, slice); });
}

int quotedprintableencodebuf::sync() {
    return target_ == nullptr ? -1 : target_->pubsync();
}

void quotedprintableencodebuf::encodeSlice(CodedOutput& out, std::span<const char> bytes) {
    while (!bytes.empty()) {
        if (pendingCR_ >= 0 && bytes.front() != '\n') {
            out.put("=0D");
            column_ += 3;
            pendingCR_ = -1;
        }
        bytes = bytes.subspan(encodeRun(out, bytes));
        if (bytes.empty()) break;
        encodeLineEnd(out, bytes.front());
        bytes = bytes.subspan(1);
    }
}

/// The bytes before the next line end.
std::size_t quotedprintableencodebuf::encodeRun(CodedOutput& out, std::span<const char> bytes) {
    const CodedRun run = putCoded(out, bytes, headerMode_ ? kHeaderTable : kBodyTable);
    column_ += static_cast<std::streamsize>(run.characters);
    return run.bytes;
}

void quotedprintableencodebuf::encodeLineEnd(CodedOutput& out, char c) {
    pendingCR_ = c == '\r' ? c : -1;
    if (c == '\r') return;
    out.put("\r\n");  // for a bare line feed too
    column_ = 0;
}

}  // namespace Varnex
