#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "CaptureWriter.h"
#include "CapturingSerialPorts.h"
#include "DocumentDesk.h"
#include "Engine.h"
#include "LinuxAddressSpace.h"
#include "LinuxClock.h"
#include "LinuxRunLoop.h"
#include "LinuxSerialPorts.h"
#include "LinuxThreadLauncher.h"
#include "LiveReplay.h"
#include "PseudoTerminal.h"
#include "SimulatorOptions.h"
#include "SimulatorServer.h"

namespace ovka {

/// What a live session runs on.
struct LiveChoice {
  /// Lines of ports 1 to 4, in that order; empty with a demo.
  std::vector<std::string> ports;
  /// The virtual amplifier inside, instead of lines.
  bool demo = false;
  /// Its model, configuration and speed follow the settings.
  SimulatorOptions amplifier;
  /// A capture whose lines come again at the speed at which they were recorded, with its settings
  /// before all others, instead of lines; empty for none. At its end the session pauses.
  std::string replay;
  /// The port that the port preset asks to be switched on at the start, instead of lines.
  bool rememberedPort = false;
  /// A preset that is applied first, a name in the folder of presets or a path; empty for none.
  std::string preset;
  /// Settings, each "NAME=VALUE", applied in order before anything starts.
  std::vector<std::string> assignments;
  /// A file that keeps every received block; empty for none.
  std::string capture;
  bool overwriteCapture = false;
  /// Outlives the session; nullptr: nothing is kept on disk.
  const DocumentMachine* documents = nullptr;
  /// Outlives the session; nullptr: nothing is played.
  const MidiMachine* midi = nullptr;
};

/// The engine on this machine: real clock, threads and serial lines, optionally the virtual
/// amplifier on a pseudo-terminal inside the process or the lines of a capture, optionally
/// everything received kept in a capture. Made, opened and closed by one thread; the engine's own
/// threads run in between.
class LiveSession {
 public:
  LiveSession();
  /// Closes, if that was not done.
  ~LiveSession();
  LiveSession(const LiveSession&) = delete;
  LiveSession& operator=(const LiveSession&) = delete;

  enum class Problem : std::uint8_t { None, File, Setting, Preset, NoPort, Port, Output, Memory };
  struct Opened {
    Problem problem = Problem::None;
    std::string explanation;  ///< one line; empty when open
  };

  [[nodiscard]] Opened open(const LiveChoice& choice);
  /// Ends the threads, closes the lines, completes the capture. Empty, or one line about a capture
  /// that is not whole. What was recorded stays readable through engine().
  std::string close();

  Engine& engine() { return *engine_; }
  LinuxSerialPorts& serial() { return serial_; }
  /// What the samples come from, for a person: a path, or "virtual amplifier on PATH".
  [[nodiscard]] const std::string& source() const { return source_; }
  /// Blocks that the capture had no room for, and the errno that ended it (0: none).
  [[nodiscard]] std::uint64_t captureLostBlocks() const;
  [[nodiscard]] int captureFailure() const;
  [[nodiscard]] std::uint64_t captureBytes() const;
  /// The replayed capture has nothing left; `replayDamage` is one line when that came before its
  /// end. Any thread.
  [[nodiscard]] bool replayEnded() const { return replayEnded_.load(); }
  [[nodiscard]] std::string replayDamage() const;
  [[nodiscard]] const LinuxClock& clock() const { return clock_; }

 private:
  [[nodiscard]] Opened startAmplifier(SimulatorOptions options);
  [[nodiscard]] Opened startCapture(const LiveChoice& choice);
  [[nodiscard]] Opened startReplay(const LiveChoice& choice);
  [[nodiscard]] SerialPorts& lines();
  void watchReplay();
  void restWhilePaused();
  [[nodiscard]] Opened applySettings(const LiveChoice& choice);
  [[nodiscard]] Opened openPorts();
  [[nodiscard]] Opened openRememberedPort(const LiveChoice& choice);

  LinuxClock clock_;
  LinuxSerialPorts serial_;
  std::unique_ptr<LiveReplay> replay_;
  LinuxAddressSpace space_;
  // The amplifier has threads of its own, so that it still answers while the engine closes its
  // line.
  LinuxThreadLauncher amplifierThreads_;
  PseudoTerminal terminal_;
  std::unique_ptr<VirtualAmplifier> amplifier_;
  std::unique_ptr<SimulatorServer> server_;
  FileSink captureFile_;
  std::unique_ptr<CaptureWriter> writer_;
  // They tick every millisecond and play.
  LinuxThreadLauncher threads_{"runMIDIbandThread:", "runMIDIThread:"};
  LinuxRunLoop mainLoop_;
  std::unique_ptr<CapturingSerialPorts> capturing_;
  std::unique_ptr<Engine> engine_;
  std::thread mainThread_;
  std::vector<std::string> ports_;
  std::string source_;
  std::atomic<bool> replayEnded_{false};
  bool closed_ = false;
};

}  // namespace ovka
