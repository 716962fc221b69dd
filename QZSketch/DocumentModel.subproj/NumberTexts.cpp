#include "NumberTexts.h"

#include <array>
#include <charconv>
#include <cmath>

namespace ovka {

std::string integerText(std::int64_t value) {
  return std::to_string(value);
}

std::string floatText(double value) {
  // The largest double has 309 places before the point.
  std::array<char, 330> text{};
  const auto end = std::to_chars(text.data(), text.data() + text.size(),
                                 std::isfinite(value) ? value : 0.0, std::chars_format::fixed, 6);
  return {text.data(), end.ptr};
}

std::optional<double> floatOf(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
  if (text.starts_with('+')) text.remove_prefix(1);
  double value = 0;
  const auto end = std::from_chars(text.data(), text.data() + text.size(), value);
  if (end.ec != std::errc() || !std::isfinite(value)) return std::nullopt;
  return value;
}

}  // namespace ovka
