#include "ChannelVoiceParser.h"

#include <cstddef>
#include <cstdint>
#include <utility>

namespace ovka {

std::vector<MidiMessage> ChannelVoiceParser::messagesForPacket(const MidiPacket& packet) {
  std::vector<MidiMessage> messages;
  std::vector<std::uint8_t> message;
  std::uint8_t status = 0;  // 0: none runs
  for (const std::uint8_t byte : packet.data) {
    if (byte >= 0xF8) continue;
    if (byte >= 0x80) {
      status = byte < 0xF0 ? byte : 0;
      message.clear();
      continue;
    }
    if (status == 0) continue;
    if (message.empty()) message.push_back(status);
    message.push_back(byte);
    const bool twoBytes = (status & 0xE0U) == 0xC0;  // program change, channel pressure
    if (message.size() == (twoBytes ? 2U : 3U)) {
      messages.push_back({packet.timeStamp, std::exchange(message, {})});
    }
  }
  return messages;
}

}  // namespace ovka
