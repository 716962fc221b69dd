#pragma once

#include <cstdint>

#include "Shared.h"
#include "SharedBlock.h"

/// Switches and state of the note engine.
namespace ovka::midi {

inline constexpr std::int32_t kSetups = 128;
inline constexpr std::int32_t kPorts = 24;
inline constexpr std::int32_t kChannels = 16;
/// Controllers as one number, 1 + channel * 128 + controller: the last; 0 means none.
inline constexpr std::int32_t kLastController = kChannels * 128;

// name, default: meaning (unit); writer.
/// 1: the client is set up; mainMidi.
inline constinit Shared<std::int32_t> runMIDI{0};
/// 0: every send function does nothing; the user.
inline constinit Shared<std::int32_t> MIDIuseX{1};
/// 0: nothing goes to the MIDI system, the synthesizer may still play; the user.
inline constinit Shared<std::int32_t> coreMidi{1};
/// Synthesizer back-end, 1: started as a whole, 0: a voice a channel; the user.
inline constinit Shared<std::int32_t> AUuse{1};
/// 1: messages carry a time stamp; the user.
inline constinit Shared<std::int32_t> TimeStampON{0};
/// Number of destinations found when the port list was built; setGetOutMIDIPort.
inline constinit Shared<std::int32_t> findPortCountE{0};
/// Program of the synthesizer's channel 0, 0 to 127; the user.
inline constinit Shared<std::int32_t> mProgram0{0};
/// Channel that incoming MIDI is re-stamped with, 0 to 15; the user.
inline constinit Shared<std::int32_t> gChannel{0};
/// The current channel, 0 to 15; SetChannel.
inline constinit Shared<std::int32_t> Channel{0};
/// Per input channel, the port that must have a destination for incoming MIDI to be taken; the
/// user.
inline constinit SharedBlock<std::int32_t, kChannels> inputPortX{};
/// Note, set-up, channel and port of the last Note On request; the send functions.
inline constinit Shared<std::int32_t> noteZ{0};
inline constinit Shared<std::int32_t> SetupNZ{0};
inline constinit Shared<std::int32_t> channelZ{0};
inline constinit Shared<std::int32_t> MIDIportZ{0};
/// Per set-up, 1: it also plays on the software synthesizer; the user.
inline constinit SharedBlock<std::int32_t, kSetups> UseQTMIDIX{};

/// Puts every variable back to its default.
void resetVariables();

}  // namespace ovka::midi
