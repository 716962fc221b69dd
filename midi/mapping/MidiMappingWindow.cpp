#include <algorithm>
#include <cmath>

#include "MidiMapping.h"
#include "NumberTexts.h"

namespace ovka {
namespace {

std::string withBand(std::string_view text, std::size_t row) {
  std::string named(text);
  const std::size_t place = named.find('%');
  if (place != std::string::npos) named[place] = static_cast<char>('1' + row);
  return named;
}

std::string numberText(const SetupField& field, double value) {
  return field.access.real ? floatText(value) : integerText(static_cast<std::int64_t>(value));
}

}  // namespace

const SetupField& MidiMapping::fieldNamed(std::string_view name) const {
  return *std::find_if(variables_.fields.begin(), variables_.fields.end(),
                       [&](const SetupField& field) { return field.name == name; });
}

void MidiMapping::setSet() {
  for (const SetupField& field : variables_.fields) {
    if (field.copy == SetupField::Copy::AtOnce) continue;
    for (std::size_t row = 0; row < field.access.rows; ++row) {
      for (std::size_t setup = 0; setup < midi::kSetups; ++setup) {
        const double value = field.access.edit(row, setup);
        if (value != field.access.live(row, setup)) field.access.setLive(row, setup, value);
      }
    }
  }
  variables_.opened = 1;
}

void MidiMapping::setCancel() {
  for (const SetupField& field : variables_.fields) {
    for (std::size_t row = 0; row < field.access.rows; ++row) {
      for (std::size_t setup = 0; setup < midi::kSetups; ++setup) {
        field.access.setEdit(row, setup, field.access.live(row, setup));
      }
    }
  }
  showAll();
}

void MidiMapping::setSetToDefault() {
  setGetSetup();
  setDefaults();
  variables_.opened = 1;
  showAll();
}

void MidiMapping::setGetSetup() {
  if (variables_.loaded != 0) return;
  variables_.loaded = 1;
  loadStoredSetups();
}

void MidiMapping::setMIDIport() {
  view().show("selectMIDIport:", midiPortReturn(static_cast<std::int32_t>(shownSetup())));
}

void MidiMapping::showSetup(std::int32_t setup) {
  variables_.shown = std::clamp(setup, 0, midi::kSetups - 1);
  variables_.opened = 1;
  showAll();
}

void MidiMapping::showAll() {
  const std::size_t setup = shownSetup();
  for (const Control& control : controls_) {
    const SetupField& field = fieldNamed(control.field);
    for (std::size_t row = 0; row < field.access.rows; ++row) {
      view().show(withBand(control.selector, row), field.access.edit(row, setup));
    }
  }
}

void MidiMapping::edit(const SetupPlace& place, double value) {
  const SetupField& field = *place.field;
  const double held = std::clamp(value, field.minimum, field.maximum);
  if (field.copy == SetupField::Copy::AtOnce) field.access.setLive(place.row, place.setup, held);
  field.access.setEdit(place.row, place.setup, held);
  variables_.opened = 1;
}

void MidiMapping::addControl(std::vector<MappingAction>& to, const Control& control,
                             std::size_t row) {
  const SetupField& field = fieldNamed(control.field);
  std::string selector = withBand(control.selector, row);
  const std::string shown = control.pair.empty() ? selector : withBand(control.pair, row);
  to.push_back({variables_.owner, std::move(selector), std::string(field.meaning),
                [this, &field, row, shown, instead = control.instead](double value) {
                  if (std::isnan(value)) return;
                  const std::size_t setup = shownSetup();
                  edit({&field, row, setup}, value);
                  edited(field, setup);
                  view().show(shown, field.access.edit(row, setup));
                  for (const Control& other : controls_) {
                    if (value == 0 || other.field == field.name ||
                        std::find(instead.begin(), instead.end(), other.field) == instead.end()) {
                      continue;
                    }
                    edit({&fieldNamed(other.field), 0, setup}, 0);
                    view().show(other.selector, 0);
                  }
                }});
}

void MidiMapping::addButton(std::vector<MappingAction>& to, std::string_view selector,
                            std::string_view meaning, std::function<void()> perform) const {
  to.push_back({variables_.owner, std::string(selector), std::string(meaning),
                [perform = std::move(perform)](double) { perform(); }});
}

std::vector<MappingAction> MidiMapping::actions() {
  std::vector<MappingAction> all;
  for (const Control& control : controls_) {
    const std::size_t rows = fieldNamed(control.field).access.rows;
    for (std::size_t row = 0; row < rows; ++row) addControl(all, control, row);
  }
  addButton(all, "setSet:", "commit the edits of all set-ups", [this] { setSet(); });
  addButton(all, "setCancel:", "drop the edits", [this] { setCancel(); });
  addButton(all, "setSetToDefault:", "all 128 set-ups to their defaults",
            [this] { setSetToDefault(); });
  addButton(all, "sendMidiShutDown", "end every sounding note", [this] { sendMidiShutDown(); });
  addButton(all, "sendMidiTemporalyOFF", "silence every set-up for a while",
            [this] { sendMidiTemporalyOFF(); });
  addButton(all, "sendMidiBackON", "play again what was silenced", [this] { sendMidiBackON(); });
  addButton(all, "sendsetMIDIRestart", "take the MIDI system down and up again",
            [this] { sendsetMIDIRestart(); });
  addActions(all);
  return all;
}

std::optional<double> MidiMapping::value(std::string_view name) const {
  std::string problem;
  const std::optional<SetupPlace> place = findPlace(variables_.fields, name, problem);
  if (!place) return std::nullopt;
  return place->field->access.live(place->row, place->setup);
}

std::string MidiMapping::assign(std::string_view name, double value) {
  std::string problem;
  const std::optional<SetupPlace> place = findPlace(variables_.fields, name, problem);
  if (!place) return problem;
  const SetupField& field = *place->field;
  if (field.minimum == field.maximum) {
    return "'" + std::string(name) + "' is kept by the system itself and cannot be set";
  }
  const bool whole = field.access.real || value == std::trunc(value);
  if (!(value >= field.minimum && value <= field.maximum) || !whole) {
    return "'" + numberText(field, field.minimum) + "' to '" + numberText(field, field.maximum) +
           "' is what " + std::string(name) + " takes" +
           (field.access.real ? "" : ", whole numbers only");
  }
  field.set(place->row, place->setup, value);
  variables_.opened = 1;
  return {};
}

}  // namespace ovka
