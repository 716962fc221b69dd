#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "MidiVariables.h"
#include "SetupField.h"
#include "SetupMarks.h"
#include "Shared.h"
#include "SharedBlock.h"

/// The set-ups of the single-value mapping. Every array has 128 entries, one a set-up, and an edit
/// copy of the same name with a Z: the window edits the copy, setSet: commits it. Defaults, ranges
/// and meanings are in the table of `fields()`. Any thread reads and writes.
namespace ovka::setmidi {

template <typename T>
using PerSetup = SharedBlock<T, midi::kSetups>;

/// Set-ups whose turn a change may have moved.
inline constinit SetupMarks changes;

/// The set-up sends. Its Z is no edit copy but the snapshot that every tick takes.
inline constinit MarkedBlock<std::int32_t> MIDIoutONX{changes};
inline constinit PerSetup<std::int32_t> MIDIoutONXZ;
inline constinit MarkedBlock<std::int32_t> SendMIDItimingX{changes};
inline constinit MarkedBlock<std::int32_t> ONInputX{changes};
inline constinit PerSetup<std::int32_t> SendMIDItimingXZ, ONInputXZ;
/// The interval looked up from the index, and the time of the last send (seconds); the tick. Their
/// edit copies are reset with the others and never committed: time is not the window's to set back.
inline constinit MarkedBlock<double> tlongX{changes}, tsaveX{changes};
inline constinit PerSetup<double> tlongXZ, tsaveXZ;

inline constinit PerSetup<std::int32_t> UsePeakModeX, UsePeakModeXZ;
inline constinit PerSetup<std::int32_t> OVKAchannelX, OVKAchannelXZ;
inline constinit PerSetup<std::int32_t> BSchannelX, BSchannelXZ;
inline constinit PerSetup<std::int32_t> PeakPowerX, PeakPowerXZ;
// Ranges: of the inputs (F in Hz, V in the units of its source) and of the outputs.
inline constinit PerSetup<float> LowFX, LowFXZ, HighFX, HighFXZ;
inline constinit PerSetup<float> LowFNX, LowFNXZ, HighFNX, HighFNXZ;
inline constinit PerSetup<float> LowVX, LowVXZ, HighVX, HighVXZ;
inline constinit PerSetup<float> LowVNX, LowVNXZ, HighVNX, HighVNXZ;
inline constinit PerSetup<float> InputFX, InputFXZ, InputVX, InputVXZ;
inline constinit PerSetup<float> OutputFX, OutputFXZ, OutputVX, OutputVXZ;
// Roles of the two outputs, 0 or 1.
inline constinit PerSetup<std::int32_t> MIDInoteFX, MIDInoteFXZ, MIDInoteVX, MIDInoteVXZ;
inline constinit PerSetup<std::int32_t> MIDIvelocityFX, MIDIvelocityFXZ, MIDIvelocityVX,
    MIDIvelocityVXZ;
inline constinit PerSetup<std::int32_t> MIDIchannelFX, MIDIchannelFXZ, MIDIchannelVX,
    MIDIchannelVXZ;
inline constinit PerSetup<std::int32_t> MIDIprogramchangeFX, MIDIprogramchangeFXZ,
    MIDIprogramchangeVX, MIDIprogramchangeVXZ;
inline constinit PerSetup<std::int32_t> MIDIpitchbendFX, MIDIpitchbendFXZ, MIDIpitchbendVX,
    MIDIpitchbendVXZ;
inline constinit PerSetup<std::int32_t> MIDIcontrolchangeVFX, MIDIcontrolchangeVFXZ,
    MIDIcontrolchangeVVX, MIDIcontrolchangeVVXZ;
inline constinit PerSetup<std::int32_t> MIDIcontrolchangeNFX, MIDIcontrolchangeNFXZ,
    MIDIcontrolchangeNVX, MIDIcontrolchangeNVXZ;
inline constinit PerSetup<std::int32_t> NoteOnOffX, NoteOnOffXZ, NoteOffOnX, NoteOffOnXZ;
/// 0 to 15; a channel role overwrites it.
inline constinit PerSetup<std::int32_t> MIDIchannelX, MIDIchannelXZ;
inline constinit PerSetup<std::int32_t> Play3PeaksX, Play3PeaksXZ;
inline constinit PerSetup<std::int32_t> PlayOnlyNoteChangedX, PlayOnlyNoteChangedXZ;
inline constinit PerSetup<std::int32_t> MIDIportX, MIDIportXZ;
/// Controllers that set the input ranges: 0 none, else 1 + channel (0 to 15) * 128 + number.
inline constinit PerSetup<std::int32_t> LearnLowFX, LearnLowFXZ, LearnHighFX, LearnHighFXZ;
inline constinit PerSetup<std::int32_t> LearnLowVX, LearnLowVXZ, LearnHighVX, LearnHighVXZ;
/// The scale that the set-up's notes are moved into (0: every semitone), and its root (0 is C).
inline constinit PerSetup<std::int32_t> ScaleX, ScaleXZ, ScaleRootX, ScaleRootXZ;
/// The edit copy of the engine's switch.
inline constinit PerSetup<std::int32_t> UseQTMIDIXZ;
/// 1: a note of this set-up is sounding; the tick.
inline constinit PerSetup<std::int32_t> PlayNote;
/// The switches that sendMidiTemporalyOFF puts aside.
inline constinit PerSetup<std::int32_t> MIDIoutONXTemp;

// name, default: meaning; writer.
/// The set-up shown in the window, 0 to 127; the user.
inline constinit Shared<std::int32_t> SetupNX{0};
/// 1: something was sent since the last shutdown; the tick.
inline constinit Shared<std::int32_t> needOffNote{0};
/// 1: the set-up was opened, loaded or changed, so documents save it.
inline constinit Shared<std::int32_t> setupOpenedX{0};
/// 1: the stored set-ups were asked for; setGetSetup.
inline constinit Shared<std::int32_t> setupLoadedX{0};
/// 1: the arrays do not hold their defaults yet; the first init.
inline constinit Shared<std::int32_t> firstTimeRunX{1};

/// Every array that a person may see, with its range.
[[nodiscard]] std::span<const SetupField> fields();
/// Puts both copies of every set-up to the defaults: off, and ready to play the strongest peak of
/// channel A from 4 to 30 Hz as notes from 48 to 72, the louder the stronger.
void setDefaults();
/// Zeroes the first 8 port choices; the note engine's set-up asks for it.
void clearFirstPorts();
/// Puts every variable back to its default.
void resetVariables();

}  // namespace ovka::setmidi
