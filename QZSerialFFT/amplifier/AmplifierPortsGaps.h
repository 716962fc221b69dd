#pragma once

#include <cstdint>
#include <mutex>

#include "LossCounters.h"

namespace ovka {

/// Counts the points that a line left out against the clock, into `gapPoints`: every silence of
/// more than kStall while acquiring, once data return, and the time of a hang-up as it passes.
/// Paused and playback time never counts. Allocates nothing; any thread.
class GapMeter {
 public:
  static constexpr std::int64_t kStall = 250'000'000;  // nanoseconds

  explicit GapMeter(LossCounters& losses) : losses_(losses) {}

  /// Bytes came at `now` (nanoseconds, as all times here).
  void data(std::int64_t now);
  /// Acquisition stands still (pause, playback): silence does not count from the last byte on.
  void idle(std::int64_t now);
  /// The line hung up: the silence since its last byte is a gap already.
  void lost(std::int64_t now);
  /// Time goes on while the line is lost and acquisition runs.
  void missing(std::int64_t now);
  /// Forgets everything, for a line that the user opens or closes.
  void restart();

 private:
  void count(std::int64_t now);

  LossCounters& losses_;
  std::mutex lock_;          // held for a few assignments only
  std::int64_t since_ = -1;  // last byte, or end of what was counted; -1 before the first byte
  std::int64_t rest_ = 0;    // part of a point that is not counted yet, in point-nanoseconds
  bool counting_ = false;    // within a hang-up
  bool idle_ = false;        // stood still since the last byte
};

}  // namespace ovka
