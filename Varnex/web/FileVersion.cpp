#include <Varnex/web/FileVersion.h>

#include <Varnex/streams/Trim.h>

#include <algorithm>
#include <charconv>
#include <string_view>

#include <sys/stat.h>

namespace Varnex {

namespace {

constexpr std::string_view kUnit = "bytes=";

std::string hexadecimal(unsigned long long value) {
    char digits[16];
    char* const end = std::to_chars(std::begin(digits), std::end(digits), value, 16).ptr;
    return std::string(std::begin(digits), end);
}

/// Whether one of the tags in a list is this one, weak or not.
bool listHas(std::string_view list, std::string_view tag) {
    while (!list.empty()) {
        std::string_view item = trimmed(list.substr(0, list.find(',')));
        list.remove_prefix(std::min(list.find(','), list.size() - 1) + 1);
        if (item.starts_with("W/")) item.remove_prefix(2);
        if (item == tag || item == "*") return true;
    }
    return false;
}

/// All digits, or nothing at all: -1. False: malformed.
bool parsePosition(std::string_view text, long long& value) {
    value = -1;
    if (text.empty()) return true;
    if (text.front() == '-') return false;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size();
}

}  // namespace

FileVersion::FileVersion(const struct stat& status)
    : tag_('"' + hexadecimal(static_cast<unsigned long long>(status.st_size)) + '-' +
           hexadecimal(static_cast<unsigned long long>(status.st_mtim.tv_sec)) + '-' +
           hexadecimal(static_cast<unsigned long long>(status.st_mtim.tv_nsec)) + '"'),
      modified_(status.st_mtim.tv_sec),
      date_(ProtocolHTTP::createTimestamp(modified_)) {}

void FileVersion::setEncoding(const std::string& name) {
    tag_.insert(tag_.size() - 1, "-" + name);
}

void FileVersion::describe(MessageHeader& header) const {
    header.setParam("ETag", tag_);
    if (!date_.empty()) header.setParam("Last-Modified", date_);
}

bool FileVersion::isKnown(const MessageHeader& request) const {
    if (request.hasParam("If-None-Match")) return listHas(request.getParam("If-None-Match"), tag_);
    const long since = ProtocolHTTP::parseTimestamp(request.getParam("If-Modified-Since"));
    return since != -1 && modified_ <= since;
}

bool FileVersion::allowsRange(const MessageHeader& request) const {
    const std::string condition = request.getParam("If-Range");
    return condition.empty() || condition == tag_ || condition == date_;
}

std::optional<ByteRange> parseRange(const std::string& text, long long size) {
    std::string_view range = text;
    if (!range.starts_with(kUnit)) return {};
    range = trimmed(range.substr(kUnit.size()));
    const std::size_t dash = range.find('-');
    long long first = -1, last = -1;
    if (dash == std::string_view::npos || !parsePosition(range.substr(0, dash), first) ||
        !parsePosition(range.substr(dash + 1), last) || (first < 0 && last < 0) || (last >= 0 && first > last))
        return {};
    if (first < 0) return ByteRange{std::max(size - last, 0LL), std::min(last, size)};
    const long long end = last < 0 ? size : std::min(last, size - 1) + 1;
    return ByteRange{first, std::max(end - first, 0LL)};
}

}  // namespace Varnex
