#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "Decimation.h"

namespace ovka::desktop {

/// Least and greatest sample of every stretch of 256 points of the recording, worked out when
/// somebody looks at it and kept until the samples change: minutes and hours draw as fast as
/// seconds. The GUI thread.
class WavePyramid {
 public:
  static constexpr std::int64_t kBlock = 256;
  using Read = std::function<void(std::size_t channel, std::int64_t first, std::span<double> out)>;

  explicit WavePyramid(Read read) : read_(std::move(read)) {}

  /// Everything is to be looked at again: another recording, or other settings of the readers.
  void forget();
  /// Points first ... end - 1 were written.
  void written(std::int64_t first, std::int64_t end);
  /// Points from here on are not part of the recording.
  void limit(std::int64_t end) { end_ = end; }

  /// Positions below `start` stand for the points `length` later (loop mode); length 0: for
  /// nothing.
  void wrap(std::int64_t start, std::int64_t length);

  /// For each column the extent of the points from edges[c] up to edges[c + 1] (rising); stretches
  /// outside the recording are empty. At least the points on both sides of a column that lies
  /// between two points are taken in.
  void columns(std::size_t channel, std::span<const double> edges, std::span<Extent> out);

 private:
  static constexpr std::size_t kChannels = 4;
  [[nodiscard]] Extent block(std::size_t channel, std::int64_t number);
  [[nodiscard]] Extent points(std::size_t channel, std::int64_t first, std::int64_t end);

  Read read_;
  std::int64_t end_ = 0;
  std::int64_t wrapStart_ = 0;
  std::int64_t wrapLength_ = 0;
  std::array<std::vector<Extent>, kChannels> blocks_;  ///< empty: to be looked at
  std::vector<double> scratch_;
};

}  // namespace ovka::desktop
