#include <Varnex/protocols/MessageHeader.h>

#include <Varnex/protocols/HeadReader.h>
#include <Varnex/protocols/HeadText.h>
#include <Varnex/protocols/TokenCharacters.h>

#include <istream>
#include <ostream>
#include <string>

namespace Varnex {

namespace {

enum class Next { Line, End, Malformed };

/// Reads the lines of a header one after another.
class HeaderReader {
public:
    HeaderReader(std::istream& stream, MessageHeader& header) : stream_(stream), lines_(stream), header_(header) {}

    Next readParam() {
        std::string_view line;
        if (!readCounted(line)) return Next::Malformed;
        const std::size_t colon = line.find(':');
        if (colon == std::string_view::npos) return isBlank(line) ? Next::End : Next::Malformed;
        const std::string_view name = withoutBlanks(line.substr(0, colon));
        if (name.empty() || isLineBlank(line.front())) return Next::Malformed;
        return readContinuations(header_.setParam(name, withoutBlanks(line.substr(colon + 1))));
    }

private:
    bool readCounted(std::string_view& line) { return lines_.read(line) && limits_.count(line); }

    /// An empty one, such as the CR of a blank line, ends the header.
    Next readContinuations(std::string& value) {
        std::string_view line;
        while (!stream_.eof()) {
            const int next = lines_.peek();
            if (stream_.fail()) return Next::Malformed;
            if (stream_.eof()) break;
            if (!isLineBlank(static_cast<char>(next))) return Next::Line;
            if (!readCounted(line)) return Next::Malformed;
            const std::string_view more = withoutBlanks(line);
            if (more.empty()) return Next::End;
            value.append(";").append(more);
        }
        return Next::End;
    }

    std::istream& stream_;
    LineReader lines_;
    MessageHeader& header_;
    HeaderLimits limits_;
};

}  // namespace

MessageHeader::~MessageHeader() = default;

bool MessageHeader::setChecked(std::string_view name, std::string_view value) {
    if (name.empty() || name.find_first_not_of(kTokenCharacters) != std::string_view::npos) return false;
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
