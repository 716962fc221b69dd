#include <array>

#include "HexCoding.h"
#include "PropertyListParser.h"

namespace ovka {
namespace {

/// Characters of the codes 128 to 255 of the form's own 8-bit code, which octal escapes are in.
constexpr std::array<std::uint16_t, 128> kUpperHalf{
    0x00A0, 0x00C0, 0x00C1, 0x00C2, 0x00C3, 0x00C4, 0x00C5, 0x00C7, 0x00C8, 0x00C9, 0x00CA, 0x00CB,
    0x00CC, 0x00CD, 0x00CE, 0x00CF, 0x00D0, 0x00D1, 0x00D2, 0x00D3, 0x00D4, 0x00D5, 0x00D6, 0x00D9,
    0x00DA, 0x00DB, 0x00DC, 0x00DD, 0x00DE, 0x00B5, 0x00D7, 0x00F7, 0x00A9, 0x00A1, 0x00A2, 0x00A3,
    0x2044, 0x00A5, 0x0192, 0x00A7, 0x00A4, 0x2019, 0x201C, 0x00AB, 0x2039, 0x203A, 0xFB01, 0xFB02,
    0x00AE, 0x2013, 0x2020, 0x2021, 0x00B7, 0x00A6, 0x00B6, 0x2022, 0x201A, 0x201E, 0x201D, 0x00BB,
    0x2026, 0x2030, 0x00AC, 0x00BF, 0x00B9, 0x02CB, 0x00B4, 0x02C6, 0x02DC, 0x00AF, 0x02D8, 0x02D9,
    0x00A8, 0x00B2, 0x02DA, 0x00B8, 0x00B3, 0x02DD, 0x02DB, 0x02C7, 0x2014, 0x00B1, 0x00BC, 0x00BD,
    0x00BE, 0x00E0, 0x00E1, 0x00E2, 0x00E3, 0x00E4, 0x00E5, 0x00E7, 0x00E8, 0x00E9, 0x00EA, 0x00EB,
    0x00EC, 0x00C6, 0x00ED, 0x00AA, 0x00EE, 0x00EF, 0x00F0, 0x00F1, 0x0141, 0x00D8, 0x0152, 0x00BA,
    0x00F2, 0x00F3, 0x00F4, 0x00F5, 0x00F6, 0x00E6, 0x00F9, 0x00FA, 0x00FB, 0x0131, 0x00FC, 0x00FD,
    0x0142, 0x00F8, 0x0153, 0x00DF, 0x00FE, 0x00FF, 0xFFFD, 0xFFFD};

constexpr unsigned kReplacement = 0xFFFD;

[[nodiscard]] bool isOctal(int c) {
  return c >= '0' && c <= '7';
}

/// What a letter behind a backslash stands for; any other character stands for itself.
[[nodiscard]] char plainEscape(int c) {
  switch (c) {
    case 'a':
      return '\a';
    case 'b':
      return '\b';
    case 'f':
      return '\f';
    case 'n':
      return '\n';
    case 'r':
      return '\r';
    case 't':
      return '\t';
    case 'v':
      return '\v';
    default:
      return static_cast<char>(c);
  }
}

}  // namespace

/// What follows a backslash.
bool PropertyListParser::escape() {
  const int c = next();
  if (c == kEnd) return fail("the file ends within a text");
  if (c == 'U' || c == 'u') return unicodeEscape();
  flushSurrogate();
  if (!isOctal(c)) {
    text_ += plainEscape(c);
    return true;
  }
  auto code = static_cast<unsigned>(c - '0');
  for (int digits = 1; digits < 3 && isOctal(peek()); ++digits) {
    code = code * 8 + static_cast<unsigned>(next() - '0');
  }
  if (code > 255) return fail("an octal escape goes to \\377 at most");
  appendCodePoint(code < 128 ? code : kUpperHalf[code - 128]);
  return true;
}

bool PropertyListParser::unicodeEscape() {
  unsigned unit = 0;
  int digits = 0;
  for (; digits < 4; ++digits) {
    const int c = peek();
    if (c == kEnd || hexDigit(static_cast<char>(c)) < 0) break;
    unit = unit << 4U | static_cast<unsigned>(hexDigit(static_cast<char>(next())));
  }
  if (digits == 0) return fail("\\U needs one to four hexadecimal digits");
  appendUtf16(unit);
  return true;
}

void PropertyListParser::appendUtf16(unsigned unit) {
  const bool low = unit >= 0xDC00 && unit <= 0xDFFF;
  if (surrogate_ != 0 && low) {
    const unsigned high = surrogate_;
    surrogate_ = 0;
    appendCodePoint(0x10000 + ((high - 0xD800) << 10U) + (unit - 0xDC00));
    return;
  }
  flushSurrogate();
  if (unit >= 0xD800 && unit <= 0xDBFF) {
    surrogate_ = unit;
  } else {
    appendCodePoint(low ? kReplacement : unit);
  }
}

/// A high surrogate without its partner is no character.
void PropertyListParser::flushSurrogate() {
  if (surrogate_ == 0) return;
  surrogate_ = 0;
  appendCodePoint(kReplacement);
}

void PropertyListParser::appendCodePoint(unsigned codePoint) {
  const auto tail = [&](unsigned shift) {
    text_ += static_cast<char>(0x80U | (codePoint >> shift & 0x3FU));
  };
  if (codePoint < 0x80) {
    text_ += static_cast<char>(codePoint);
  } else if (codePoint < 0x800) {
    text_ += static_cast<char>(0xC0U | codePoint >> 6U);
    tail(0);
  } else if (codePoint < 0x10000) {
    text_ += static_cast<char>(0xE0U | codePoint >> 12U);
    tail(6);
    tail(0);
  } else {
    text_ += static_cast<char>(0xF0U | codePoint >> 18U);
    tail(12);
    tail(6);
    tail(0);
  }
}

}  // namespace ovka
