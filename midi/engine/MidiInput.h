#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <vector>

#include "ChannelVoiceParser.h"
#include "RunLoop.h"

namespace ovka {

/// A copy of a packet list whose channel-voice status bytes (0x80 to 0xEF) carry `channel` (its
/// lower four bits count) instead of their own; the list of the MIDI system stays as it is. Nothing
/// for a list longer than the message queue takes. The list's own count and lengths are believed.
[[nodiscard]] std::optional<std::vector<std::uint8_t>> restamped(const std::uint8_t* packetList,
                                                                 std::int32_t channel);

/// The main thread's end of MIDI input: takes what MyReadProc and MyReadProcV queued, polls the
/// amplifier's ports with each packet list, and hands the decoded messages to a listener. Nothing
/// is forwarded to any output. Made and destroyed on the main thread; one a process, as the queue
/// is.
class MidiInput {
 public:
  using Listener = std::function<void(const MidiMessage&)>;

  /// `listener` may be empty; it is called on the main thread.
  MidiInput(RunLoop& mainThreadRunLoop, PortPolling& ports, Listener listener);
  ~MidiInput();
  MidiInput(const MidiInput&) = delete;
  MidiInput& operator=(const MidiInput&) = delete;

  [[nodiscard]] ChannelVoiceParser& parser() { return parser_; }

 private:
  static void handle(std::span<const std::uint8_t> block, void* input);

  ChannelVoiceParser parser_;
  Listener listener_;
};

}  // namespace ovka
