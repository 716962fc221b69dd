#include "PresetSwitches.h"

#include <algorithm>

#include "BufferVariables.h"

namespace ovka {
namespace {

using S = DocumentSwitch;

/// Channels that the everything and brain-data-only switches turn on: one more than the number of
/// the configuration.
[[nodiscard]] std::int32_t channelsOfConfiguration() {
  return static_cast<std::int32_t>(std::min<std::uint32_t>(buffer::DeviceConfig, 3)) + 1;
}

}  // namespace

std::optional<SwitchOfSide> switchOfSetter(std::string_view setter) {
  for (const PresetSwitch& row : kPresetSwitches) {
    if (row.open == setter) return SwitchOfSide{SwitchSide::Open, row.which};
    if (row.save == setter) return SwitchOfSide{SwitchSide::Save, row.which};
  }
  return std::nullopt;
}

void PresetSwitches::startUp(bool storedAutoPortSetup) {
  switches_.startUp();
  set(SwitchSide::Open, S::All, true);
  set(SwitchSide::Save, S::All, true);
  set(SwitchSide::Save, S::AutoPortSetupWhenOpen, storedAutoPortSetup);
}

void PresetSwitches::setChannels(SwitchSide side, std::int32_t count) {
  std::int32_t channel = 0;
  for (const PresetSwitch& row : kPresetSwitches) {
    if (row.rule == AllRule::Channel) set(side).set(row.which, ++channel <= count);
  }
}

void PresetSwitches::setAllstate(SwitchSide side, bool state) {
  for (const PresetSwitch& row : kPresetSwitches) {
    if (row.rule == AllRule::Mode || row.rule == AllRule::Channel) continue;
    const AllRule rule = side == SwitchSide::Save ? AllRule::Follows : row.rule;
    if (rule == AllRule::Untouched) continue;
    set(side).set(row.which, rule == AllRule::Follows ? state : rule == AllRule::AlwaysOn);
  }
  setChannels(side, state ? channelsOfConfiguration() : 0);
}

/// The mode that was turned on; the other two end, without what turning them off by hand would do.
void PresetSwitches::setMode(SwitchSide side, S mode) {
  for (const S each : {S::All, S::BrainDataOnly, S::PreferenceOnly}) {
    set(side).set(each, each == mode);
  }
  if (mode == S::All) {
    setAllstate(side, true);
  } else if (mode == S::BrainDataOnly) {
    setAllstate(side, false);
    setChannels(side, channelsOfConfiguration());
  } else {
    // Kept on purpose: channel 4 stays as it was.
    for (const S channel : {S::BrainDataCH1, S::BrainDataCH2, S::BrainDataCH3}) {
      set(side).set(channel, false);
    }
  }
}

void PresetSwitches::set(SwitchSide side, S which, bool state) {
  const bool mode = which <= S::PreferenceOnly;
  if (mode && state) {
    setMode(side, which);
    return;
  }
  set(side).set(which, state);
  if (which == S::All) setAllstate(side, false);
}

bool PresetSwitches::set(std::string_view setter, bool state) {
  const std::optional<SwitchOfSide> found = switchOfSetter(setter);
  if (found) set(found->side, found->which, state);
  return found.has_value();
}

}  // namespace ovka
