#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "BufferVariables.h"
#include "DocumentVariables.h"
#include "MidiVariables.h"
#include "SetupField.h"
#include "SetupMarks.h"
#include "Shared.h"
#include "SharedBlock.h"

/// The set-ups of the band mapping. Every array has 128 entries, one a set-up, and an edit copy of
/// the same name with a Z: the window edits the copy, setSet: commits it. Defaults, ranges and
/// meanings are in the table of `fields()`. Any thread reads and writes.
namespace ovka::setmidiband {

inline constexpr std::size_t kSetupBands = 8;
template <typename T>
using PerSetup = SharedBlock<T, midi::kSetups>;
/// A family of eight: `LowFX[0]` is LowF1X, `LowFX[7]` is LowF8X.
template <typename T>
using PerBand = std::array<PerSetup<T>, kSetupBands>;

/// Set-ups whose turn a change may have moved.
inline constinit SetupMarks changes;

inline constinit MarkedBlock<std::int32_t> MIDIoutONEX{changes};
inline constinit MarkedBlock<std::int32_t> SendMIDItimingEX{changes};
inline constinit MarkedBlock<std::int32_t> ONInputEX{changes};
/// The interval looked up from the index, and the time of the last send (seconds); the tick. Their
/// edit copies are reset with the others and never committed: time is not the window's to set back.
inline constinit MarkedBlock<double> tlongEX{changes}, tsaveEX{changes};
inline constinit PerSetup<double> tlongEXZ, tsaveEXZ;

inline constinit PerSetup<std::int32_t> MIDIoutONEXZ, SendMIDItimingEXZ, ONInputEXZ;
inline constinit PerSetup<std::int32_t> UsePeakModeEX, UsePeakModeEXZ;
inline constinit PerSetup<std::int32_t> OVKAchannelEX, OVKAchannelEXZ;
inline constinit PerSetup<std::int32_t> PeakPowerEX, PeakPowerEXZ;
inline constinit PerSetup<std::int32_t> AveragePowerEX, AveragePowerEXZ;
inline constinit PerSetup<std::int32_t> BSchannelEX, BSchannelEXZ;
inline constinit PerSetup<float> gainNoteX, gainNoteXZ;
inline constinit PerSetup<std::int32_t> NoteOffOnEX, NoteOffOnEXZ;
inline constinit PerSetup<std::int32_t> NoteOnOffEX, NoteOnOffEXZ;
inline constinit PerSetup<std::int32_t> ControlEX, ControlEXZ;
inline constinit PerSetup<std::int32_t> MIDIportEX, MIDIportEXZ;
/// Stored; the mapping does not use it.
inline constinit PerSetup<std::int32_t> TempoEX, TempoEXZ;
inline constinit PerBand<float> LowFX{}, LowFXZ{};
inline constinit PerBand<float> HighFX{}, HighFXZ{};
inline constinit PerBand<std::int32_t> bandNoteX{}, bandNoteXZ{};
/// 0 to 15; shown as 1 to 16. The third copy is MIDIchannelCopy's.
inline constinit PerBand<std::int32_t> MIDIchannelX{}, MIDIchannelXZ{}, MIDIchannelXZZ{};
inline constinit PerBand<float> bandOutX{}, bandOutXZ{};
/// Controllers that set the gain and the edges: 0 none, else 1 + channel (0 to 15) * 128 + number.
inline constinit PerSetup<std::int32_t> LearnGainX, LearnGainXZ;
inline constinit PerBand<std::int32_t> LearnLowFX{}, LearnLowFXZ{}, LearnHighFX{}, LearnHighFXZ{};
/// The switches that sendMidiTemporalyOFF puts aside.
inline constinit PerSetup<std::int32_t> MIDIoutONXTempBand;

// name, default: meaning; writer.
/// The set-up shown in the window, and the one played when not all are, 0 to 127; the user.
inline constinit Shared<std::int32_t> SetupBandNX{0};
/// 1: every enabled set-up plays, 0: `SetupBandNX` alone. Kept on purpose: the name says the
/// opposite; the user.
inline constinit Shared<std::int32_t> setSoloBandX{1};
/// 1: all set-ups played before the window was opened; awakeFromNib.
inline constinit Shared<std::int32_t> MIDIbandAll{0};
/// 1: something was sent since the last shutdown; the tick.
inline constinit Shared<std::int32_t> needOffNoteB{0};
/// 1: the set-up was opened, loaded or changed, so documents save it.
inline constinit Shared<std::int32_t> setupOpenedX{0};
/// 1: the stored set-ups were asked for; setGetSetup.
inline constinit Shared<std::int32_t> setupLoadedX{0};
/// 1: the arrays do not hold their defaults yet; the first init.
inline constinit Shared<std::int32_t> firstTimeRunX{1};

/// While one of these is set, nothing is sent.
inline constexpr Shared<std::int32_t>& startToSaveData = document::savingX;
inline constexpr Shared<std::int32_t>& startToOpenData = document::openingX;
inline constexpr Shared<std::int32_t>& setPauseX = buffer::setPauseX;

/// Every array that a person may see, with its range.
[[nodiscard]] std::span<const SetupField> fields();
/// Puts both copies of every set-up to the defaults. The channels become 0 to 7 where the set-up
/// listened to an even `OVKAchannelEX`, 8 to 15 where to an odd one.
void setDefaults();
/// Zeroes the first 8 port choices; the note engine's set-up asks for it.
void clearFirstPorts();
/// Puts every variable back to its default.
void resetVariables();

}  // namespace ovka::setmidiband
