#pragma once

#include "EventTable.h"

#include <string>
#include <vector>

namespace VarnexTool {

/// Longest text that the receiving side can read back, in bytes.
inline constexpr std::size_t kMaxTextSize = 32767;

/// Reads the values given for one field: one, or for points any number. Throws `UsageError` with the expected form.
[[nodiscard]] Value parseField(const Field& field, const std::vector<std::string>& texts);

/// How a value of this field is typed, for the help.
[[nodiscard]] std::string expectedForm(const Field& field);

/// A value on one line, floats with up to 6 digits, texts quoted.
[[nodiscard]] std::string formatValue(const Value& value);

/// The shortest text that reads back as the same float; with `digits`, at most that many significant ones.
[[nodiscard]] std::string formatFloat(float value, int digits = 0);

}  // namespace VarnexTool
