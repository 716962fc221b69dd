#include "HexCoding.h"

#include <array>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace ovka {
namespace {

constexpr char kDigits[] = "0123456789abcdef";

/// Value of a digit by character code; 0x80 for what is no digit.
constexpr std::array<std::uint8_t, 256> kValues = [] {
  std::array<std::uint8_t, 256> table{};
  for (std::size_t i = 0; i < table.size(); ++i) {
    const int value = hexDigit(static_cast<char>(i));
    table[i] = value < 0 ? std::uint8_t{0x80} : static_cast<std::uint8_t>(value);
  }
  return table;
}();

std::uint8_t valueOf(char c) {
  return kValues[static_cast<unsigned char>(c)];
}

#if defined(__SSE2__)

/// The digits of 16 values 0 to 15.
__m128i digitsOf(__m128i values) {
  const __m128i letters = _mm_cmpgt_epi8(values, _mm_set1_epi8(9));
  const __m128i offset = _mm_and_si128(letters, _mm_set1_epi8('a' - '0' - 10));
  return _mm_add_epi8(_mm_add_epi8(values, _mm_set1_epi8('0')), offset);
}

/// Encodes 16 bytes to 32 digits.
void encode16(const std::uint8_t* from, char* to) {
  const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
  const __m128i low = _mm_set1_epi8(0x0F);
  const __m128i first = digitsOf(_mm_and_si128(_mm_srli_epi16(bytes, 4), low));
  const __m128i second = digitsOf(_mm_and_si128(bytes, low));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(to), _mm_unpacklo_epi8(first, second));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(to + 16), _mm_unpackhi_epi8(first, second));
}

/// The values of 16 characters; `*valid` loses the lanes that are no digits.
__m128i valuesOf(__m128i text, __m128i* valid) {
  const auto between = [](__m128i c, char below, char above) {
    return _mm_and_si128(_mm_cmpgt_epi8(c, _mm_set1_epi8(below)),
                         _mm_cmplt_epi8(c, _mm_set1_epi8(above)));
  };
  const __m128i lower = _mm_or_si128(text, _mm_set1_epi8(0x20));
  const __m128i isDigit = between(text, '0' - 1, '9' + 1);
  const __m128i isLetter = between(lower, 'a' - 1, 'f' + 1);
  *valid = _mm_and_si128(*valid, _mm_or_si128(isDigit, isLetter));
  const __m128i nine = _mm_and_si128(isLetter, _mm_set1_epi8(9));
  return _mm_add_epi8(_mm_and_si128(text, _mm_set1_epi8(0x0F)), nine);
}

/// Pairs of values (high first) as the low bytes of 16-bit lanes.
__m128i pairsOf(__m128i values) {
  const __m128i high = _mm_slli_epi16(values, 4);
  const __m128i low = _mm_srli_epi16(values, 8);
  return _mm_and_si128(_mm_or_si128(high, low), _mm_set1_epi16(0x00FF));
}

/// Decodes 32 digits to 16 bytes; false, and nothing written, when one of them is none.
bool decode32(const char* from, std::uint8_t* to) {
  const __m128i first = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
  const __m128i second = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + 16));
  __m128i valid = _mm_set1_epi8(-1);
  const __m128i firstValues = valuesOf(first, &valid);
  const __m128i secondValues = valuesOf(second, &valid);
  if (_mm_movemask_epi8(valid) != 0xFFFF) return false;
  if (to != nullptr) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to),
                     _mm_packus_epi16(pairsOf(firstValues), pairsOf(secondValues)));
  }
  return true;
}

#else

void encode16(const std::uint8_t* from, char* to) {
  for (int i = 0; i < 16; ++i) {
    to[2 * i] = kDigits[from[i] >> 4U];
    to[2 * i + 1] = kDigits[from[i] & 0x0FU];
  }
}

bool decode32(const char* from, std::uint8_t* to) {
  std::uint8_t wrong = 0;
  for (int i = 0; i < 32; ++i) wrong |= valueOf(from[i]);
  if ((wrong & 0x80U) != 0) return false;
  for (int i = 0; to != nullptr && i < 16; ++i) {
    to[i] = static_cast<std::uint8_t>(valueOf(from[2 * i]) << 4U | valueOf(from[2 * i + 1]));
  }
  return true;
}

#endif

/// Decodes 8 digits to 4 bytes, the group that other writers set between spaces.
bool decode8(const char* from, std::uint8_t* to) {
  std::uint8_t wrong = 0;
  std::array<std::uint8_t, 4> bytes;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const std::uint8_t high = valueOf(from[2 * i]);
    const std::uint8_t low = valueOf(from[2 * i + 1]);
    wrong |= high | low;
    bytes[i] = static_cast<std::uint8_t>(high << 4U | low);
  }
  if ((wrong & 0x80U) != 0) return false;
  if (to != nullptr) std::memcpy(to, bytes.data(), bytes.size());
  return true;
}

}  // namespace

void hexEncode(std::span<const std::uint8_t> bytes, char* to) noexcept {
  std::size_t i = 0;
  for (; i + 16 <= bytes.size(); i += 16) encode16(bytes.data() + i, to + 2 * i);
  for (; i < bytes.size(); ++i) {
    to[2 * i] = kDigits[bytes[i] >> 4U];
    to[2 * i + 1] = kDigits[bytes[i] & 0x0FU];
  }
}

HexRun hexDecode(std::span<const char> text, std::uint8_t* to) noexcept {
  HexRun run;
  const auto at = [&] { return text.data() + run.consumed; };
  const auto left = [&] { return text.size() - run.consumed; };
  const auto out = [&] { return to == nullptr ? nullptr : to + run.bytes; };
  const auto took = [&](std::size_t bytes) {
    run.consumed += 2 * bytes;
    run.bytes += bytes;
  };
  while (true) {
    while (left() >= 32 && decode32(at(), out())) took(16);
    if (left() >= 8 && decode8(at(), out())) {
      took(4);
    } else if (left() >= 2 && ((valueOf(at()[0]) | valueOf(at()[1])) & 0x80U) == 0) {
      if (to != nullptr) {
        to[run.bytes] = static_cast<std::uint8_t>(valueOf(at()[0]) << 4U | valueOf(at()[1]));
      }
      took(1);
    } else if (left() >= 1 && *at() == ' ') {
      ++run.consumed;
      continue;
    } else {
      return run;
    }
    if (left() >= 1 && *at() == ' ') ++run.consumed;
  }
}

}  // namespace ovka
