#include <Varnex/streams/CodedOutput.h>

#include <cstring>

namespace Varnex {

void CodedOutput::put(std::string_view text) {
    while (!text.empty()) {
        const std::string_view piece = text.substr(0, kCapacity);
        std::memcpy(reserve(piece.size()), piece.data(), piece.size());
        commit(piece.size());
        text.remove_prefix(piece.size());
    }
}

bool CodedOutput::flush() {
    const auto size = static_cast<std::streamsize>(size_);
    size_ = 0;
    failed_ = failed_ || sink_ == nullptr || sink_->sputn(text_.data(), size) != size;
    return !failed_;
}

CodedRun putCoded(CodedOutput& out, std::span<const char> bytes, const CodeTable& table) {
    char* const begin = out.reserve(3 * bytes.size() + 1);
    char* next = begin;
    std::size_t done = 0;
    for (; done < bytes.size(); ++done) {
        const CodedByte coded = table[static_cast<unsigned char>(bytes[done])];
        if (coded.size == 0) break;
        std::memcpy(next, &coded, sizeof coded);  // the byte too many is overwritten or not used
        next += coded.size;
    }
    const auto characters = static_cast<std::size_t>(next - begin);
    out.commit(characters);
    return {done, characters};
}

}  // namespace Varnex
