#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "ByteCodes.h"
#include "SampleLine.h"
#include "Truncate.h"

// The decode of a line, to be compiled into the loop over a block. kHold says whether values beyond
// 32 bits can occur and are held at the limits; without it nothing branches on a value.

namespace ovka {
namespace line {

inline constexpr std::int32_t kMiddle12 = 512;  // of the text code, as the amplifier centres it
inline constexpr std::int32_t kMiddle24 = 0x800000;  // of the offset-binary code
inline constexpr std::int32_t kHexPairScale = 2000;  // of the channel between the hex groups
inline constexpr double kStep24 = 1.25;              // of all 24-bit values

/// Toward zero.
template <bool kHold>
[[nodiscard]] std::int32_t truncated(double value) {
  if constexpr (kHold) return truncateTo<std::int32_t>(value);
  return static_cast<std::int32_t>(value);
}

/// The first three of four bytes as one number; all four are read at once.
[[nodiscard]] inline std::int32_t first24(const std::uint8_t* bytes) {
  const std::uint32_t word = std::uint32_t{bytes[0]} << 24U | std::uint32_t{bytes[1]} << 16U |
                             std::uint32_t{bytes[2]} << 8U | std::uint32_t{bytes[3]};
  return static_cast<std::int32_t>(word >> 8U);
}

}  // namespace line

// All factors are single precision here, so every product is rounded to single precision.
template <bool kHold>
[[gnu::always_inline]] inline std::int32_t SampleLine::text12(std::int32_t digits,
                                                              Side side) const {
  const std::int32_t code = digits - (line::kMiddle12 + textOffset[side]);
  const float scaled = amplifierGain * 2.0F * static_cast<float>(code) * gain[side];
  return line::truncated<kHold>(static_cast<double>(scaled));
}

template <bool kHold>
[[gnu::always_inline]] inline Frame SampleLine::decodeText12(const std::uint8_t* text) const {
  Frame frame;
  frame.set(1, text12<kHold>(hex12(text), Left));
  frame.set(2, text12<kHold>(hex12(text + 4), Right));
  if (config <= 1 && showReverseWave) {
    frame.set(3, frame.values[1]);
    frame.set(4, line::truncated<kHold>(-static_cast<double>(frame.values[2])));
  }
  if (config == 2 || config == 3) frame.set(3, text12<kHold>(hex12(text + 8), Left));
  if (config == 3) frame.set(4, text12<kHold>(hex12(text + 12), Right));
  return frame;
}

// The gain factor stays fractional here; the last factor is double precision.
template <bool kHold>
[[gnu::always_inline]] inline std::int32_t SampleLine::text24(std::int32_t high, std::int32_t low,
                                                              Side side) const {
  using Number = std::conditional_t<kHold, std::int64_t, std::int32_t>;
  const Number code = high * 4096 + low - line::kMiddle24;
  Number value = 0;
  if (filterSetUp >= 0 && filterSetUp <= 5) value = code - static_cast<Number>(binaryOffset[side]);
  if (filterSetUp == 6) value = code;
  const float scaled = amplifierGain * static_cast<float>(value) * gain[side];
  return line::truncated<kHold>(static_cast<double>(scaled) * line::kStep24);
}

template <bool kHold>
[[gnu::always_inline]] inline Frame SampleLine::decodeText24(const std::uint8_t* text) const {
  Frame frame;
  frame.set(1, text24<kHold>(hex12(text), hex12(text + 4), Left));
  frame.set(2, text24<kHold>(hex12(text + 8), hex12(text + 12), Right));
  if (config == 2) {
    const std::int32_t between = hex12(text[3], text[7], text[11]);
    const auto value = static_cast<double>(text12<kHold>(between, Left));
    frame.set(3, line::truncated<kHold>(static_cast<double>(line::kHexPairScale) * value));
  }
  return frame;
}

// The integer part of the gain factor: a gain below 1 silences the side, as the amplifier's users
// know it.
template <bool kHold>
[[gnu::always_inline]] inline std::int32_t SampleLine::binary24Of(std::int32_t code,
                                                                  std::int32_t channel) const {
  using Number = std::conditional_t<kHold, std::int64_t, std::int32_t>;
  const Side side = channel == 1 || channel == 3 ? Left : Right;
  Number value = code - line::kMiddle24;
  if (channel <= 2) value -= static_cast<Number>(binaryOffset[side]);
  value *= line::truncated<kHold>(static_cast<double>(gain[side]));
  const float scaled = amplifierGain * static_cast<float>(value);
  return line::truncated<kHold>(static_cast<double>(scaled) * line::kStep24);
}

template <bool kHold>
[[gnu::always_inline]] inline Frame SampleLine::decodeBinary24(const std::uint8_t* bytes) const {
  Frame frame;
  frame.set(1, binary24Of<kHold>(line::first24(bytes), 1));
  frame.set(2, binary24Of<kHold>(line::first24(bytes + 3), 2));
  frame.set(3, binary24Of<kHold>(line::first24(bytes + 6), 3));
  frame.set(4, binary24Of<kHold>(line::first24(bytes + 9), 4));
  // The fifth channel of the amplifier is the buffer's auxiliary channel 0.
  frame.set(0, binary24Of<kHold>(line::first24(bytes + 12), 5));
  return frame;
}

template <typename Use>
void SampleLine::withDecode(Use&& use) const {
  // The settings are captured as a copy: no store of a sample can then seem to change them.
  const bool bits24 = model >= 4 && model <= 9;
  const bool inRange = staysInRange();
  if (inRange && model <= 3 && !oldBluetooth) {
    use([s = *this](const std::uint8_t* bytes)
            __attribute__((always_inline)) { return s.decodeText12<false>(bytes); });
  } else if (inRange && bits24 && config <= 2) {
    use([s = *this](const std::uint8_t* bytes)
            __attribute__((always_inline)) { return s.decodeText24<false>(bytes); });
  } else if (inRange && bits24 && config == 3) {
    use([s = *this](const std::uint8_t* bytes)
            __attribute__((always_inline)) { return s.decodeBinary24<false>(bytes); });
  } else {
    use([this](const std::uint8_t* bytes) __attribute__((always_inline)) { return decode(bytes); });
  }
}

}  // namespace ovka
