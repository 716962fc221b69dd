#include "HexCoding.h"

#include <array>
#include <cstring>

#if defined(__SSE2__)
#include <immintrin.h>
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

/// Decodes blocks of 32 digits while every character is one; `to` nullptr: only looks. The
/// characters taken.
template <bool kStore>
std::size_t decodeRun(const char* from, std::size_t length, std::uint8_t* to) {
  std::size_t at = 0;
  for (; length - at >= 32; at += 32) {
    const __m128i first = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + at));
    const __m128i second = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + at + 16));
    __m128i valid = _mm_set1_epi8(-1);
    const __m128i firstValues = valuesOf(first, &valid);
    const __m128i secondValues = valuesOf(second, &valid);
    if (_mm_movemask_epi8(valid) != 0xFFFF) break;
    if constexpr (kStore) {
      _mm_storeu_si128(reinterpret_cast<__m128i*>(to + at / 2),
                       _mm_packus_epi16(pairsOf(firstValues), pairsOf(secondValues)));
    }
  }
  return at;
}

// The same, twice as wide, where the processor has it.

[[gnu::target("avx2"), gnu::always_inline]] inline __m256i wideValuesOf(__m256i text,
                                                                        __m256i* valid) {
  const __m256i lower = _mm256_or_si256(text, _mm256_set1_epi8(0x20));
  const __m256i isDigit = _mm256_and_si256(_mm256_cmpgt_epi8(text, _mm256_set1_epi8('0' - 1)),
                                           _mm256_cmpgt_epi8(_mm256_set1_epi8('9' + 1), text));
  const __m256i isLetter = _mm256_and_si256(_mm256_cmpgt_epi8(lower, _mm256_set1_epi8('a' - 1)),
                                            _mm256_cmpgt_epi8(_mm256_set1_epi8('f' + 1), lower));
  *valid = _mm256_and_si256(*valid, _mm256_or_si256(isDigit, isLetter));
  const __m256i nine = _mm256_and_si256(isLetter, _mm256_set1_epi8(9));
  return _mm256_add_epi8(_mm256_and_si256(text, _mm256_set1_epi8(0x0F)), nine);
}

template <bool kStore>
[[gnu::target("avx2")]] std::size_t wideDecodeRun(const char* from, std::size_t length,
                                                  std::uint8_t* to) {
  const __m256i weights = _mm256_set1_epi16(0x0110);  // the first of two digits counts 16
  std::size_t at = 0;
  for (; length - at >= 64; at += 64) {
    const __m256i first = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from + at));
    const __m256i second = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from + at + 32));
    __m256i valid = _mm256_set1_epi8(-1);
    const __m256i firstValues = wideValuesOf(first, &valid);
    const __m256i secondValues = wideValuesOf(second, &valid);
    if (_mm256_movemask_epi8(valid) != -1) break;
    if constexpr (kStore) {
      const __m256i packed = _mm256_packus_epi16(_mm256_maddubs_epi16(firstValues, weights),
                                                 _mm256_maddubs_epi16(secondValues, weights));
      _mm256_storeu_si256(reinterpret_cast<__m256i*>(to + at / 2),
                          _mm256_permute4x64_epi64(packed, 0xD8));
    }
  }
  return at;
}

[[gnu::target("avx2"), gnu::always_inline]] inline __m256i wideDigitsOf(__m256i values) {
  const __m256i digits = _mm256_setr_epi8(
      '0', '1', '2', '3', '4', '5', '6', '7', '8', '9', 'a', 'b', 'c', 'd', 'e', 'f',  //
      '0', '1', '2', '3', '4', '5', '6', '7', '8', '9', 'a', 'b', 'c', 'd', 'e', 'f');
  return _mm256_shuffle_epi8(digits, values);
}

/// Encodes blocks of 32 bytes; the bytes taken.
[[gnu::target("avx2")]] std::size_t wideEncode(std::span<const std::uint8_t> bytes, char* to) {
  const __m256i low = _mm256_set1_epi8(0x0F);
  std::size_t at = 0;
  for (; bytes.size() - at >= 32; at += 32) {
    const __m256i now = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes.data() + at));
    const __m256i first = wideDigitsOf(_mm256_and_si256(_mm256_srli_epi16(now, 4), low));
    const __m256i second = wideDigitsOf(_mm256_and_si256(now, low));
    // Each half holds the digits of its own 16 bytes: the outer quarters change places.
    const __m256i left = _mm256_unpacklo_epi8(first, second);
    const __m256i right = _mm256_unpackhi_epi8(first, second);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(to + 2 * at),
                        _mm256_permute2x128_si256(left, right, 0x20));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(to + 2 * at + 32),
                        _mm256_permute2x128_si256(left, right, 0x31));
  }
  return at;
}

std::size_t encodeLong(std::span<const std::uint8_t> bytes, char* to) {
  static const bool wide = __builtin_cpu_supports("avx2");
  std::size_t at = wide ? wideEncode(bytes, to) : 0;
  for (; at + 16 <= bytes.size(); at += 16) encode16(bytes.data() + at, to + 2 * at);
  return at;
}

std::size_t decodeLong(const char* from, std::size_t length, std::uint8_t* to) {
  static const bool wide = __builtin_cpu_supports("avx2");
  if (to == nullptr) {
    const std::size_t done = wide ? wideDecodeRun<false>(from, length, to) : 0;
    return done + decodeRun<false>(from + done, length - done, to);
  }
  const std::size_t done = wide ? wideDecodeRun<true>(from, length, to) : 0;
  return done + decodeRun<true>(from + done, length - done, to + done / 2);
}

#else

std::size_t encodeLong(std::span<const std::uint8_t> /*bytes*/, char* /*to*/) {
  return 0;
}

std::size_t decodeLong(const char* from, std::size_t length, std::uint8_t* to) {
  std::size_t at = 0;
  for (; length - at >= 32; at += 32) {
    std::uint8_t wrong = 0;
    for (std::size_t i = at; i < at + 32; ++i) wrong |= valueOf(from[i]);
    if ((wrong & 0x80U) != 0) break;
    for (std::size_t i = at; to != nullptr && i < at + 32; i += 2) {
      to[i / 2] = static_cast<std::uint8_t>(valueOf(from[i]) << 4U | valueOf(from[i + 1]));
    }
  }
  return at;
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
  for (std::size_t i = encodeLong(bytes, to); i < bytes.size(); ++i) {
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
    took(decodeLong(at(), left(), out()) / 2);
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
