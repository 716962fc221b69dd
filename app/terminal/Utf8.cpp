#include "Utf8.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdlib>

namespace ovka::terminal {

char32_t takeCodePoint(std::string_view& text) {
  const auto byte = [&](std::size_t index) {
    return static_cast<char32_t>(static_cast<unsigned char>(text[index]));
  };
  const char32_t first = byte(0);
  const std::size_t length = first < 0x80    ? 1
                             : first < 0xC2  ? 0
                             : first < 0xE0  ? 2
                             : first < 0xF0  ? 3
                             : first <= 0xF4 ? 4
                                             : 0;
  constexpr std::array<char32_t, 5> kSmallest{0, 0, 0x80, 0x800, 0x10000};
  constexpr std::array<char32_t, 5> kMask{0, 0x7F, 0x1F, 0x0F, 0x07};
  char32_t point = length == 0 ? kReplacement : first & kMask[length];
  bool valid = length != 0 && length <= text.size();
  for (std::size_t i = 1; valid && i < length; ++i) {
    valid = (byte(i) & 0xC0U) == 0x80;
    point = (point << 6U) | (byte(i) & 0x3FU);
  }
  valid = valid && point >= kSmallest[length] && point <= 0x10FFFF &&
          !(point >= 0xD800 && point <= 0xDFFF);
  text.remove_prefix(valid ? length : 1);
  return valid ? point : kReplacement;
}

void appendUtf8(std::string& out, char32_t point) {
  const auto add = [&](char32_t value) { out += static_cast<char>(value); };
  if (point < 0x80) {
    add(point);
  } else if (point < 0x800) {
    add(0xC0U | (point >> 6U));
    add(0x80U | (point & 0x3FU));
  } else if (point < 0x10000) {
    add(0xE0U | (point >> 12U));
    add(0x80U | ((point >> 6U) & 0x3FU));
    add(0x80U | (point & 0x3FU));
  } else {
    add(0xF0U | (point >> 18U));
    add(0x80U | ((point >> 12U) & 0x3FU));
    add(0x80U | ((point >> 6U) & 0x3FU));
    add(0x80U | (point & 0x3FU));
  }
}

bool localeIsUtf8() {
  for (const char* name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
    const char* value = std::getenv(name);
    if (value == nullptr || *value == '\0') continue;
    std::string text(value);
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return text.find("utf-8") != std::string::npos || text.find("utf8") != std::string::npos;
  }
  return false;
}

}  // namespace ovka::terminal
