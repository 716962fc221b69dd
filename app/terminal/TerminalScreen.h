#pragma once

#include <chrono>
#include <string>
#include <string_view>

#include "StopSignals.h"

namespace ovka::terminal {

/// The terminal in full-screen use: alternate screen, hidden cursor, keys without Enter and without
/// echo. This is the terminal face's own platform file (termios, window size, signals).
///
/// Everything is put back when the object goes, when the process ends by exit(), by abort() or by a
/// fault, and while it is stopped by Ctrl-Z. One at a time; main thread.
class TerminalScreen {
 public:
  struct Size {
    int width = 80;
    int height = 24;
  };

  /// True when standard input and output are both a terminal that can move its cursor.
  [[nodiscard]] static bool usable();

  explicit TerminalScreen(StopSignals& stop);
  ~TerminalScreen();
  TerminalScreen(const TerminalScreen&) = delete;
  TerminalScreen& operator=(const TerminalScreen&) = delete;

  /// The present size; a terminal that does not know it counts as 80 by 24.
  [[nodiscard]] Size size() const;

  /// Writes one frame whole. False when the terminal is gone.
  bool draw(std::string_view frame);

  /// Waits for a key; 0 when none came or the window changed its size, -1 when the terminal is
  /// gone. Keys that send more than one character (arrows) are swallowed; keys typed fast wait
  /// their turn.
  int key(std::chrono::nanoseconds atMost);

 private:
  int takeTyped();

  StopSignals& stop_;
  std::string typed_;  ///< read, not yet given out
};

}  // namespace ovka::terminal
