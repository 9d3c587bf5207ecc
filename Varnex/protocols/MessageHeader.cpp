#include <Varnex/protocols/MessageHeader.h>

#include <Varnex/protocols/HeadReader.h>
#include <Varnex/protocols/HeadText.h>
#include <Varnex/streams/Trim.h>

#include <istream>
#include <ostream>
#include <string>

namespace Varnex {

namespace {

/// The characters of a name (RFC 9110, section 5.6.2).
constexpr std::string_view kNameCharacters =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789!#$%&'*+-.^_`|~";

enum class Next { Line, End, Malformed };

/// Reads the lines of a header one after another.
class HeaderReader {
public:
    HeaderReader(std::istream& stream, MessageHeader& header) : stream_(stream), header_(header) {}

    Next readParam() {
        if (!readCounted()) return Next::Malformed;
        const std::size_t colon = line_.find(':');
        if (colon == std::string::npos) return isBlank(line_) ? Next::End : Next::Malformed;
        name_ = line_.substr(0, colon);
        name_.erase(name_.find_last_not_of(kLineBlanks) + 1);
        if (name_.empty() || kLineBlanks.find(name_[0]) != std::string_view::npos) return Next::Malformed;
        value_ = trimmed(std::string_view(line_).substr(colon + 1), kLineBlanks);
        const Next next = readContinuations();
        if (next != Next::Malformed) header_.setParam(name_, value_);
        return next;
    }

private:
    bool readCounted() { return readLine(stream_, line_) && limits_.count(line_); }

    /// An empty one, such as the CR of a blank line, ends the header.
    Next readContinuations() {
        while (!stream_.eof()) {
            const int next = stream_.peek();
            if (stream_.fail()) return Next::Malformed;
            if (stream_.eof()) break;
            if (kLineBlanks.find(static_cast<char>(next)) == std::string_view::npos) return Next::Line;
            if (!readCounted()) return Next::Malformed;
            const std::string_view more = trimmed(line_, kLineBlanks);
            if (more.empty()) return Next::End;
            value_.append(";").append(more);
        }
        return Next::End;
    }

    std::istream& stream_;
    MessageHeader& header_;
    HeaderLimits limits_;
    std::string line_, name_, value_;
};

}  // namespace

MessageHeader::~MessageHeader() = default;

bool MessageHeader::setChecked(std::string_view name, std::string_view value) {
    if (name.empty() || name.find_first_not_of(kNameCharacters) != std::string_view::npos) return false;
    if (value.find_first_of(std::string_view("\r\n\0", 3)) != std::string_view::npos) return false;
    setParam(name, value);
    return true;
}

std::istream& operator>>(std::istream& stream, MessageHeader& header) {
    header.clear();
    if (!stream.good()) return stream;
    HeaderReader reader(stream, header);
    Next next = Next::Line;
    while (next == Next::Line) next = reader.readParam();
    if (next == Next::Malformed) {
        header.clear();
        stream.setstate(std::ios_base::failbit);
    }
    return stream;
}

std::ostream& operator<<(std::ostream& stream, const MessageHeader& header) {
    if (!stream.good()) return stream;
    std::string text;
    HeadText::append(text, header);
    return HeadText::write(stream, text);
}

}  // namespace Varnex
