#include <Varnex/web/HeadScanner.h>

#include <Varnex/protocols/HeadReader.h>
#include <Varnex/protocols/ProtocolHTTP.h>
#include <Varnex/transport/LowerCase.h>

#include <algorithm>
#include <string>

namespace Varnex {

namespace {

constexpr std::string_view kLength = "content-length";

std::string_view takeWord(std::string_view& line) {
    line.remove_prefix(skipBlanks(line, 0));
    const auto* const end = std::find_if(line.begin(), line.end(), isLineBlank);
    const std::string_view word = line.substr(0, static_cast<std::size_t>(end - line.begin()));
    line.remove_prefix(word.size());
    return word;
}

/// Whether a header follows the request line; not behind a malformed one.
bool hasHeader(std::string_view line) {
    takeWord(line);
    takeWord(line);
    const std::string_view word = takeWord(line);
    if (word == "HTTP/1.1" || word == "HTTP/1.0") return true;
    ProtocolHTTP::Version version;
    unsigned long pos = 0;
    return ProtocolHTTP::parseVersion(std::string(word), pos, version) && !version.isSimple();
}

bool tellsLength(std::string_view line) {
    const std::string_view name = withoutBlanks(line.substr(0, line.find(':')));
    return std::equal(name.begin(), name.end(), kLength.begin(), kLength.end(),
                      [](char a, char b) { return lowerCase(a) == b; });
}

}  // namespace

bool HeadScanner::isWhole(std::string_view bytes) {
    for (;;) {
        const std::size_t end = bytes.find('\n', searched_);
        searched_ = std::min(end, bytes.size() - 1) + 1;
        if (end == std::string_view::npos) return false;
        const std::string_view line = bytes.substr(seen_, end - seen_);
        seen_ = searched_;
        if (endsAt(line)) return true;
    }
}

/// Whether the line is the head's last one.
bool HeadScanner::endsAt(std::string_view line) {
    if (isBlank(line)) return hasBegun_;
    if (hasBegun_) {
        if (tellsLength(line)) ++lengths_;
        return false;
    }
    hasBegun_ = true;
    return !hasHeader(line);
}

}  // namespace Varnex
