#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "AddressSpace.h"
#include "CaptureReader.h"
#include "Engine.h"
#include "ManualTime.h"
#include "ReplaySerialPorts.h"

namespace ovka {

/// A capture run through the whole chain on a manual clock: the system's own opening, polls, timers
/// and analysis, faster than real time and the same on every run. One thread.
class ReplaySession {
 public:
  /// Gives what plays in step with the replay's clock, which exists from open() on; what it gives
  /// outlives the session.
  using MidiOn = std::function<const MidiMachine*(const Clock&)>;

  /// `space` holds the samples; it and `documents` (nullptr: nothing is kept on disk) outlive the
  /// session. `midi` empty: nothing is played.
  explicit ReplaySession(AddressSpace& space, const DocumentMachine* documents = nullptr,
                         MidiOn midi = {});
  ~ReplaySession();

  /// Why a session could not be opened.
  enum class Problem : std::uint8_t { None, File, Setting, Memory };
  struct Opened {
    Problem problem = Problem::None;
    std::string explanation;  ///< one line; empty when open
  };

  /// Opens a capture, takes over its settings, then the caller's ("fftp=2048", each), starts the
  /// engine and opens the captured lines. `prepare` gets the engine before all that; it may throw.
  [[nodiscard]] Opened open(const std::string& path, const std::vector<std::string>& assignments,
                            const std::function<void(Engine&)>& prepare = {});

  /// Moves the clock on. False once the capture has nothing left and what was on its way has
  /// arrived.
  bool step(std::chrono::nanoseconds duration);
  /// Runs to the end of the capture.
  void run();

  /// Empty, or why the capture ended before its end: "cut off at byte N after K blocks".
  [[nodiscard]] const std::string& damage() const { return reader_.error(); }
  /// Time since the start of the capture.
  [[nodiscard]] std::chrono::nanoseconds elapsed() const;
  [[nodiscard]] std::uint64_t skippedBlocks() const;
  Engine& engine() { return *engine_; }

 private:
  FileSource source_;
  CaptureReader reader_;
  AddressSpace& space_;
  const DocumentMachine* documents_;
  MidiOn midi_;
  std::unique_ptr<ManualTime> time_;
  std::unique_ptr<ReplaySerialPorts> serial_;
  std::unique_ptr<Engine> engine_;
  int quietSteps_ = 0;
};

}  // namespace ovka
