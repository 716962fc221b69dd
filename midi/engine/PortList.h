#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "MidiVariables.h"

namespace ovka {

/// A destination as the port list meets it.
struct PortEndpoint {
  std::int32_t transport = -1;  ///< index of its MIDI system; -1: the software synthesizer
  std::uint64_t id = 0;
  std::string name;
};

/// The destinations of all MIDI systems under the port numbers that the set-ups store, 0 to 23.
///
/// A destination keeps its number while it is known: when it goes, its slot waits for its return,
/// found again by id or by name; a new one is put behind the last, or, when all slots are given,
/// into one that waits. One thread at a time.
class PortList {
 public:
  struct Slot {
    PortEndpoint endpoint;  ///< id 0: it has gone
    std::string shown;      ///< its name, numbered where the system numbers ("DLSMusicDevice:2")
  };

  /// Puts the present destinations, in their systems' order, into the slots. Returns how many
  /// found no slot. When the synthesizer finds none, it takes the last.
  std::size_t rebuild(std::span<const PortEndpoint> present);
  /// Forgets all slots.
  void clear() { slots_.clear(); }

  /// Slot i is port i; at most 24.
  [[nodiscard]] const std::vector<Slot>& slots() const { return slots_; }
  /// The 24 names: shown names, then "OVKA".
  [[nodiscard]] std::array<std::string, midi::kPorts> names() const;
  /// convertPortNameToInt: the port of that shown name, -1 when there is none.
  [[nodiscard]] std::int32_t convertPortNameToInt(std::string_view name) const;

 private:
  std::vector<Slot> slots_;
};

}  // namespace ovka
