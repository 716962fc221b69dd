#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

#include "DocumentSwitches.h"

namespace ovka {

/// The two sets of switches.
enum class SwitchSide : std::uint8_t { Open, Save };

/// What the everything switch of opening does to a switch. In the save set it passes its state on
/// to every switch.
enum class AllRule : std::uint8_t {
  Mode,       ///< one of the three modes: not a group
  Channel,    ///< on for the channels of the configuration, else off
  Follows,    ///< takes the state
  AlwaysOff,  ///< off whatever the state
  AlwaysOn,   ///< on whatever the state
  Untouched,
};

/// A switch, in both sets.
struct PresetSwitch {
  DocumentSwitch which;
  std::string_view open;  ///< its setter in the open set; the action's name is "select" and this
  std::string_view save;  ///< its setter in the save set
  std::string_view meaning;
  AllRule rule = AllRule::Follows;
};

/// The panel's switches in the order of DocumentSwitch. Kept on purpose: "setDislpay:" and the name
/// of setSound:'s twin.
inline constexpr std::array<PresetSwitch, static_cast<std::size_t>(DocumentSwitch::Count)>
    kPresetSwitches = [] {
      using S = DocumentSwitch;
      using R = AllRule;
      return std::array<PresetSwitch, static_cast<std::size_t>(S::Count)>{{
          {S::All, "setAll:", "setAllSave:", "everything", R::Mode},
          {S::BrainDataOnly, "setBrainDataOnly:", "setBrainDataOnlySave:",
           "brain data only: samples, no settings", R::Mode},
          {S::PreferenceOnly, "setPreferenceOnly:", "setPreferenceOnlySave:",
           "preferences only: settings, no samples", R::Mode},
          {S::BrainDataCH1, "setBrainDataCH1:", "setBrainDataCH1Save:", "channel 1 samples",
           R::Channel},
          {S::BrainDataCH2, "setBrainDataCH2:", "setBrainDataCH2Save:", "channel 2 samples",
           R::Channel},
          {S::BrainDataCH3, "setBrainDataCH3:", "setBrainDataCH3Save:", "channel 3 samples",
           R::Channel},
          {S::BrainDataCH4, "setBrainDataCH4:", "setBrainDataCH4Save:", "channel 4 samples",
           R::Channel},
          {S::Display, "setDisplay:", "setDisplaySave:", "display"},
          {S::DisplayWaterfall,
           "setDisplayWaterfall:", "setDisplayWaterfallSave:", "display waterfall"},
          {S::DisplayBS, "setDisplayBS:", "setDisplayBSSave:", "display brain switch"},
          {S::Device, "setDevice:", "setDeviceSave:", "device"},
          {S::DeviceOutputPort,
           "setDeviceOutputPort:", "setDeviceOutputPortSave:", "device output port"},
          {S::DevicePublish, "setDevicePublish:", "setDevicePublishSave:", "device publish"},
          {S::Analyze, "setAnalyze:", "setAnalyzeSave:", "analyze"},
          {S::Internet, "setInternet:", "setInternetSave:", "internet"},
          {S::Dislpay, "setDislpay:", "setDislpaySave:", "second display switch"},
          {S::BrainpeakMIDI, "setBrainpeakMIDI:", "setBrainpeakMIDISave:", "peak MIDI"},
          {S::BrainrhythmMIDI, "setBrainrhythmMIDI:", "setBrainrhythmMIDISave:", "rhythm MIDI"},
          {S::Deviceportsetup,
           "setDeviceportsetup:", "setDeviceportsetupSave:", "device port set-up"},
          {S::peakMIDIportsetup,
           "setpeakMIDIportsetup:", "setpeakMIDIportsetupSave:", "peak MIDI port set-up"},
          {S::rhythmMIDIportsetup,
           "setrhythmMIDIportsetup:", "setrhythmMIDIportsetupSave:", "rhythm MIDI port set-up"},
          {S::RawWave, "setRawWave:", "setRawWaveSave:", "raw wave window"},
          {S::TwoDBar, "set2DBar:", "set2DBarSave:", "2D bar window"},
          {S::ThreeDWaterFall, "set3DWaterFall:", "set3DWaterFallSave:", "3D waterfall window"},
          {S::ThreeDWaterFallBSMixer, "set3DWaterFallBSMixer:", "set3DWaterFallBSMixerSave:",
           "3D waterfall brain-switch mixer window"},
          {S::EEGneurofeedback, "setEEGneurofeedback:", "setEEGneurofeedbackSave:",
           "EEG neurofeedback window", R::Untouched},
          {S::SoundWindow, "setSoundWindow:", "setSoundWindowSave:", "sound window"},
          {S::MovieWindow, "setMovieWindow:", "setMovieWindowSave:", "movie window"},
          {S::CubictunnelWindow,
           "setCubictunnelWindow:", "setCubictunnelWindowSave:", "cubic tunnel window"},
          {S::AllWindowlayout,
           "setAllWindowlayout:", "setAllWindowlayoutSave:", "all window layout"},
          {S::Recordingmode, "setRecordingmode:", "setRecordingmodeSave:", "recording mode",
           R::AlwaysOff},
          {S::Maxrecordingtime, "setMaxrecordingtime:", "setMaxrecordingtimeSave:",
           "maximum recording time", R::AlwaysOn},
          {S::BrainSwitchMixerSetup, "setBrainSwitchMixerSetup:", "setBrainSwitchMixerSetupSave:",
           "brain switch mixer set-up"},
          {S::Sound, "setSound:", "setSoundSetupSave:", "sound"},
          {S::SoundSetupWindow,
           "setSoundSetupWindow:", "setSoundSetupWindowSave:", "sound set-up window", R::Untouched},
          {S::AutoPortSetupWhenOpen,
           "setDisableAutoPortSetupWhenOpen:", "setAutoPortSetupWhenOpenFileSave:",
           "port set-up when a file is opened (opening: disabled)", R::AlwaysOff},
          {S::MultiApModeWhenOpen,
           "setDisableMultiApModeWhenOpen:", "setMultiApModeWhenOpenFileSave:",
           "multi-application mode when a file is opened (opening: disabled)", R::Untouched},
      }};
    }();

/// A switch of one of the sets, by its setter ("setDisplaySave:"); none: there is no such setter.
struct SwitchOfSide {
  SwitchSide side;
  DocumentSwitch which;
};
[[nodiscard]] std::optional<SwitchOfSide> switchOfSetter(std::string_view setter);

/// The rules of the three modes and of the channels, on the two sets. Any thread; a change of a
/// mode is many switches, which a reader may see one by one.
class PresetSwitches {
 public:
  explicit PresetSwitches(DocumentSwitches& switches) : switches_(switches) {}

  /// The panel as it starts: everything on for opening and saving, the set-up of the port when a
  /// file is opened as it was stored.
  void startUp(bool storedAutoPortSetup);

  [[nodiscard]] bool on(SwitchSide side, DocumentSwitch which) const { return set(side).on(which); }
  /// What the switch's setter does: the flag, and for the three modes what depends on it.
  void set(SwitchSide side, DocumentSwitch which, bool state);
  /// The same by the setter's name; false: there is no such setter.
  bool set(std::string_view setter, bool state);

  /// setAllstate: every group of the open set takes the state, with the deliberate exceptions; the
  /// channels follow the configuration.
  void setAllstate(bool state) { setAllstate(SwitchSide::Open, state); }
  /// setAllstateSave: every group of the save set, without exception.
  void setAllstateSave(bool state) { setAllstate(SwitchSide::Save, state); }

  /// Channels 1 to `count` on, the others off.
  void setChannels(SwitchSide side, std::int32_t count);

 private:
  [[nodiscard]] SwitchSet& set(SwitchSide side) const {
    return side == SwitchSide::Open ? switches_.open : switches_.save;
  }
  void setAllstate(SwitchSide side, bool state);
  void setMode(SwitchSide side, DocumentSwitch mode);

  DocumentSwitches& switches_;
};

}  // namespace ovka
