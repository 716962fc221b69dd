#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "MidiMapping.h"
#include "Shared.h"

namespace ovka::desktop {

/// The two mappings, each with set-ups of its own.
enum class Mapping : std::uint8_t { Bands, Singles };

enum class MusicKind : std::uint8_t {
  Switch,
  Choice,  ///< a list; `labels` separated by '|'
  Number,
  Slider,
  Note,  ///< a note, or in control mode a controller
  Mode,  ///< a button that stays down
  Port,  ///< a list of the port list
};

/// One control of a mapping's page; one of eight where its selector has a % for the band.
struct MusicRow {
  std::string_view selector;
  std::string_view field;
  MusicKind kind;
  std::string_view label;
  std::string_view tip;  ///< the term in one sentence
  std::string_view labels = {};
  double lowest = 0;  ///< of a Slider
  double highest = 0;
  double step = 1;  ///< of a Slider or Number
};

[[nodiscard]] std::span<const MusicRow> musicRows(Mapping mapping);
[[nodiscard]] const MusicRow& musicRow(Mapping mapping, std::string_view selector);
[[nodiscard]] const SetupField& fieldOf(Mapping mapping, std::string_view name);
[[nodiscard]] std::span<const SetupField> fieldsOf(Mapping mapping);
/// The set-up that the mapping's page shows.
[[nodiscard]] Shared<std::int32_t>& shownOf(Mapping mapping);
/// The name of an action as the registry has it: with its owner before it where both mappings have
/// one of that selector. `band`: 0 to 7.
[[nodiscard]] std::string actionName(Mapping mapping, std::string_view selector,
                                     std::size_t band = 0);

/// Whether a value moves by itself while the set-up plays; such a one is never a pending edit.
[[nodiscard]] bool movesByItself(const SetupField& field);
/// Whether the edit copy of a set-up holds something that Set would bring into force.
[[nodiscard]] bool pending(Mapping mapping, std::size_t setup);

}  // namespace ovka::desktop
