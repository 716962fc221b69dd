#pragma once

#include <QString>
#include <cstdint>

#include "Feed.h"

namespace ovka::desktop {

/// Round numbers along an axis.
struct Ticks {
  double first = 0;
  double step = 1;
  int count = 0;
  int decimals = 0;

  [[nodiscard]] double at(int index) const { return first + index * step; }
};
/// Steps of 1, 2 or 5 times a power of ten, at most `most` (1 or more) of them from low to high.
[[nodiscard]] Ticks ticksOf(double low, double high, double most);
/// The least of 1, 2, 5, 10 ... that is not below a value above 0.
[[nodiscard]] double niceCeiling(double value);
/// A number for a person, with a true minus sign; at most `decimals` places.
[[nodiscard]] QString numberText(double value, int decimals);
/// Three or so digits, whatever the size.
[[nodiscard]] QString figureText(double value);
/// "1:05", "1:02:03", with tenths where `step` (s) asks for them.
[[nodiscard]] QString clockText(double seconds, double step);

/// How levels become what a person reads: microvolts r.m.s. or the outputs' own levels, linear or
/// in decibels (of the unit). Spectra that the engine keeps in its logarithmic scale are shown in
/// that.
class ValueScale {
 public:
  ValueScale() = default;
  ValueScale(std::int32_t unit, std::int32_t scale, bool logScale)
      : microvolts_(unit == 0 && !logScale), decibels_(scale == 1 && !logScale), log_(logScale) {}

  /// Height of a level of a channel on the axis; decibels end at `floor()`.
  [[nodiscard]] double shown(double level, const FrameChannel& channel) const;
  /// The same for a factor on levels that was taken from a channel before (see factorOf).
  [[nodiscard]] double shown(double level, double factor) const;
  [[nodiscard]] double factorOf(const FrameChannel& channel) const;
  [[nodiscard]] bool decibels() const { return decibels_; }
  /// Where a picture of decibels begins.
  [[nodiscard]] double floor() const { return decibels_ ? -40.0 : 0.0; }
  [[nodiscard]] QString unit() const;
  bool operator==(const ValueScale&) const = default;

 private:
  bool microvolts_ = true;
  bool decibels_ = false;
  bool log_ = false;
};

/// Full scale that follows the signal calmly: at once upward, downward only after the signal stayed
/// small for some seconds, always a round number.
class AutoTop {
 public:
  explicit AutoTop(double least) : least_(least), top_(least) {}
  /// The full scale for a greatest value seen now, at a time (s).
  double follow(double greatest, double time);
  [[nodiscard]] double top() const { return top_; }
  /// The next value sets the scale anew.
  void reset();

 private:
  double least_;
  double top_;
  double greatest_ = 0;  ///< since `since_`
  double since_ = -1;    ///< when it was last large enough (s); below 0: never
};

}  // namespace ovka::desktop
