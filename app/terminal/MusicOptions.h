#pragma once

#include <cstdio>
#include <memory>
#include <string>

#include "LiveMidi.h"
#include "LiveSession.h"
#include "Options.h"

namespace ovka::terminal {

/// The options of `live` about MIDI and sound.
[[nodiscard]] OptionGroup musicGroup();

/// The MIDI of a line with those options. Made before the first thread of the program, outlives the
/// chain. Main thread.
class Music {
 public:
  explicit Music(const Arguments& arguments);

  /// Whether the line asks for MIDI at all; a preset does as well, for it may hold set-ups that
  /// play.
  [[nodiscard]] bool wanted() const { return wanted_; }
  /// What the session gets: machine, preset, settings. Throws Failure.
  void prepare(LiveChoice& choice);
  /// The engine runs: destinations are known now. Throws Failure when `--to` is none of them.
  void started(Engine& engine);
  /// The session has ended: completes the log. Throws Failure when it is not whole.
  void finish();

 private:
  void openLog(const std::string& path);

  const Arguments& arguments_;
  bool wanted_;
  std::unique_ptr<LiveMidi> midi_;
  MidiMachine machine_;
  std::string log_;
  std::FILE* logFile_ = nullptr;
  int logError_ = 0;
};

}  // namespace ovka::terminal
