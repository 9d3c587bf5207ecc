#pragma once

#include <istream>
#include <string>
#include <string_view>

namespace Varnex {

// Private to the library: lines of message heads, with the limits of `ProtocolHTTP`.

/// What may stand around the parts of a line. A line ends in LF, so a CR before it is one of these.
inline constexpr std::string_view kLineBlanks = " \t\r";

[[nodiscard]] inline bool isBlank(std::string_view line, std::string_view blanks = kLineBlanks) {
    return line.find_first_not_of(blanks) == std::string_view::npos;
}

/// Reads a line without its LF, as std::getline does. Longer than the limit: the fail bit.
bool readLine(std::istream& stream, std::string& line);

/// Reads lines up to one that is not blank. More blank ones than the limit: the fail bit.
bool readLineAfterBlanks(std::istream& stream, std::string& line, std::string_view blanks = kLineBlanks);

/// Counts the lines of a header.
class HeaderLimits {
public:
    /// False: that was too much.
    [[nodiscard]] bool count(const std::string& line);

private:
    unsigned long lines_ = 0;
    unsigned long bytes_ = 0;
};

}  // namespace Varnex
