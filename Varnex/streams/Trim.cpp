#include <Varnex/streams/Trim.h>

#include <algorithm>

namespace Varnex {

std::string_view trimmed(std::string_view text, std::string_view blanks) {
    text = text.substr(0, text.find_last_not_of(blanks) + 1);  // npos + 1 is 0: nothing but blanks
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    return text;
}

void trim(std::string& s) {
    s = std::string(trimmed(s));
}

}  // namespace Varnex
