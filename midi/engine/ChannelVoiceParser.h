#pragma once

#include <vector>

#include "QZMessageParser.h"

namespace ovka {

/// Decodes the channel-voice messages of a packet, running status included; real-time bytes pass
/// between, system messages are skipped. Every packet starts anew: packets of several sources
/// meet here, and one may go on with a system-exclusive message. Any bytes are safe.
class ChannelVoiceParser final : public QZMessageParser {
 public:
  using QZMessageParser::QZMessageParser;
  /// messagesForPacket: whole messages only, of 2 or 3 bytes, status first.
  [[nodiscard]] std::vector<MidiMessage> messagesForPacket(const MidiPacket& packet) override;
};

}  // namespace ovka
