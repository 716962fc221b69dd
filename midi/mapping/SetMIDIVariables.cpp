#include "SetMIDIVariables.h"

#include <limits>

namespace ovka::setmidi {
namespace {

using midi::UseQTMIDIX;
using setupfield::kAccess;
using Copy = SetupField::Copy;

constexpr double kMost = std::numeric_limits<float>::max();

constexpr SetupField flag(std::string_view name, SetupAccess access, float initial,
                          std::size_t entry, std::string_view meaning) {
  return {name, access, {initial}, 0, 1, entry, meaning};
}
constexpr SetupField edge(std::string_view name, SetupAccess access, float initial,
                          std::size_t entry, std::string_view meaning) {
  return {name, access, {initial}, -kMost, kMost, entry, meaning};
}
constexpr SetupField controller(std::string_view name, SetupAccess access, std::size_t entry,
                                std::string_view meaning) {
  return {name, access, {0}, 0, midi::kLastController, entry, meaning};
}

// Documents depend on the entries: one is never moved or given another meaning.
constexpr std::array<SetupField, 48> kFields{{
    {"MIDIoutONX",
     kAccess<MIDIoutONX, MIDIoutONXZ>,
     {0},
     0,
     1,
     1,
     "1: the set-up sends",
     Copy::AtOnce},
    {"SendMIDItimingX",
     kAccess<SendMIDItimingX, SendMIDItimingXZ>,
     {3},
     0,
     6,
     2,
     "interval by menu: 0.001, 0.025, 0.05, 0.1, 0.2, 0.5, 1 s"},
    flag("ONInputX", kAccess<ONInputX, ONInputXZ>, 1, 3, "1: every send takes new values"),
    {"UsePeakModeX",
     kAccess<UsePeakModeX, UsePeakModeXZ>,
     {0},
     0,
     3,
     4,
     "input: 0 peaks, 1 band, 2 brain switch of BSchannelX, 3 of the peak search"},
    {"OVKAchannelX",
     kAccess<OVKAchannelX, OVKAchannelXZ>,
     {0},
     0,
     9,
     5,
     "source: 0 to 3 the channels, 4 to 9 the coherence pairs"},
    {"BSchannelX", kAccess<BSchannelX, BSchannelXZ>, {0}, 0, 11, 6, "brain-switch row of input 2"},
    flag("PeakPowerX", kAccess<PeakPowerX, PeakPowerXZ>, 1, 7, "1: strongest value, 0: sum"),
    edge("LowFX", kAccess<LowFX, LowFXZ>, 4, 8, "least input F (Hz)"),
    edge("HighFX", kAccess<HighFX, HighFXZ>, 30, 9, "greatest input F (Hz)"),
    edge("LowFNX", kAccess<LowFNX, LowFNXZ>, 48, 10, "output F of the least input"),
    edge("HighFNX", kAccess<HighFNX, HighFNXZ>, 72, 11, "output F of the greatest input"),
    edge("LowVX", kAccess<LowVX, LowVXZ>, 0, 12, "least input V"),
    edge("HighVX", kAccess<HighVX, HighVXZ>, 20, 13, "greatest input V"),
    edge("LowVNX", kAccess<LowVNX, LowVNXZ>, 40, 14, "output V of the least input"),
    edge("HighVNX", kAccess<HighVNX, HighVNXZ>, 127, 15, "output V of the greatest input"),
    edge("InputFX", kAccess<InputFX, InputFXZ>, 0, 16, "input F"),
    edge("InputVX", kAccess<InputVX, InputVXZ>, 0, 17, "input V"),
    edge("OutputFX", kAccess<OutputFX, OutputFXZ>, 0, 18, "output F"),
    edge("OutputVX", kAccess<OutputVX, OutputVXZ>, 0, 19, "output V"),
    flag("MIDInoteFX", kAccess<MIDInoteFX, MIDInoteFXZ>, 1, 20, "F is the note"),
    flag("MIDIvelocityFX", kAccess<MIDIvelocityFX, MIDIvelocityFXZ>, 0, 21, "F is the velocity"),
    flag("MIDIchannelFX", kAccess<MIDIchannelFX, MIDIchannelFXZ>, 0, 22, "F is the channel"),
    flag("MIDIprogramchangeFX", kAccess<MIDIprogramchangeFX, MIDIprogramchangeFXZ>, 0, 23,
         "F is the program"),
    flag("MIDIpitchbendFX", kAccess<MIDIpitchbendFX, MIDIpitchbendFXZ>, 0, 24,
         "F is the pitch bend"),
    flag("MIDIcontrolchangeVFX", kAccess<MIDIcontrolchangeVFX, MIDIcontrolchangeVFXZ>, 0, 25,
         "F is the controller, V its value"),
    flag("MIDIcontrolchangeNFX", kAccess<MIDIcontrolchangeNFX, MIDIcontrolchangeNFXZ>, 0, 26,
         "F is the value of controller V"),
    flag("MIDInoteVX", kAccess<MIDInoteVX, MIDInoteVXZ>, 0, 27, "V is the note"),
    flag("MIDIvelocityVX", kAccess<MIDIvelocityVX, MIDIvelocityVXZ>, 1, 28, "V is the velocity"),
    flag("MIDIchannelVX", kAccess<MIDIchannelVX, MIDIchannelVXZ>, 0, 29, "V is the channel"),
    flag("MIDIprogramchangeVX", kAccess<MIDIprogramchangeVX, MIDIprogramchangeVXZ>, 0, 30,
         "V is the program"),
    flag("MIDIpitchbendVX", kAccess<MIDIpitchbendVX, MIDIpitchbendVXZ>, 0, 31,
         "V is the pitch bend"),
    flag("MIDIcontrolchangeVVX", kAccess<MIDIcontrolchangeVVX, MIDIcontrolchangeVVXZ>, 0, 32,
         "V is the controller, F its value"),
    flag("MIDIcontrolchangeNVX", kAccess<MIDIcontrolchangeNVX, MIDIcontrolchangeNVXZ>, 0, 33,
         "V is the value of controller F"),
    flag("NoteOnOffX", kAccess<NoteOnOffX, NoteOnOffXZ>, 0, 34, "1: on and at once off"),
    flag("NoteOffOnX", kAccess<NoteOffOnX, NoteOffOnXZ>, 1, 35, "1: the last off, then on"),
    {"MIDIchannelX", kAccess<MIDIchannelX, MIDIchannelXZ>, {0}, 0, 15, 36, "MIDI channel, from 0"},
    flag("Play3PeaksX", kAccess<Play3PeaksX, Play3PeaksXZ>, 0, 37, "1: the three largest peaks"),
    flag("PlayOnlyNoteChangedX", kAccess<PlayOnlyNoteChangedX, PlayOnlyNoteChangedXZ>, 1, 38,
         "1: a note that stays the same keeps sounding"),
    {"MIDIportX", kAccess<MIDIportX, MIDIportXZ>, {0}, 0, 23, 39, "MIDI port"},
    {"UseQTMIDIX",
     kAccess<UseQTMIDIX, UseQTMIDIXZ>,
     {0},
     0,
     1,
     40,
     "1: the synthesizer plays too",
     Copy::AtOnce},
    {"ScaleX",
     kAccess<ScaleX, ScaleXZ>,
     {0},
     0,
     6,
     41,
     "scale of the notes: 0 off, 1 major, 2 minor, 3 major pentatonic, 4 minor pentatonic, 5 "
     "dorian, 6 whole tone"},
    {"ScaleRootX", kAccess<ScaleRootX, ScaleRootXZ>, {0}, 0, 11, 42, "root of the scale, 0 is C"},
    controller("LearnLowFX", kAccess<LearnLowFX, LearnLowFXZ>, 43,
               "controller of LowFX: 0 none, else 1 + channel * 128 + number"),
    controller("LearnHighFX", kAccess<LearnHighFX, LearnHighFXZ>, 44,
               "controller of HighFX, likewise"),
    controller("LearnLowVX", kAccess<LearnLowVX, LearnLowVXZ>, 45, "controller of LowVX, likewise"),
    controller("LearnHighVX", kAccess<LearnHighVX, LearnHighVXZ>, 46,
               "controller of HighVX, likewise"),
    {"tlongX", kAccess<tlongX, tlongXZ>, {0}, 0, 0, 0, "interval (s)", Copy::AtOnce},
    {"tsaveX", kAccess<tsaveX, tsaveXZ>, {0}, 0, 0, 0, "time of the last send (s)", Copy::AtOnce},
}};

}  // namespace

std::span<const SetupField> fields() {
  return kFields;
}

void setDefaults() {
  for (const SetupField& field : kFields) {
    for (std::size_t setup = 0; setup < midi::kSetups; ++setup) {
      field.set(0, setup, static_cast<double>(field.initial[0]));
    }
  }
}

void clearFirstPorts() {
  for (std::size_t setup = 0; setup < 8; ++setup) MIDIportX.set(setup, 0);
}

void resetVariables() {
  setDefaults();
  PlayNote.clear();
  MIDIoutONXTemp.clear();
  SetupNX = 0;
  needOffNote = 0;
  setupOpenedX = 0;
  setupLoadedX = 0;
  firstTimeRunX = 1;
}

}  // namespace ovka::setmidi
