#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <string_view>

#include "DocumentSwitches.h"
#include "SettingsGroup.h"

namespace ovka {

/// Which settings groups a document may hold, in the order in which they are written.
struct SettingsGroupKind {
  std::string_view key;      ///< in the dictionary
  std::string_view getter;   ///< the system's name of reading one entry
  std::string_view putter;   ///< the system's name of applying the group
  DocumentSwitch which;      ///< the save switch that writes it, the open switch that applies it
  bool savedByOpenSwitch;    ///< the open switch decides on saving too
  bool savedOnlyOnceOpened;  ///< written only once its set-up was opened or a document brought it
};

inline constexpr std::array<SettingsGroupKind, 15> kSettingsGroups{{
    {"OVKA4brainPeakMIDI", "getOVKA4brainPeakMIDI:Setup:", "putOVKA4brainPeakMIDI",
     DocumentSwitch::BrainpeakMIDI, false, true},
    {"OVKA4brainRhythmeMIDI", "getOVKA4brainRhythmMIDI:Setup:", "putOVKA4brainRhythmMIDI",
     DocumentSwitch::BrainrhythmMIDI, false, true},
    {"OVKA4Display", "getOVKA4Display:", "putOVKA4Display", DocumentSwitch::Display, false, false},
    {"OVKA4DisplayColor", "getOVKA4DisplayColor:", "putOVKA4DisplayColor", DocumentSwitch::Display,
     false, false},
    {"OVKAFrontDisplay", "getOVKAFrontDisplay:Setup:", "putOVKAFrontDisplay",
     DocumentSwitch::Display, false, false},
    {"OVKA4DisplayWaterfall", "getOVKA4DisplayWaterfall:Setup:", "putOVKA4DisplayWaterfall",
     DocumentSwitch::DisplayWaterfall, false, false},
    {"OVKA4DisplayBS", "getOVKA4DisplayBS:Setup:", "putOVKA4DisplayBS", DocumentSwitch::DisplayBS,
     false, false},
    // The open switch decides here, not its save twin: kept on purpose.
    {"EEGneurofeedbackWindow", "getEEGneurofeedbackWindow:", "putEEGneurofeedbackWindow",
     DocumentSwitch::EEGneurofeedback, true, false},
    {"OVKA4Device", "getOVKA4Device:", "putOVKA4Device", DocumentSwitch::Device, false, false},
    {"OVKA4Publish", "getOVKA4Publish:brainChannel:", "putOVKA4Publish",
     DocumentSwitch::DevicePublish, false, false},
    {"OVKA4OutputPort", "getOVKA4OutputPort:brainChannel:", "putOVKA4OutputPort",
     DocumentSwitch::DeviceOutputPort, false, false},
    {"OVKA4SLOutputPort", "getOVKA4SLOutputPort:brainChannel:", "putOVKA4SLOutputPort",
     DocumentSwitch::DeviceOutputPort, false, false},
    {"OVKA4Analyze", "getOVKA4Analyze:", "putOVKA4Analyze", DocumentSwitch::Analyze, false, false},
    {"OVKA4Internet", "getOVKA4Internet:", "putOVKA4Internet", DocumentSwitch::Internet, false,
     false},
    {"OVKA4BS", "getOVKA4BS:Setup:BSSetup:", "putOVKA4BS", DocumentSwitch::BrainSwitchMixerSetup,
     false, false},
}};

/// The groups of this process: the owners' where there are any, kept texts for the others. The main
/// thread.
class SettingsGroups {
 public:
  SettingsGroups();
  /// `group` stands for `key` from now on; it outlives this. False: no such key.
  bool use(std::string_view key, SettingsGroup& group);
  [[nodiscard]] SettingsGroup& at(std::size_t index) { return *groups_[index]; }
  /// nullptr: no such key.
  [[nodiscard]] SettingsGroup* find(std::string_view key);
  /// Whether a group is written with these switches.
  [[nodiscard]] bool saved(std::size_t index, const DocumentSwitches& switches) const;

 private:
  std::array<std::unique_ptr<KeptGroup>, kSettingsGroups.size()> kept_;
  std::array<SettingsGroup*, kSettingsGroups.size()> groups_{};
};

}  // namespace ovka
