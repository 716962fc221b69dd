#include "SetMIDI.h"
#include "SetMIDIVariables.h"

namespace ovka {

namespace {

constexpr std::array<std::string_view, 2> kStyles{"NoteOnOffX", "NoteOffOnX"};

}  // namespace

SetMIDI::SetMIDI(NoteOutput& notes, AnalysisInput& analysis)
    : MidiMapping(
          {"SetMIDI", setmidi::fields(), setmidi::MIDIoutONX, setmidi::SendMIDItimingX,
           setmidi::ONInputX, setmidi::tlongX, setmidi::tsaveX, setmidi::MIDIportX,
           setmidi::MIDIoutONXTemp, setmidi::changes, setmidi::SetupNX, setmidi::needOffNote,
           setmidi::setupOpenedX, setmidi::setupLoadedX, 1},
          [] {
            static constexpr std::array<Control, 52> kControls{{
                {"setMIDIoutON:", "MIDIoutONX", ""},
                {"selectSendMIDItiming:", "SendMIDItimingX", ""},
                {"setONInput:", "ONInputX", ""},
                {"selectUsePeakMode:", "UsePeakModeX", ""},
                {"selectOVKAchannel:", "OVKAchannelX", ""},
                {"setBSchannel:", "BSchannelX", ""},
                {"setPeakPower:", "PeakPowerX", ""},
                {"changeLowFSlider:", "LowFX", "sendTextLowFSliderField:"},
                {"sendTextLowFSliderField:", "LowFX", "changeLowFSlider:"},
                {"changeHighFSlider:", "HighFX", "sendTextHighFSliderField:"},
                {"sendTextHighFSliderField:", "HighFX", "changeHighFSlider:"},
                {"changeLowFNSlider:", "LowFNX", "sendTextLowFNSliderField:"},
                {"sendTextLowFNSliderField:", "LowFNX", "changeLowFNSlider:"},
                {"changeHighFNSlider:", "HighFNX", "sendTextHighFNSliderField:"},
                {"sendTextHighFNSliderField:", "HighFNX", "changeHighFNSlider:"},
                {"changeLowVSlider:", "LowVX", "sendTextLowVSliderField:"},
                {"sendTextLowVSliderField:", "LowVX", "changeLowVSlider:"},
                {"changeHighVSlider:", "HighVX", "sendTextHighVSliderField:"},
                {"sendTextHighVSliderField:", "HighVX", "changeHighVSlider:"},
                {"changeLowVNSlider:", "LowVNX", "sendTextLowVNSliderField:"},
                {"sendTextLowVNSliderField:", "LowVNX", "changeLowVNSlider:"},
                {"changeHighVNSlider:", "HighVNX", "sendTextHighVNSliderField:"},
                {"sendTextHighVNSliderField:", "HighVNX", "changeHighVNSlider:"},
                {"changeInputFSlider:", "InputFX", "sendTextInputFSliderField:"},
                {"sendTextInputFSliderField:", "InputFX", "changeInputFSlider:"},
                {"changeInputVSlider:", "InputVX", "sendTextInputVSliderField:"},
                {"sendTextInputVSliderField:", "InputVX", "changeInputVSlider:"},
                {"changeOutputFSlider:", "OutputFX", ""},
                {"changeOutputVSlider:", "OutputVX", ""},
                {"setMIDInoteF:", "MIDInoteFX", ""},
                {"setMIDInoteV:", "MIDInoteVX", ""},
                {"setMIDIvelocityF:", "MIDIvelocityFX", ""},
                {"setMIDIvelocityV:", "MIDIvelocityVX", ""},
                {"setMIDIchannelF:", "MIDIchannelFX", ""},
                {"setMIDIchannelV:", "MIDIchannelVX", ""},
                {"setMIDIprogramchangeF:", "MIDIprogramchangeFX", ""},
                {"setMIDIprogramchangeV:", "MIDIprogramchangeVX", ""},
                {"setMIDIpitchbendF:", "MIDIpitchbendFX", ""},
                {"setMIDIpitchbendV:", "MIDIpitchbendVX", ""},
                {"setMIDIcontrolchangeVF:", "MIDIcontrolchangeVFX", ""},
                {"setMIDIcontrolchangeVV:", "MIDIcontrolchangeVVX", ""},
                {"setMIDIcontrolchangeNF:", "MIDIcontrolchangeNFX", ""},
                {"setMIDIcontrolchangeNV:", "MIDIcontrolchangeNVX", ""},
                {"setNoteOnOff:", "NoteOnOffX", "", kStyles},
                {"setNoteOffOn:", "NoteOffOnX", "", kStyles},
                {"selectMIDIchannel:", "MIDIchannelX", ""},
                {"setPlay3Peaks:", "Play3PeaksX", ""},
                {"setPlayOnlyNoteChanged:", "PlayOnlyNoteChangedX", ""},
                {"selectMIDIport:", "MIDIportX", ""},
                {"setUseQTMIDI:", "UseQTMIDIX", ""},
                {"selectScale:", "ScaleX", ""},
                {"selectScaleRoot:", "ScaleRootX", ""},
            }};
            return std::span<const Control>(kControls);
          }(),
          notes, analysis) {
  init();
}

void SetMIDI::awakeFromNib(std::int32_t chosen) {
  init();
  view().fill("selectMIDIport:", mapping::kPortLabels);
  view().fill("selectSendMIDItiming:", mapping::kIntervalLabels);
  view().fill("selectMIDIchannel:", mapping::kChannelLabels);
  showSetup(chosen);
}

// An input set by hand is mapped at once, as one that was measured.
void SetMIDI::edited(const SetupField& field, std::size_t setup) {
  const auto number = static_cast<std::int32_t>(setup);
  if (field.name == "InputFX") setInputFSlider(setmidi::InputFXZ[setup], number);
  if (field.name == "InputVX") setInputVSlider(setmidi::InputVXZ[setup], number);
}

void SetMIDI::addActions(std::vector<MappingAction>& to) {
  to.push_back({"SetMIDI", "selectSetup:", "the shown set-up, 0 to 127",
                [this](double value) { showSetup(mapping::truncated(value)); }});
}

}  // namespace ovka
