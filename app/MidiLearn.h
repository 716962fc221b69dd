#pragma once

#include <cstdint>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "ActionRegistry.h"
#include "MidiMapping.h"
#include "QZMessageParser.h"

namespace ovka {

/// MIDI learn: knobs and faders of a controller bound to gain and band edges of the set-ups. A
/// binding is a variable of its set-up (LearnGainX and its like), so documents and presets keep it.
///
/// A target waits for the next Control Change and is bound to its controller, which lets go of
/// whatever it moved before. From then on its values 0 to 127 move the target linearly: the gain
/// from 0 to 10, band edges from 0 to 60 Hz, values from 0 to 100; both copies of the set-up. What
/// comes in carries the channel gChannel. Controllers 120 to 127 are channel modes, never bound.
///
/// Arming: any thread. Messages: the main thread.
class MidiLearn {
 public:
  /// Both outlive it.
  MidiLearn(MidiMapping& bands, MidiMapping& singles);

  /// The next controller moves that value ("LowF1X[3]"), in place of whatever waited before. Empty
  /// when done, else one line; nothing waits anew then.
  [[nodiscard]] std::string arm(std::string_view target);
  /// Nothing waits any more.
  void cancel();
  /// What waits; empty: nothing.
  [[nodiscard]] std::string armed() const;

  /// An incoming message; anything but a Control Change is left alone.
  void take(const MidiMessage& message);

  /// learnGainNote:, learnLowF:, learnHighF: (the band, 1 to 8) and learnInputLowF: and its like,
  /// for the shown set-ups; learnCancel:. What is wrong goes to the console.
  void addActions(ActionRegistry& to);

 private:
  /// Something that a controller can move.
  struct Row {
    const SetupField* field;
    const SetupField* binding;
    MidiMapping* mapping;
    double highest;  ///< value at 127; 0 at 0
  };
  struct Target {
    const Row* row;
    std::size_t band;
    std::size_t setup;
    std::string name;
  };

  void addRow(MidiMapping& mapping, std::string_view field, std::string_view binding,
              double highest);
  void armShown(const std::string& target);
  [[nodiscard]] std::optional<Target> find(std::string_view target, std::string& problem) const;
  void bind(const Target& target, std::int32_t controller);
  void move(std::int32_t controller, std::int32_t value);

  MidiMapping& bands_;
  MidiMapping& singles_;
  std::vector<Row> rows_;
  mutable std::mutex lock_;  // guards what waits
  std::optional<Target> armed_;
};

}  // namespace ovka
