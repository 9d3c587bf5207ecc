#include <Varnex/protocols/HeadReader.h>

#include <Varnex/protocols/ProtocolHTTP.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <streambuf>

namespace Varnex {

namespace {

constinit std::atomic<unsigned long> maxLine = ProtocolHTTP::kDefaultMaxLine;
constinit std::atomic<unsigned long> maxLines = ProtocolHTTP::kDefaultMaxLines;
constinit std::atomic<unsigned long> maxHeader = ProtocolHTTP::kDefaultMaxHeader;
constinit std::atomic<unsigned long> maxBlankLines = ProtocolHTTP::kDefaultMaxBlankLines;

bool isOver(unsigned long count, const std::atomic<unsigned long>& limit) {
    return limit > 0 && count > limit;
}

bool fail(std::istream& stream) {
    stream.setstate(std::ios_base::failbit);
    return false;
}

/// What the buffer of a stream has read ahead. Looking at it from outside is the way to take a line in one step and
/// without a copy: the streams' own operations copy, or take one character each.
class GetArea : private std::streambuf {
public:
    /// As much of it as one step takes.
    static std::string_view unread(const std::istream& stream) {
        const std::streambuf& buffer = *stream.rdbuf();
        const char* const begin = (buffer.*&GetArea::gptr)();
        return {begin, static_cast<std::size_t>(std::min((buffer.*&GetArea::egptr)() - begin, kStep))};
    }

    static void skip(std::istream& stream, std::size_t n) { (stream.rdbuf()->*&GetArea::gbump)(static_cast<int>(n)); }

private:
    static constexpr std::ptrdiff_t kStep = 65536;
};

}  // namespace

void ProtocolHTTP::setMaxLine(unsigned long bytes) {
    maxLine = bytes;
}

void ProtocolHTTP::setMaxLines(unsigned long lines) {
    maxLines = lines;
}

void ProtocolHTTP::setMaxHeader(unsigned long bytes) {
    maxHeader = bytes;
}

void ProtocolHTTP::setMaxBlankLines(unsigned long lines) {
    maxBlankLines = lines;
}

bool LineReader::read(std::string_view& line) {
    if (!stream_.good()) return fail(stream_);
    const std::string_view unread = GetArea::unread(stream_);
    const std::size_t end = unread.find('\n');
    if (end == std::string_view::npos || isOver(end, maxLine)) return readInPieces(line);
    line = unread.substr(0, end);
    GetArea::skip(stream_, end + 1);
    return true;
}

/// Also of a stream without a buffer, whose characters come one by one.
bool LineReader::readInPieces(std::string_view& line) {
    pieces_.clear();
    while (!isOver(pieces_.size(), maxLine)) {
        line = pieces_;
        // Where the stream ends after a part of a line, that has been read all the same.
        if (!line.empty() && stream_.peek() == std::istream::traits_type::eof()) return !stream_.fail();
        const int next = stream_.get();
        if (!stream_.good()) return false;
        if (next == '\n') return true;
        pieces_ += static_cast<char>(next);
        const std::string_view unread = GetArea::unread(stream_), more = unread.substr(0, unread.find('\n'));
        pieces_.append(more);
        GetArea::skip(stream_, more.size());
    }
    return fail(stream_);
}

bool LineReader::readAfterBlanks(std::string_view& line, std::string_view blanks) {
    for (unsigned long skipped = 0; read(line); ++skipped) {
        if (!isBlank(line, blanks)) return true;
        if (isOver(skipped + 1, maxBlankLines)) return fail(stream_);
    }
    return false;
}

int LineReader::peek() {
    const std::string_view unread = GetArea::unread(stream_);
    return unread.empty() ? stream_.peek() : std::istream::traits_type::to_int_type(unread.front());
}

bool HeaderLimits::count(std::string_view line) {
    bytes_ += line.size() + 1;
    return !isOver(++lines_, maxLines) && !isOver(bytes_, maxHeader);
}

}  // namespace Varnex
