#pragma once

#include <array>
#include <memory>
#include <string_view>

#include "InformationList.h"
#include "SettingsGroup.h"
#include "SettingsGroups.h"

namespace ovka::display {

/// The display groups of documents and presets. Entries from index 1 on are in the orders that
/// README.md lists; an entry is never moved, new ones go to the end. The main thread.
[[nodiscard]] std::unique_ptr<SettingsRows> makeDisplayGroup();           ///< OVKA4Display
[[nodiscard]] std::unique_ptr<SettingsRows> makeDisplayColorGroup();      ///< OVKA4DisplayColor
[[nodiscard]] std::unique_ptr<SettingsRows> makeDisplayWaterfallGroup();  ///< OVKA4DisplayWaterfall
[[nodiscard]] std::unique_ptr<SettingsRows> makeDisplayBSGroup();         ///< OVKA4DisplayBS
[[nodiscard]] std::unique_ptr<SettingsRows> makeFrontDisplayGroup();      ///< OVKAFrontDisplay

/// All five, plugged in.
class DisplayGroups {
 public:
  DisplayGroups();
  /// The groups and the information list's display entries stand for the display variables from now
  /// on; both outlive this or are not used after it.
  void use(SettingsGroups& groups, InformationList& information);

 private:
  std::array<std::unique_ptr<SettingsRows>, 5> groups_;
};

/// The five again, by their keys: the shell keeps them between runs and over a change of the
/// source.
struct DisplayGroupMaker {
  std::string_view key;
  std::unique_ptr<SettingsRows> (*make)();
};
inline constexpr std::array<DisplayGroupMaker, 5> kDisplayGroups{{
    {"OVKA4Display", &makeDisplayGroup},
    {"OVKA4DisplayColor", &makeDisplayColorGroup},
    {"OVKAFrontDisplay", &makeFrontDisplayGroup},
    {"OVKA4DisplayWaterfall", &makeDisplayWaterfallGroup},
    {"OVKA4DisplayBS", &makeDisplayBSGroup},
}};

/// Binds entries 20 to 38, 40 to 43, 55 to 70, 100 and 107 to 109 of the information list.
void bindDisplayInformation(InformationList& information);

}  // namespace ovka::display
