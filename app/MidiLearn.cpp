#include "MidiLearn.h"

#include <array>
#include <utility>

#include "Print.h"
#include "SetMIDIVariables.h"
#include "SetMIDIbandVariables.h"

namespace ovka {
namespace {

constexpr double kHighestGain = 10;
constexpr double kHighestEdge = 60;    // Hz
constexpr double kHighestValue = 100;  // in the units of V's source

/// The controller of a Control Change as the bindings keep it; 0: no such message. Channel-mode
/// messages (MIDI Manufacturers Association, MIDI 1.0, table 5) look like one and are none.
std::int32_t controllerOf(const MidiMessage& message) {
  constexpr std::uint8_t kFirstChannelMode = 120;
  if (message.bytes.size() != 3 || (message.bytes[0] & 0xF0U) != 0xB0U) return 0;
  if (message.bytes[1] >= kFirstChannelMode) return 0;
  return 1 + (message.bytes[0] & 0x0F) * 128 + message.bytes[1];
}

}  // namespace

MidiLearn::MidiLearn(MidiMapping& bands, MidiMapping& singles) : bands_(bands), singles_(singles) {
  addRow(bands, "gainNoteX", "LearnGainX", kHighestGain);
  addRow(bands, "LowF1X", "LearnLowF1X", kHighestEdge);
  addRow(bands, "HighF1X", "LearnHighF1X", kHighestEdge);
  addRow(singles, "LowFX", "LearnLowFX", kHighestEdge);
  addRow(singles, "HighFX", "LearnHighFX", kHighestEdge);
  addRow(singles, "LowVX", "LearnLowVX", kHighestValue);
  addRow(singles, "HighVX", "LearnHighVX", kHighestValue);
}

void MidiLearn::addRow(MidiMapping& mapping, std::string_view field, std::string_view binding,
                       double highest) {
  rows_.push_back({findField(mapping.fields(), field).value().field,
                   findField(mapping.fields(), binding).value().field, &mapping, highest});
}

std::optional<MidiLearn::Target> MidiLearn::find(std::string_view target,
                                                 std::string& problem) const {
  std::string ofBands;
  std::string ofSingles;
  std::optional<SetupPlace> place = findPlace(bands_.fields(), target, ofBands);
  if (!place) place = findPlace(singles_.fields(), target, ofSingles);
  if (!place) {
    const bool known = findField(bands_.fields(), target.substr(0, target.find('['))).has_value();
    problem = known ? ofBands : ofSingles;
    return std::nullopt;
  }
  for (const Row& row : rows_) {
    if (row.field == place->field)
      return Target{&row, place->row, place->setup, std::string(target)};
  }
  problem = "a controller cannot move " + std::string(target) +
            "; it can move gainNoteX, LowF1X to HighF8X, LowFX, HighFX, LowVX and HighVX";
  return std::nullopt;
}

std::string MidiLearn::arm(std::string_view target) {
  std::string problem;
  std::optional<Target> found = find(target, problem);
  if (!found) return problem;
  const std::scoped_lock guard(lock_);
  armed_ = std::move(found);
  return {};
}

void MidiLearn::cancel() {
  const std::scoped_lock guard(lock_);
  armed_.reset();
}

std::string MidiLearn::armed() const {
  const std::scoped_lock guard(lock_);
  return armed_ ? armed_->name : std::string();
}

void MidiLearn::take(const MidiMessage& message) {
  const std::int32_t controller = controllerOf(message);
  if (controller == 0) return;
  std::optional<Target> target;
  {
    const std::scoped_lock guard(lock_);
    target = std::exchange(armed_, std::nullopt);
  }
  if (target) bind(*target, controller);
  move(controller, message.bytes[2]);
}

void MidiLearn::bind(const Target& target, std::int32_t controller) {
  for (const Row& row : rows_) {
    const SetupAccess& access = row.binding->access;
    for (std::size_t i = 0; i < access.rows * midi::kSetups; ++i) {
      const std::size_t setup = i % midi::kSetups;
      if (access.live(i / midi::kSetups, setup) == controller)
        row.binding->set(i / midi::kSetups, setup, 0);
    }
  }
  target.row->binding->set(target.band, target.setup, controller);
  const std::int32_t number = controller - 1;
  Print("MIDI learn: controller %d of channel %d moves %s\n", number % 128, number / 128 + 1,
        target.name.c_str());
}

void MidiLearn::move(std::int32_t controller, std::int32_t value) {
  for (const Row& row : rows_) {
    const SetupAccess& access = row.binding->access;
    for (std::size_t i = 0; i < access.rows * midi::kSetups; ++i) {
      const std::size_t band = i / midi::kSetups;
      const std::size_t setup = i % midi::kSetups;
      if (access.live(band, setup) != controller) continue;
      static_cast<void>(row.mapping->assign(
          row.field->nameOf(band) + "[" + std::to_string(setup) + "]", row.highest * value / 127));
    }
  }
}

void MidiLearn::armShown(const std::string& target) {
  const std::string problem = arm(target);
  if (problem.empty()) {
    Print("MIDI learn: move the controller for %s\n", target.c_str());
  } else {
    Print("MIDI learn: %s\n", problem.c_str());
  }
}

void MidiLearn::addActions(ActionRegistry& to) {
  const auto shownBand = [] { return "[" + std::to_string(setmidiband::SetupBandNX.get()) + "]"; };
  const auto shownSingle = [] { return "[" + std::to_string(setmidi::SetupNX.get()) + "]"; };
  to.add("learnGainNote:", "the next controller moves the gain of the shown band set-up",
         [=, this](std::int32_t) { armShown("gainNoteX" + shownBand()); });
  for (const bool high : {false, true}) {
    const std::string edge = high ? "HighF" : "LowF";
    to.add("learn" + edge + ":",
           "the next controller moves " + edge + "1X to " + edge +
               "8X of the shown band set-up, by the band 1 to 8",
           [=, this](std::int32_t band) {
             if (band < 1 || band > 8) {
               Print("MIDI learn: there is no band %d; name one from 1 to 8\n", band);
               return;
             }
             armShown(edge + std::to_string(band) + "X" + shownBand());
           });
  }
  for (const char* name : {"LowF", "HighF", "LowV", "HighV"}) {
    to.add("learnInput" + std::string(name) + ":",
           "the next controller moves " + std::string(name) + "X of the shown single-value set-up",
           [=, this](std::int32_t) { armShown(std::string(name) + "X" + shownSingle()); });
  }
  to.add("learnCancel:", "no controller is waited for", [this](std::int32_t) { cancel(); });
}

}  // namespace ovka
