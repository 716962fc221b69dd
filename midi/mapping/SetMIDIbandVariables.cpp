#include "SetMIDIbandVariables.h"

#include <limits>

#include "MappingVariables.h"

namespace ovka::setmidiband {
namespace {

using setupfield::kAccess;

constexpr double kAnyHz = 100000;
constexpr double kLargest = std::numeric_limits<float>::max();

// Documents depend on the entries: one is never moved or given another meaning.
constexpr std::array<SetupField, 24> kFields{{
    {"MIDIoutONEX", kAccess<MIDIoutONEX, MIDIoutONEXZ>, {0}, 0, 1, 1, "1: the set-up sends"},
    {"SendMIDItimingEX",
     kAccess<SendMIDItimingEX, SendMIDItimingEXZ>,
     {3},
     0,
     6,
     2,
     "interval by menu: 0.001, 0.025, 0.05, 0.1, 0.2, 0.5, 1 s"},
    {"ONInputEX", kAccess<ONInputEX, ONInputEXZ>, {0}, 0, 1, 3, "1: every send takes new values"},
    {"UsePeakModeEX",
     kAccess<UsePeakModeEX, UsePeakModeEXZ>,
     {0},
     0,
     1,
     4,
     "0: band powers, 1: brain-switch counts"},
    {"OVKAchannelEX",
     kAccess<OVKAchannelEX, OVKAchannelEXZ>,
     {0},
     0,
     9,
     5,
     "source: 0 to 3 the channels, 4 to 9 the coherence pairs"},
    {"PeakPowerEX",
     kAccess<PeakPowerEX, PeakPowerEXZ>,
     {1},
     0,
     1,
     6,
     "1: a band's strongest value, 0: its sum"},
    {"AveragePowerEX", kAccess<AveragePowerEX, AveragePowerEXZ>, {0}, 0, 1, 7, "1: a band's sum"},
    {"BSchannelEX", kAccess<BSchannelEX, BSchannelEXZ>, {0}, 0, 11, 8, "brain-switch channel"},
    {"gainNoteX", kAccess<gainNoteX, gainNoteXZ>, {2}, -1e6, 1e6, 9, "multiplies every band value"},
    {"NoteOffOnEX", kAccess<NoteOffOnEX, NoteOffOnEXZ>, {1}, 0, 1, 10, "1: fixed-note mode"},
    {"NoteOnOffEX", kAccess<NoteOnOffEX, NoteOnOffEXZ>, {0}, 0, 1, 11, "1: pitch mode"},
    {"ControlEX", kAccess<ControlEX, ControlEXZ>, {0}, 0, 1, 12, "1: control mode"},
    {"MIDIportEX", kAccess<MIDIportEX, MIDIportEXZ>, {0}, 0, 23, 13, "MIDI port"},
    {"TempoEX", kAccess<TempoEX, TempoEXZ>, {0}, 0, 1000, 14, "tempo; kept, not used"},
    {"LowF%X",
     kAccess<LowFX, LowFXZ>,
     {0, 2, 4, 8, 13, 16, 21, 31},
     0,
     kAnyHz,
     15,
     "low edge of the band (Hz)"},
    {"HighF%X",
     kAccess<HighFX, HighFXZ>,
     {1.5F, 3.5F, 7.5F, 12.5F, 15.5F, 20.5F, 30, 50},
     0,
     kAnyHz,
     23,
     "high edge of the band (Hz)"},
    {"bandNote%X",
     kAccess<bandNoteX, bandNoteXZ>,
     {60, 61, 62, 63, 64, 65, 66, 67},
     0,
     127,
     31,
     "note of the band, or its controller in control mode"},
    {"MIDIchannel%X",
     kAccess<MIDIchannelX, MIDIchannelXZ>,
     {0, 1, 2, 3, 4, 5, 6, 7},
     0,
     15,
     39,
     "MIDI channel of the band, from 0"},
    {"bandOut%X",
     kAccess<bandOutX, bandOutXZ>,
     {0, 10, 20, 30, 40, 50, 60, 70},
     -kLargest,
     kLargest,
     47,
     "last value of the band"},
    {"LearnGainX",
     kAccess<LearnGainX, LearnGainXZ>,
     {0},
     0,
     midi::kLastController,
     55,
     "controller of the gain: 0 none, else 1 + channel * 128 + number"},
    {"LearnLowF%X",
     kAccess<LearnLowFX, LearnLowFXZ>,
     {0},
     0,
     midi::kLastController,
     56,
     "controller of the low edge, likewise"},
    {"LearnHighF%X",
     kAccess<LearnHighFX, LearnHighFXZ>,
     {0},
     0,
     midi::kLastController,
     64,
     "controller of the high edge, likewise"},
    {"tlongEX", kAccess<tlongEX, tlongEXZ>, {0}, 0, 0, 0, "interval (s)", SetupField::Copy::AtOnce},
    {"tsaveEX",
     kAccess<tsaveEX, tsaveEXZ>,
     {0},
     0,
     0,
     0,
     "time of the last send (s)",
     SetupField::Copy::AtOnce},
}};

}  // namespace

std::span<const SetupField> fields() {
  return kFields;
}

void setDefaults() {
  for (std::size_t setup = 0; setup < midi::kSetups; ++setup) {
    const bool odd = OVKAchannelEX[setup] % 2 != 0;
    for (const SetupField& field : kFields) {
      for (std::size_t row = 0; row < field.access.rows; ++row) {
        field.set(row, setup, static_cast<double>(field.initial[row]));
      }
    }
    for (std::size_t band = 0; odd && band < kSetupBands; ++band) {
      const auto channel = static_cast<std::int32_t>(band + kSetupBands);
      MIDIchannelX[band].set(setup, channel);
      MIDIchannelXZ[band].set(setup, channel);
    }
  }
}

void clearFirstPorts() {
  for (std::size_t setup = 0; setup < 8; ++setup) MIDIportEX.set(setup, 0);
}

void resetVariables() {
  mapping::inputLostX = 0;
  OVKAchannelEX.clear();
  setDefaults();
  for (auto& channels : MIDIchannelXZZ) channels.clear();
  MIDIoutONXTempBand.clear();
  SetupBandNX = 0;
  setSoloBandX = 1;
  MIDIbandAll = 0;
  needOffNoteB = 0;
  setupOpenedX = 0;
  setupLoadedX = 0;
  firstTimeRunX = 1;
}

}  // namespace ovka::setmidiband
