#pragma once

#include <cstddef>
#include <istream>
#include <string>
#include <string_view>

namespace Varnex {

// Private to the library: lines of message heads, with the limits of `ProtocolHTTP`.

/// What may stand around the parts of a line. A line ends in LF, so a CR before it is one of these.
inline constexpr std::string_view kLineBlanks = " \t\r";

[[nodiscard]] constexpr bool isLineBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r';
}

[[nodiscard]] inline bool isBlank(std::string_view line, std::string_view blanks = kLineBlanks) {
    return line.find_first_not_of(blanks) == std::string_view::npos;
}

[[nodiscard]] inline std::size_t skipBlanks(std::string_view line, std::size_t from) {
    while (from < line.size() && isLineBlank(line[from])) ++from;
    return from;
}

/// What stands between the blanks at both ends.
[[nodiscard]] inline std::string_view withoutBlanks(std::string_view line) {
    while (!line.empty() && isLineBlank(line.back())) line.remove_suffix(1);
    return line.substr(skipBlanks(line, 0));
}

/// Takes lines from a stream, and nothing behind them.
///
/// A line that the stream's buffer holds whole is not copied: it is valid until anything else is done to the stream.
class LineReader {
public:
    explicit LineReader(std::istream& stream) : stream_(stream) {}

    /// A line without its LF, with the states of std::getline. Longer than the limit: the fail bit.
    bool read(std::string_view& line);
    /// The first line that is not blank. More blank ones than the limit: the fail bit.
    bool readAfterBlanks(std::string_view& line, std::string_view blanks = kLineBlanks);
    /// The character that comes next, with the states of `std::istream::peek`. The stream must be good.
    int peek();

private:
    bool readInPieces(std::string_view& line);

    std::istream& stream_;
    std::string pieces_;
};

/// Counts the lines of a header.
class HeaderLimits {
public:
    /// False: that was too much.
    [[nodiscard]] bool count(std::string_view line);

private:
    unsigned long lines_ = 0;
    unsigned long bytes_ = 0;
};

}  // namespace Varnex
