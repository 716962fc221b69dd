#include "Print.h"
#include "SetMIDIband.h"
#include "SetMIDIbandVariables.h"

namespace ovka {

namespace {

constexpr std::array<std::string_view, 3> kModes{"NoteOffOnEX", "NoteOnOffEX", "ControlEX"};
constexpr std::array<std::string_view, 2> kPowers{"PeakPowerEX", "AveragePowerEX"};

}  // namespace

SetMIDIband::SetMIDIband(NoteOutput& notes, AnalysisInput& analysis)
    : MidiMapping(
          {"SetMIDIband", setmidiband::fields(), setmidiband::MIDIoutONEX,
           setmidiband::SendMIDItimingEX, setmidiband::ONInputEX, setmidiband::tlongEX,
           setmidiband::tsaveEX, setmidiband::MIDIportEX, setmidiband::MIDIoutONXTempBand,
           setmidiband::changes, setmidiband::SetupBandNX, setmidiband::needOffNoteB,
           setmidiband::setupOpenedX, setmidiband::setupLoadedX, 0},
          [] {
            static constexpr std::array<Control, 21> kControls{{
                {"setMIDIoutON:", "MIDIoutONEX", ""},
                {"selectSendMIDItiming:", "SendMIDItimingEX", ""},
                {"setONInput:", "ONInputEX", ""},
                {"setUsePeakMode:", "UsePeakModeEX", ""},
                {"selectOVKAchannel:", "OVKAchannelEX", ""},
                {"setPeakPower:", "PeakPowerEX", "", kPowers},
                {"setAveragePower:", "AveragePowerEX", "", kPowers},
                {"setBSchannel:", "BSchannelEX", ""},
                {"changeGainNoteSlider:", "gainNoteX", ""},
                {"setNoteOffOn:", "NoteOffOnEX", "", kModes},
                {"setNoteOnOff:", "NoteOnOffEX", "", kModes},
                {"setControl:", "ControlEX", "", kModes},
                {"selectMIDIport:", "MIDIportEX", ""},
                {"setTempo:", "TempoEX", ""},
                {"changeLowFSlider%:", "LowF%X", "sendTextLowFSliderField%:"},
                {"sendTextLowFSliderField%:", "LowF%X", "changeLowFSlider%:"},
                {"changeHighFSlider%:", "HighF%X", "sendTextHighFSliderField%:"},
                {"sendTextHighFSliderField%:", "HighF%X", "changeHighFSlider%:"},
                {"changebandSlider%:", "bandOut%X", "bandSlider%:"},
                {"setSetbandNote%:", "bandNote%X", ""},
                {"selectMIDIchannel%:", "MIDIchannel%X", ""},
            }};
            return std::span<const Control>(kControls);
          }(),
          notes, analysis) {
  init();
}

void SetMIDIband::awakeFromNib(std::int32_t chosen) {
  using namespace setmidiband;  // NOLINT: the code of these variables
  Print("MIDI band setSoloBandX awakeFromNib=%d\n", setSoloBandX.get());
  if (setSoloBandX == 1) {
    setSoloBandX = 0;
    MIDIbandAll = 1;
  }
  init();
  view().fill("selectMIDIport:", mapping::kPortLabels);
  view().fill("selectSendMIDItiming:", mapping::kIntervalLabels);
  for (std::size_t band = 0; band < kSetupBands; ++band) {
    view().fill("selectMIDIchannel" + std::to_string(band + 1) + ":", mapping::kChannelLabels);
  }
  showSetup(chosen);
}

void SetMIDIband::setChannelsFrom(std::int32_t first) {
  const std::size_t setup = shownSetup();
  for (std::size_t band = 0; band < setmidiband::kSetupBands; ++band) {
    const std::int32_t channel = first + static_cast<std::int32_t>(band);
    edit({&fieldNamed("MIDIchannel%X"), band, setup}, channel);
    view().show("selectMIDIchannel" + std::to_string(band + 1) + ":", channel);
  }
}

void SetMIDIband::addActions(std::vector<MappingAction>& to) {
  addButton(to, "setCHto1to8:", "bands 1 to 8 to channels 1 to 8", [this] { setCHto1to8(); });
  addButton(to, "setCHto9to16:", "bands 1 to 8 to channels 9 to 16", [this] { setCHto9to16(); });
  addButton(to, "MIDIchannelCopy", "put the channels of all set-ups aside",
            [this] { MIDIchannelCopy(); });
  addButton(to, "MIDIchannelBackCopy", "bring the channels back",
            [this] { MIDIchannelBackCopy(); });
  to.push_back({"SetMIDIband", "setSoloBand:", "1: every enabled set-up plays, 0: the shown one",
                [](double value) { setmidiband::setSoloBandX = value != 0 ? 1 : 0; }});
  to.push_back({"SetMIDIband", "selectSetup:", "the shown set-up, 0 to 127",
                [this](double value) { showSetup(mapping::truncated(value)); }});
}

}  // namespace ovka
