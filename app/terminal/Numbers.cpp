#include "Numbers.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>

namespace ovka::terminal {

void appendNumber(std::string& out, double value) {
  std::array<char, 32> text{};
  const auto end = std::to_chars(text.data(), text.data() + text.size(), value).ptr;
  out.append(text.data(), end);
}

void appendInteger(std::string& out, std::int64_t value) {
  std::array<char, 24> text{};
  const auto end = std::to_chars(text.data(), text.data() + text.size(), value).ptr;
  out.append(text.data(), end);
}

std::string shortestNumber(double value) {
  std::string out;
  appendNumber(out, value);
  return out;
}

std::string readableNumber(double value, int width) {
  if (!std::isfinite(value)) return "-";
  std::array<char, 352> text{};
  const auto fits = [&](int length) { return length <= width; };
  for (int decimals = std::abs(value) < 1     ? 3
                      : std::abs(value) < 100 ? 2
                                              : 1;
       decimals >= 0; --decimals) {
    const int length = std::snprintf(text.data(), text.size(), "%.*f", decimals, value);
    if (fits(length)) return text.data();
  }
  for (int digits = std::max(width - 6, 0); digits >= 0; --digits) {
    const int length = std::snprintf(text.data(), text.size(), "%.*e", digits, value);
    if (fits(length)) return text.data();
  }
  return "-";
}

std::string clockText(double seconds) {
  // A hundred years: beyond it (or not a number) there is no recording to speak of.
  if (!(seconds >= 0 && seconds < 3.2e9)) seconds = 0;
  const auto whole = static_cast<std::int64_t>(seconds);
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%02lld:%02lld:%02lld",
                static_cast<long long>(whole / 3600), static_cast<long long>(whole / 60 % 60),
                static_cast<long long>(whole % 60));
  return text.data();
}

}  // namespace ovka::terminal
