#pragma once

#include <cstdint>
#include <string>

#include "Canvas.h"
#include "LiveSnapshot.h"

namespace ovka::terminal {

/// What a key asks for.
enum class LiveKey : std::uint8_t { None, Quit, Pause, Loop, ResetCounters, Shares, Panic, Help };

/// The meaning of a character read from the keyboard; letters in either case.
[[nodiscard]] LiveKey liveKeyOf(char character);

/// Finds the top of a bar scale shared by all bars of a screen: a round number (1, 2, 5 times a
/// power of ten) that rises at once with the largest value and falls slowly, so that bars of quiet
/// moments stay comparable.
class AutoScale {
 public:
  /// Takes the largest value of a picture drawn at `now` (seconds, any start).
  void update(double largest, double now);
  [[nodiscard]] double top() const { return top_; }
  void reset() { *this = AutoScale(); }

 private:
  double held_ = 0;  ///< the largest value, decaying
  double top_ = 1;
  double last_ = 0;
  bool started_ = false;
};

/// The full-screen picture of a running chain: a bar a band and channel, the peaks, the rates, what
/// was lost, the recording's time, the system's last lines. It computes nothing of the analysis and
/// knows no terminal: it fills a canvas. One thread.
class LiveView {
 public:
  explicit LiveView(Look look) : look_(look) {}

  /// Keys that change the picture only; true when it was one of those.
  bool press(LiveKey key);

  /// Draws a snapshot taken at `now` (seconds, any start) in whatever size there is; from 80 by 24
  /// on everything has room, below it the less important lines go first.
  [[nodiscard]] Canvas draw(const LiveSnapshot& snapshot, int width, int height, double now);
  [[nodiscard]] const Look& look() const { return look_; }

 private:
  Look look_;
  AutoScale values_;
  AutoScale shares_;
  bool showShares_ = false;
  bool showHelp_ = false;
};

}  // namespace ovka::terminal
