#include "SetupGroup.h"

#include <optional>

namespace ovka {

SetupGroup::SetupGroup(MidiMapping& mapping) : mapping_(mapping) {
  for (const SetupField& field : mapping.fields()) {
    if (field.entry == 0) continue;
    for (std::size_t row = 0; row < field.access.rows; ++row) {
      places_.at(field.entry + row) = {&field, row, 0};
    }
  }
}

std::string SetupGroup::get(std::size_t part, std::size_t index) const {
  if (part >= parts() || index >= kEntries) return {};
  if (index == 0) return integerText(static_cast<std::int64_t>(kEntries));
  const SetupPlace& place = places_[index];
  if (place.field == nullptr) return "0";
  const SetupAccess& access = place.field->access;
  const double value = access.live(place.row, part);
  return access.real ? floatText(value) : integerText(static_cast<std::int64_t>(value));
}

void SetupGroup::set(std::size_t part, std::size_t index, const std::string& text) {
  if (part >= parts() || index == 0 || index >= kEntries || text.empty()) return;
  const SetupPlace& place = places_[index];
  if (place.field == nullptr) return;
  const SetupField& field = *place.field;
  // What a text cannot tell from the present value stays, with all its digits.
  const bool unchanged = text == get(part, index);
  const std::optional<double> value = unchanged ? std::optional(field.access.live(place.row, part))
                                      : field.access.real
                                          ? floatOf(text)
                                          : std::optional(static_cast<double>(srtToLong(text)));
  if (!value || !(*value >= field.minimum && *value <= field.maximum)) return;
  field.set(place.row, part, *value);
}

}  // namespace ovka
