#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "MidiTransport.h"

namespace ovka {

/// Why a MIDI system cannot be used, and the command that mends it; both empty: it can.
struct MidiTrouble {
  std::string reason;
  std::string mend;
};

/// A MIDI system of this machine.
struct MidiSystem {
  std::string name;    ///< as MidiTransport::name()
  std::string choice;  ///< what openMidiTransports takes for it
  bool available = false;
  MidiTrouble trouble;  ///< when it is not available
  /// Not opened yet. Null when the choice leaves it out, or it was left out when this was built.
  std::unique_ptr<MidiTransport> transport;
};

/// What openMidiTransports takes, for help texts and checks.
inline constexpr std::string_view kMidiChoices[] = {"auto", "alsa", "jack", "all", "none"};

/// Looks which MIDI systems are there, always all of them in the order in which they are preferred,
/// and makes the transports of the chosen ones. "auto": the first that is available; one is
/// enough, as bridges show every endpoint in both. "alsa", "jack": that one, available or not
/// (open() then says why not). "all": those available. "none" and anything else: no transport. Main
/// thread; takes up to some seconds when a server hangs.
std::vector<MidiSystem> openMidiTransports(std::string_view choice);

/// A transport by its name(); null when there is none of that name in this build.
std::unique_ptr<MidiTransport> makeMidiTransport(std::string_view name);

/// What an errno of opening means for the user.
MidiTrouble alsaTrouble(int error);
MidiTrouble jackTrouble(int error);

/// Null in a build without the library.
std::unique_ptr<MidiTransport> makeAlsaMidiTransport();
std::unique_ptr<MidiTransport> makeJackMidiTransport();

}  // namespace ovka
