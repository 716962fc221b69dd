#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>

#include "Clock.h"
#include "Shell.h"

namespace ovka {

/// The playback clock of the text-annotation track: in playback the current point of the buffer
/// follows it. Any thread.
class TypeTextHere final : public AnnotationTrack {
 public:
  explicit TypeTextHere(Clock& clock) : clock_(clock) {}

  /// Goes on from the present point at `SampleSpeed` points a second.
  void play();
  /// Holds the present point.
  void pause();
  /// Moves to a point, playing or not.
  void seek(std::int64_t point);

  /// getLengthofTime: the playback time as a sample point.
  [[nodiscard]] std::int64_t getLengthofTime() override;
  /// Back to `ploopStart`, playing or not.
  void gotoStartWhenLoopmodeAndEnd() override;
  /// autoReONport: remembered for whoever reopens ports.
  void autoReONport(std::int32_t on) override;

 private:
  [[nodiscard]] std::int64_t present() const;

  Clock& clock_;
  std::mutex lock_;
  std::int64_t point_ = 0;      // where playback stood at startedAt_
  std::int64_t startedAt_ = 0;  // nanoseconds of the clock
  bool playing_ = false;
};

}  // namespace ovka
