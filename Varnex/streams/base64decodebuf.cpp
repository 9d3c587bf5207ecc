#include <Varnex/streams/base64decodebuf.h>

#include <Varnex/streams/Base64.h>
#include <Varnex/streams/Base64Decoder.h>
#include <Varnex/streams/CodedOutput.h>

#include <algorithm>
#include <istream>
#include <ostream>

namespace Varnex {

base64decodebuf::base64decodebuf(std::ostream* target, std::istream* source)
    : codecbuf(target, source), decoder_(std::make_unique<Base64Decoder>()) {}

base64decodebuf::base64decodebuf(std::ostream& target) : base64decodebuf(&target, nullptr) {}

base64decodebuf::base64decodebuf(std::istream& source) : base64decodebuf(nullptr, &source) {}

base64decodebuf::base64decodebuf(std::iostream& stream) : base64decodebuf(&stream, &stream) {}

base64decodebuf::~base64decodebuf() = default;

std::streamsize base64decodebuf::decode(const char* s, std::streamsize n) {
    const std::span text(s, static_cast<std::size_t>(n));
    return putInSlices(*target(), text, [this](CodedOutput& out, auto slice) {
        const std::size_t room = Base64Decoder::mostBytes(slice.size());
        out.commit(decoder_->decode(out.reserve(room), room, {slice.data(), slice.size()}));
    });
}

std::streamsize base64decodebuf::encode(char* s, std::streamsize n) {
    std::streamsize total = 0;
    while (total < n) {
        if (unread_.empty()) {
            if (total > 0 && readyInSource() < 3) break;
            const std::streamsize written = encodeGroups(s + total, n - total);
            total += written;
            if (written == 0 && unread_.empty()) break;
        }
        const std::size_t size = unread_.copy(s + total, static_cast<std::size_t>(n - total));
        unread_.remove_prefix(size);
        total += static_cast<std::streamsize>(size);
    }
    return total;
}

/// Encodes as many whole groups as there is room for; one that does not fit, or the last of all, goes into `group_`.
std::streamsize base64decodebuf::encodeGroups(char* s, std::streamsize n) {
    char bytes[CodedOutput::kSlice / 3 * 3];
    const std::streamsize ready = readyInSource() / 3 * 3;
    const auto most = std::max<std::streamsize>(std::min({n / 4 * 3, std::ssize(bytes), ready}), 3);
    const std::streamsize size = readSource(bytes, most);
    const std::streamsize whole = n < 4 ? 0 : size / 3 * 3;
    encodeBase64(s, bytes, static_cast<unsigned long>(whole));
    finishencode({bytes + whole, static_cast<std::size_t>(size - whole)});
    return whole / 3 * 4;
}

void base64decodebuf::finishencode(std::string_view bytes) {
    encodeBase64(group_.data(), bytes.data(), bytes.size());
    unread_ = std::string_view(group_.data(), encodedBase64Size(bytes.size()));
}

}  // namespace Varnex
