#pragma once

#include <string>

namespace VarnexTool {

/// A number of bytes for people: "512 B", "1.5 MiB".
[[nodiscard]] std::string bytesText(double bytes);

}  // namespace VarnexTool
