#include "SetupField.h"

#include <algorithm>
#include <charconv>
#include <limits>

#include "EditDistance.h"
#include "MidiVariables.h"

namespace ovka {
namespace {

// The known name that a mistyped one is nearest to.
std::string nearestName(std::span<const SetupField> fields, std::string_view name) {
  std::string nearest;
  std::size_t least = std::numeric_limits<std::size_t>::max();
  for (const SetupField& field : fields) {
    for (std::size_t row = 0; row < field.access.rows; ++row) {
      std::string candidate = field.nameOf(row);
      const std::size_t distance = editDistance(name, candidate);
      if (distance >= least) continue;
      least = distance;
      nearest = std::move(candidate);
    }
  }
  return nearest;
}

}  // namespace

std::string SetupField::nameOf(std::size_t row) const {
  std::string text(name);
  const std::size_t place = text.find('%');
  if (place != std::string::npos) text[place] = static_cast<char>('1' + row);
  return text;
}

std::optional<SetupPlace> findField(std::span<const SetupField> fields, std::string_view name) {
  for (const SetupField& field : fields) {
    for (std::size_t row = 0; row < field.access.rows; ++row) {
      if (field.nameOf(row) == name) return SetupPlace{&field, row, 0};
    }
  }
  return std::nullopt;
}

std::optional<SetupPlace> findPlace(std::span<const SetupField> fields, std::string_view name,
                                    std::string& problem) {
  const std::size_t bracket = std::min(name.find('['), name.size());
  const std::string variable(name.substr(0, bracket));
  std::optional<SetupPlace> place = findField(fields, variable);
  if (!place) {
    problem = "there is no set-up value '" + variable + "'; did you mean '" +
              nearestName(fields, variable) + "'?";
    return std::nullopt;
  }
  const std::string_view index = name.substr(std::min(bracket + 1, name.size()));
  std::int32_t setup = -1;
  const char* const end = index.data() + index.size();
  const auto [stop, error] = std::from_chars(index.data(), end, setup);
  if (error != std::errc{} || std::string_view(stop, end) != "]" || setup < 0 ||
      setup >= midi::kSetups) {
    problem =
        "say which set-up, 0 to 127, in brackets after the name, for example " + variable + "[0]";
    return std::nullopt;
  }
  place->setup = static_cast<std::size_t>(setup);
  return place;
}

}  // namespace ovka
