#include <Varnex/protocols/HeadReader.h>

#include <Varnex/protocols/ProtocolHTTP.h>

#include <atomic>

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

bool readLine(std::istream& stream, std::string& line) {
    char piece[1024];
    line.clear();
    for (;;) {
        stream.getline(piece, sizeof piece);
        const auto n = static_cast<std::size_t>(stream.gcount());
        const bool isCut = stream.rdstate() == std::ios_base::failbit && n == sizeof piece - 1;
        const bool hasEnd = stream.good();  // which was counted, too
        line.append(piece, hasEnd ? n - 1 : n);
        if (isOver(line.size(), maxLine)) return fail(stream);
        if (!isCut) break;
        stream.clear();
    }
    // A line that was cut where the stream ends has been read all the same.
    if (stream.eof() && stream.fail() && !stream.bad() && !line.empty()) stream.clear(std::ios_base::eofbit);
    return !stream.fail();
}

bool readLineAfterBlanks(std::istream& stream, std::string& line, std::string_view blanks) {
    for (unsigned long skipped = 0; readLine(stream, line); ++skipped) {
        if (!isBlank(line, blanks)) return true;
        if (isOver(skipped + 1, maxBlankLines)) return fail(stream);
    }
    return false;
}

bool HeaderLimits::count(const std::string& line) {
    bytes_ += line.size() + 1;
    return !isOver(++lines_, maxLines) && !isOver(bytes_, maxHeader);
}

}  // namespace Varnex
