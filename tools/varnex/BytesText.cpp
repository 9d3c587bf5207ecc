#include "BytesText.h"

#include <cstdio>
#include <iterator>

namespace VarnexTool {

std::string bytesText(double bytes) {
    const char* const units[] = {"B", "KiB", "MiB", "GiB"};
    std::size_t unit = 0;
    for (; bytes >= 1024 && unit + 1 < std::size(units); ++unit) bytes /= 1024;
    char text[400];  // for any double
    std::snprintf(text, sizeof text, "%.*f %s", unit == 0 ? 0 : 1, bytes, units[unit]);
    return text;
}

}  // namespace VarnexTool
