#pragma once

#include <cstdint>

#include "BufferVariables.h"
#include "JournalCursor.h"

namespace ovka::journalnumbers {

inline constexpr std::int64_t kSecond = 1'000'000'000;  ///< in nanoseconds

[[nodiscard]] inline std::uint64_t pointsOf(const PointRange& range) {
  return range.end > range.first ? static_cast<std::uint64_t>(range.end - range.first) : 0;
}

/// What the present recording takes of the disk: as it turned out so far, else as it could be.
[[nodiscard]] inline double bytesASecond(std::uint64_t bytes, std::uint64_t frames) {
  constexpr std::uint64_t kEnoughFrames = 2000;
  constexpr double kWidestFrame = 4.0 * buffer::kChannels;
  const double frame = frames < kEnoughFrames
                           ? kWidestFrame
                           : static_cast<double>(bytes) / static_cast<double>(frames);
  return frame * static_cast<double>(buffer::SampleSpeed.get());
}

}  // namespace ovka::journalnumbers
