#pragma once

#include <cstdint>
#include <mutex>
#include <span>
#include <vector>

#include "PortPolling.h"

namespace ovka {

/// One packet of a packet list; the data points into the list.
struct MidiPacket {
  std::uint64_t timeStamp = 0;  ///< the MIDI system's own time
  std::span<const std::uint8_t> data;
};

/// One decoded MIDI message.
struct MidiMessage {
  std::uint64_t timeStamp = 0;  ///< the MIDI system's own time
  std::vector<std::uint8_t> bytes;
};

class QZMessageParser;

/// Hears that a packet list was taken. Main thread.
class QZMessageParserDelegate {
 public:
  virtual ~QZMessageParserDelegate() = default;
  /// parser:didReadMessages: `messages` is null: the system announces the list without its
  /// messages.
  virtual void parser_didReadMessages(QZMessageParser& parser,
                                      const std::vector<MidiMessage>* messages) = 0;
};

/// Takes packet lists apart; what the packets mean is a subclass's to say. Main thread.
class QZMessageParser {
 public:
  /// init
  explicit QZMessageParser(PortPolling& ports) : ports_(ports) {}
  virtual ~QZMessageParser() = default;
  QZMessageParser(const QZMessageParser&) = delete;
  QZMessageParser& operator=(const QZMessageParser&) = delete;

  /// delegate: null when there is none.
  [[nodiscard]] QZMessageParserDelegate* delegate() const { return nonretainedDelegate_; }
  /// setDelegate: not owned; it outlives the parser or is set to null first.
  void setDelegate(QZMessageParserDelegate* delegate) { nonretainedDelegate_ = delegate; }

  /// takePacketList: asks messagesForPacket: for every packet and gathers the messages, which the
  /// caller gets back; then polls the amplifier's ports once, so that MIDI traffic also drives
  /// acquisition, tells the delegate and prints "takePacketList". `packetList` holds a 4-byte
  /// count, then per packet an 8-byte time stamp, a 2-byte length and the data. A list that claims
  /// more than the span holds is taken up to its last whole packet, and one line is printed.
  std::vector<MidiMessage> takePacketList(std::span<const std::uint8_t> packetList);

  /// messagesForPacket: none here; subclasses decode.
  [[nodiscard]] virtual std::vector<MidiMessage> messagesForPacket(const MidiPacket& packet);

 protected:
  /// For subclasses that read system-exclusive messages.
  std::mutex readingSysExLock;

 private:
  PortPolling& ports_;
  QZMessageParserDelegate* nonretainedDelegate_ = nullptr;
};

}  // namespace ovka
