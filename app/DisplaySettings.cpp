#include "DisplayRows.h"
#include "SettingsRegistry.h"
#include "SettingsTables.h"

namespace ovka {
namespace {

using namespace display;  // NOLINT: a table of this room's names

/// The views follow whatever sets a variable by its name.
template <typename T, std::size_t N>
void addRows(SettingsRegistry& to, const std::array<DisplayRow<T>, N>& rows) {
  for (const DisplayRow<T>& row : rows) {
    to.add(row.name, *row.variable, row.minimum, row.maximum, row.meaning);
    to.onSet(row.name, [&row](double value) {
      *row.variable = static_cast<T>(value);
      tellViews();
    });
  }
}

/// A field of a view's choice, entry by entry for the views in the order of ViewKind.
void addField(SettingsRegistry& to, const ViewField& field) {
  const auto kind = field.whole != nullptr ? Setting::Kind::Integer : Setting::Kind::Real;
  Setting& setting = to.addTable(
      "view::" + std::string(field.name), kind, kViewKinds, field.minimum, field.maximum,
      std::string(field.meaning) +
          "; views: raw wave, 2D, EEG spectrum, bars, waterfall, 3D, newave",
      [&field](std::size_t view) {
        return valueOf(keptChoice(static_cast<ViewKind>(view)), field);
      },
      [&field](std::size_t view, double value) {
        ViewChoice choice = keptChoice(static_cast<ViewKind>(view));
        if (!assign(choice, field, value)) return;
        keepChoice(static_cast<ViewKind>(view), choice);
        tellViews();
      });
  setting.single = field.real != nullptr;
}

}  // namespace

void addDisplaySettings(SettingsRegistry& to) {
  addRows(to, kWholeRows);
  addRows(to, kRealRows);
  to.addTable(
        "displayGainX", Setting::Kind::Real, displayGainX.size(), kLeastDisplayGain,
        kGreatestDisplayGain,
        "display gain of channels A, B, D, E: drawn with, and outputs divide by it",
        [](std::size_t channel) { return static_cast<double>(displayGainX[channel].get()); },
        [](std::size_t channel, double value) {
          displayGainX[channel] = static_cast<float>(value);
          tellViews();
        })
      .single = true;
  to.addTable(
      "channelColorX", Setting::Kind::Integer, channelColorX.size(), -1, kGreatestColor,
      "colour of channels A, B, D, E as red x 65536 + green x 256 + blue, -1: the theme's",
      [](std::size_t channel) { return static_cast<double>(channelColorX[channel].get()); },
      [](std::size_t channel, double value) {
        channelColorX[channel] = static_cast<std::int32_t>(value);
        tellViews();
      });
  for (const ViewField& field : kViewFields) addField(to, field);
}

}  // namespace ovka
