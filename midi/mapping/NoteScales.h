#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

/// Scales that a set-up's notes can be held to.
namespace ovka::mapping {

/// A bit a semitone above the root: bit 0 is the root itself.
inline constexpr std::array<std::uint32_t, 7> kScales{
    0xFFF,           // 0: every semitone
    0b101010110101,  // 1: major
    0b010110101101,  // 2: natural minor
    0b001010010101,  // 3: major pentatonic
    0b010010101001,  // 4: minor pentatonic
    0b011010101101,  // 5: dorian
    0b010101010101,  // 6: whole tone
};

/// The note of the scale that is nearest to `note`, the lower of two as near; 0 to 127 as far as
/// the scale is on (1 to 6). `root`: 0 (C) to 11. Another scale leaves the note as it is.
[[nodiscard]] constexpr std::int32_t inScale(std::int32_t note, std::int32_t scale,
                                             std::int32_t root) noexcept {
  if (scale <= 0 || scale >= static_cast<std::int32_t>(kScales.size())) return note;
  const std::uint32_t notes = kScales[static_cast<std::size_t>(scale)];
  const auto belongs = [&](std::int32_t candidate) {
    if (candidate < 0 || candidate > 127) return false;
    const std::int32_t above = (candidate - root % 12 + 12) % 12;
    return (notes >> static_cast<std::uint32_t>(above) & 1U) != 0;
  };
  const std::int32_t held = std::clamp(note, 0, 127);
  for (std::int32_t distance = 0; distance < 12; ++distance) {
    if (belongs(held - distance)) return held - distance;
    if (belongs(held + distance)) return held + distance;
  }
  return held;
}

}  // namespace ovka::mapping
