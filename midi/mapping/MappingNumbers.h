#pragma once

#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string_view>

/// Numbers and choices that both mappings share.
namespace ovka::mapping {

/// Truncation toward zero, held at the limits of 32 bits; what is no number gives 0.
[[nodiscard]] inline std::int32_t truncated(double value) noexcept {
  if (std::isnan(value)) return 0;
  if (value <= std::numeric_limits<std::int32_t>::min()) {
    return std::numeric_limits<std::int32_t>::min();
  }
  if (value >= std::numeric_limits<std::int32_t>::max()) {
    return std::numeric_limits<std::int32_t>::max();
  }
  return static_cast<std::int32_t>(value);
}

/// Single precision, held at the largest single.
[[nodiscard]] inline float single(double value) noexcept {
  constexpr double kLargest = std::numeric_limits<float>::max();
  if (value > kLargest) return std::numeric_limits<float>::max();
  if (value < -kLargest) return std::numeric_limits<float>::lowest();
  return static_cast<float>(value);
}

/// The send intervals (seconds) by their index: single-precision constants, widened. Kept on
/// purpose: index 0 waits a tenth of what its label says.
inline constexpr std::array<double, 7> kIntervals{double{0.001F}, double{0.025F}, double{0.05F},
                                                  double{0.1F},   double{0.2F},   double{0.5F},
                                                  double{1.0F}};
inline constexpr std::array<std::string_view, 7> kIntervalLabels{
    "every 0.01 second", "every 0.025 second", "every 0.05 second", "every 0.1 second",
    "every 0.2 second",  "every 0.5 second",   "every 1 second"};
inline constexpr std::array<std::string_view, 24> kPortLabels{
    "MIDI port 1",  "MIDI port 2",  "MIDI port 3",  "MIDI port 4",  "MIDI port 5",  "MIDI port 6",
    "MIDI port 7",  "MIDI port 8",  "MIDI port 9",  "MIDI port 10", "MIDI port 11", "MIDI port 12",
    "MIDI port 13", "MIDI port 14", "MIDI port 15", "MIDI port 16", "MIDI port 17", "MIDI port 18",
    "MIDI port 19", "MIDI port 20", "MIDI port 21", "MIDI port 22", "MIDI port 23", "MIDI port 24"};
inline constexpr std::array<std::string_view, 16> kChannelLabels{
    "1", "2", "3", "4", "5", "6", "7", "8", "9", "10", "11", "12", "13", "14", "15", "16"};

}  // namespace ovka::mapping
