#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "SimulatorServer.h"
#include "VirtualAmplifier.h"

namespace ovka::terminal {

/// What a person or a script types to a running virtual amplifier, a line each:
///   ack LETTER        an acknowledgement, four times the letter (a to z)
///   eyes open|closed  alpha waves fall or rise
///   overflow N        a report of N lost samples
///   hang-up [SECONDS] the line goes away, for 2 seconds unless said
/// One thread.
class SimulatorConsole {
 public:
  SimulatorConsole(VirtualAmplifier& amplifier, SimulatorServer& server)
      : amplifier_(amplifier), server_(server) {}

  /// Takes what waits on standard input, without waiting. A terminal is read only while this
  /// program is in front: reading in the background would stop it.
  void poll(std::int64_t now);

  /// Carries one line out. Empty when done, else one line that says what is wrong.
  std::string command(std::string_view line, std::int64_t now);

 private:
  VirtualAmplifier& amplifier_;
  SimulatorServer& server_;
  std::string pending_;
  bool open_ = true;
};

}  // namespace ovka::terminal
