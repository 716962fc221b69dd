#pragma once

#include <cstdint>
#include <mutex>

#include "LossCounters.h"

namespace ovka {

/// Counts the points that a line left out against the clock, into `gapPoints`: what is still
/// missing kSettle after a silence of more than kStall while acquiring, and the time of a hang-up
/// as it passes. A line that was only read late owes nothing: its bytes come in one go afterwards.
/// Paused and playback time never counts. Allocates nothing; any thread.
class GapMeter {
 public:
  static constexpr std::int64_t kStall = 250'000'000;     // nanoseconds
  static constexpr std::int64_t kSettle = 1'000'000'000;  // nanoseconds
  /// Less than this is how unevenly lines deliver.
  static constexpr std::int64_t kUneven = 100'000'000;  // nanoseconds

  explicit GapMeter(LossCounters& losses) : losses_(losses) {}

  /// Bytes of so many points came at `now` (nanoseconds, as all times here).
  void data(std::int64_t now, std::int64_t points);
  /// Acquisition stands still (pause, playback): silence does not count from the last byte on.
  void idle(std::int64_t now);
  /// The line hung up: the silence since its last byte is a gap already.
  void lost(std::int64_t now);
  /// Time goes on while the line is lost and acquisition runs.
  void missing(std::int64_t now);
  /// Forgets everything, for a line that the user opens or closes.
  void restart();

 private:
  void owe(std::int64_t now, std::int64_t points);
  void settle();
  void count(std::int64_t nanoseconds);

  LossCounters& losses_;
  std::mutex lock_;            // held for a few assignments only
  std::int64_t since_ = -1;    // last byte, or end of what was counted; -1 before the first byte
  std::int64_t owed_ = 0;      // time since before the silence that no point came for
  std::int64_t settleAt_ = 0;  // when that is counted; 0: nothing is owed
  std::int64_t rest_ = 0;      // part of a point that is not counted yet, in point-nanoseconds
  bool counting_ = false;      // within a hang-up
  bool idle_ = false;          // stood still since the last byte
};

}  // namespace ovka
