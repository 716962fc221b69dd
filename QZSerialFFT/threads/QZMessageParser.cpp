#include "QZMessageParser.h"

#include <cstring>
#include <iterator>
#include <utility>

#include "Print.h"

namespace ovka {
namespace {

/// Takes values off the front of a list and never looks behind its end.
class Reader {
 public:
  explicit Reader(std::span<const std::uint8_t> bytes) : rest_(bytes) {}

  template <typename T>
  bool take(T& value) {
    if (rest_.size() < sizeof value) return false;
    std::memcpy(&value, rest_.data(), sizeof value);
    rest_ = rest_.subspan(sizeof value);
    return true;
  }
  bool take(std::size_t count, std::span<const std::uint8_t>& bytes) {
    if (rest_.size() < count) return false;
    bytes = rest_.first(count);
    rest_ = rest_.subspan(count);
    return true;
  }

 private:
  std::span<const std::uint8_t> rest_;
};

bool takePacket(Reader& list, MidiPacket& packet) {
  std::uint16_t length = 0;
  return list.take(packet.timeStamp) && list.take(length) && list.take(length, packet.data);
}

}  // namespace

std::vector<MidiMessage> QZMessageParser::takePacketList(std::span<const std::uint8_t> packetList) {
  std::vector<MidiMessage> messages;
  Reader list(packetList);
  std::uint32_t packets = 0;
  bool whole = list.take(packets);
  for (std::uint32_t i = 0; whole && i < packets; ++i) {
    MidiPacket packet;
    whole = takePacket(list, packet);
    if (!whole) break;
    std::vector<MidiMessage> some = messagesForPacket(packet);
    messages.insert(messages.end(), std::make_move_iterator(some.begin()),
                    std::make_move_iterator(some.end()));
  }
  if (!whole) {
    Print(
        "Error takePacketList: the MIDI packet list of %zu bytes ends inside one of its %u "
        "packets; the rest is dropped.\n",
        packetList.size(), packets);
  }
  ports_.getFromPortNew();
  if (nonretainedDelegate_ != nullptr) nonretainedDelegate_->parser_didReadMessages(*this, nullptr);
  Print("takePacketList");
  return messages;
}

std::vector<MidiMessage> QZMessageParser::messagesForPacket(const MidiPacket& /*packet*/) {
  return {};
}

}  // namespace ovka
