#include "SettingsGroups.h"

namespace ovka {

SettingsGroups::SettingsGroups() {
  for (std::size_t i = 0; i < kSettingsGroups.size(); ++i) {
    kept_[i] = std::make_unique<KeptGroup>(!kSettingsGroups[i].savedOnlyOnceOpened);
    groups_[i] = kept_[i].get();
  }
}

bool SettingsGroups::use(std::string_view key, SettingsGroup& group) {
  for (std::size_t i = 0; i < kSettingsGroups.size(); ++i) {
    if (kSettingsGroups[i].key != key) continue;
    groups_[i] = &group;
    return true;
  }
  return false;
}

SettingsGroup* SettingsGroups::find(std::string_view key) {
  for (std::size_t i = 0; i < kSettingsGroups.size(); ++i) {
    if (kSettingsGroups[i].key == key) return groups_[i];
  }
  return nullptr;
}

bool SettingsGroups::saved(std::size_t index, const DocumentSwitches& switches) const {
  const SettingsGroupKind& kind = kSettingsGroups[index];
  const SwitchSet& set = kind.savedByOpenSwitch ? switches.open : switches.save;
  return set.on(kind.which) && groups_[index]->available();
}

}  // namespace ovka
