#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace ovka::terminal {

inline constexpr char32_t kReplacement = 0xFFFD;

/// Takes the next code point off `text` (not empty). A byte that begins no valid sequence (wrong,
/// cut off, overlong, surrogate, beyond U+10FFFF) is taken alone and gives kReplacement.
[[nodiscard]] char32_t takeCodePoint(std::string_view& text);

/// Appends a code point (at most U+10FFFF).
void appendUtf8(std::string& out, char32_t point);

/// True when the locale of the environment (LC_ALL, LC_CTYPE, LANG, first one set) is UTF-8.
[[nodiscard]] bool localeIsUtf8();

}  // namespace ovka::terminal
