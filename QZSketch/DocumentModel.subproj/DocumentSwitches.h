#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "Shared.h"

namespace ovka {

/// The switches that decide what a document or preset holds and what is applied of it. Each exists
/// twice, for opening and for saving. The names are those of the panel's setters without "set".
enum class DocumentSwitch : std::uint8_t {
  All,
  BrainDataOnly,
  PreferenceOnly,
  BrainDataCH1,
  BrainDataCH2,
  BrainDataCH3,
  BrainDataCH4,
  Display,
  DisplayWaterfall,
  DisplayBS,
  Device,
  DeviceOutputPort,
  DevicePublish,
  Analyze,
  Internet,
  Dislpay,  ///< the second display switch, spelled as its setter; nothing here consults it
  BrainpeakMIDI,
  BrainrhythmMIDI,
  Deviceportsetup,
  peakMIDIportsetup,
  rhythmMIDIportsetup,
  RawWave,
  TwoDBar,
  ThreeDWaterFall,
  ThreeDWaterFallBSMixer,
  EEGneurofeedback,
  SoundWindow,
  MovieWindow,
  CubictunnelWindow,
  AllWindowlayout,
  Recordingmode,
  Maxrecordingtime,
  BrainSwitchMixerSetup,
  Sound,
  SoundSetupWindow,
  AutoPortSetupWhenOpen,  ///< open set: a disabling switch
  MultiApModeWhenOpen,    ///< open set: a disabling switch
  Count
};

/// One of the two sets. Any thread reads; the preset panel writes.
class SwitchSet {
 public:
  [[nodiscard]] bool on(DocumentSwitch which) const { return at(which) != 0; }
  void set(DocumentSwitch which, bool state) {
    flags_[static_cast<std::size_t>(which)].flag = state ? 1 : 0;
  }
  void setAll(bool state) {
    for (Flag& each : flags_) each.flag = state ? 1 : 0;
  }
  /// Whether a channel's samples are kept or loaded: channel 0 always.
  [[nodiscard]] bool channel(std::int32_t number) const {
    if (number == 0) return true;
    return number >= 1 && number <= 4 &&
           flags_[static_cast<std::size_t>(DocumentSwitch::BrainDataCH1) +
                  static_cast<std::size_t>(number - 1)]
                   .flag != 0;
  }

 private:
  struct Flag {
    Shared<std::int32_t> flag{0};
  };
  [[nodiscard]] std::int32_t at(DocumentSwitch which) const {
    return flags_[static_cast<std::size_t>(which)].flag;
  }
  std::array<Flag, static_cast<std::size_t>(DocumentSwitch::Count)> flags_;
};

/// Both sets. They start as the panel does, with everything on, for the channel configuration of
/// the start (channels 1 and 2); the disabling switches of opening, recording mode when opening,
/// and what the everything switch leaves alone are off.
struct DocumentSwitches {
  SwitchSet open;
  SwitchSet save;

  DocumentSwitches() { startUp(); }
  void startUp() {
    using S = DocumentSwitch;
    for (SwitchSet* set : {&open, &save}) {
      set->setAll(true);
      for (const S off : {S::BrainDataOnly, S::PreferenceOnly, S::BrainDataCH3, S::BrainDataCH4}) {
        set->set(off, false);
      }
    }
    for (const S off : {S::Recordingmode, S::EEGneurofeedback, S::SoundSetupWindow,
                        S::AutoPortSetupWhenOpen, S::MultiApModeWhenOpen}) {
      open.set(off, false);
    }
  }
};

}  // namespace ovka
