#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "MidiDesk.h"
#include "SynthesizerSettings.h"

namespace ovka::desktop {

/// Something that music needs, as `ovka doctor` names it.
struct MusicFinding {
  std::string subject;  ///< "ALSA sequencer", "synthesizer"
  bool there = false;
  std::string text;    ///< what was found or what is wrong
  std::string mend;    ///< the command or step that mends it; empty: nothing must be mended
  bool again = false;  ///< restarting MIDI finds it then, else only a new start of the program
};

/// The music of this machine as the windows know it: what sessions play on, what is missing, how
/// the synthesizer sounds. Outlives the workbench.
class MusicMachine {
 public:
  virtual ~MusicMachine() = default;
  /// What sessions play on; its address stays, its contents are complete after look(). nullptr:
  /// nothing is played.
  [[nodiscard]] virtual const MidiMachine* machine() const = 0;
  /// Looks for MIDI systems; may take some seconds. The desk thread, once, before the first
  /// session.
  virtual void look() = 0;
  /// What was found, empty before look(). Any thread.
  [[nodiscard]] virtual std::vector<MusicFinding> findings() const = 0;

  /// How the synthesizer sounds and where. The windows' thread.
  [[nodiscard]] virtual SynthesizerSettings sound() const = 0;
  /// Another sound font or output counts from the next start of the synthesizer, the volume at
  /// once. Any thread.
  virtual void setSound(const SynthesizerSettings& sound) = 0;
};

}  // namespace ovka::desktop
