#include "MidiInput.h"

#include <cstddef>
#include <cstring>
#include <utility>

#include "MessageQueue.h"

namespace ovka {

std::optional<std::vector<std::uint8_t>> restamped(const std::uint8_t* packetList,
                                                   std::int32_t channel) {
  constexpr std::size_t kTimeStamp = 8;
  if (packetList == nullptr) return std::nullopt;
  std::uint32_t packets = 0;
  std::memcpy(&packets, packetList, sizeof packets);
  std::vector<std::uint8_t> copy(packetList, packetList + sizeof packets);
  const auto to = static_cast<std::uint8_t>(static_cast<std::uint32_t>(channel) & 0x0FU);
  for (std::uint32_t i = 0; i < packets; ++i) {
    const std::uint8_t* packet = packetList + copy.size();
    std::uint16_t length = 0;
    if (copy.size() + kTimeStamp + sizeof length > kMaxPacketListBytes) return std::nullopt;
    std::memcpy(&length, packet + kTimeStamp, sizeof length);
    const std::size_t head = kTimeStamp + sizeof length;
    if (copy.size() + head + length > kMaxPacketListBytes) return std::nullopt;
    const std::size_t data = copy.size() + head;
    copy.insert(copy.end(), packet, packet + head + length);
    for (std::size_t k = data; k < copy.size(); ++k) {
      if (copy[k] >= 0x80 && copy[k] < 0xF0) {
        copy[k] = static_cast<std::uint8_t>((copy[k] & 0xF0U) | to);
      }
    }
  }
  return copy;
}

MidiInput::MidiInput(RunLoop& mainThreadRunLoop, PortPolling& ports, Listener listener)
    : parser_(ports), listener_(std::move(listener)) {
  CreateMessageQueue(mainThreadRunLoop, &MidiInput::handle, this);
}

MidiInput::~MidiInput() {
  DestroyMessageQueue();
}

void MidiInput::handle(std::span<const std::uint8_t> block, void* input) {
  if (block.size() < kMessageContextBytes) return;
  auto& self = *static_cast<MidiInput*>(input);
  const auto messages = self.parser_.takePacketList(block.subspan(kMessageContextBytes));
  if (!self.listener_) return;
  for (const MidiMessage& message : messages) self.listener_(message);
}

}  // namespace ovka
