#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace ovka::desktop {

struct Frame;

/// The band powers of the recording as the views saw them, one entry a half second of recording
/// time and channel; playing a stretch again overwrites it. The GUI thread.
class BandHistory {
 public:
  struct Entry {
    std::array<float, 8> bands{};
    float total = -1;  ///< below 0: nothing was seen here
  };

  void take(const Frame& frame);
  void forget() { entries_ = {}; }
  /// Points that an entry stands for at a sample speed.
  [[nodiscard]] static std::int64_t step(std::uint32_t sampleSpeed);
  /// Entry `index` stands for the points from index * step() on.
  [[nodiscard]] Entry at(std::size_t channel, std::int64_t index) const;

 private:
  std::array<std::vector<Entry>, 4> entries_;
  std::uint32_t sampleSpeed_ = 0;
};

/// The spectra of the last two minutes: a row a tenth of a second, from 0 Hz to the half of the
/// sample speed or 130 Hz, whichever is less, each value the greatest of the bins it stands for.
/// Tracks 0 to 3 are the channels, 4 to 11 the coherence pairs (while asked for). The GUI thread.
class SpectrumRows {
 public:
  static constexpr std::size_t kRows = 1200;
  static constexpr double kInterval = 0.1;  ///< s
  static constexpr double kTopHz = 130;
  static constexpr std::size_t kMaxWidth = 1024;
  static constexpr std::size_t kTracks = 12;

  void take(const Frame& frame);
  void forget();
  /// Rows taken in so far; row `number` is kept while number + kRows >= taken().
  [[nodiscard]] std::uint64_t taken() const { return taken_; }
  /// Advances when the meaning of the columns changed and all rows were dropped.
  [[nodiscard]] std::uint64_t layout() const { return layout_; }
  [[nodiscard]] std::size_t width() const { return width_; }
  /// Hz from a value to the next.
  [[nodiscard]] double valueWidth() const { return valueWidth_; }
  /// The values of a row; empty when it is not there.
  [[nodiscard]] std::span<const float> row(std::size_t track, std::uint64_t number) const;
  /// The recording's point when a row was taken.
  [[nodiscard]] std::int64_t pointOf(std::uint64_t number) const;

 private:
  void layOut(const Frame& frame);
  void append(std::size_t track, std::span<const double> bins);

  std::uint64_t taken_ = 0;
  std::uint64_t layout_ = 0;
  std::uint64_t first_ = 0;  ///< the oldest row of the present layout
  std::size_t width_ = 0;
  std::size_t binsPerValue_ = 1;
  double valueWidth_ = 1;
  std::int32_t fftPoints_ = 0;
  std::uint32_t sampleSpeed_ = 0;
  bool logScale_ = false;
  std::int64_t slot_ = -1;
  std::array<std::vector<float>, kTracks> rows_;
  std::vector<std::int64_t> points_;
};

}  // namespace ovka::desktop
