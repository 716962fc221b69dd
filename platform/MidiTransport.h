#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace ovka {

/// A destination or source of the machine's MIDI system.
struct MidiEndpoint {
  std::uint64_t id = 0;
  std::string name;
};

/// Receives a packet list: a 4-byte packet count, then per packet an 8-byte time stamp, a 2-byte
/// length and that many data bytes, all in the machine's byte order. Called on the transport's own
/// thread.
using MidiReadProc = void (*)(const std::uint8_t* packetList, void* readContext,
                              void* sourceContext);

/// A MIDI system: one client with its ports and virtual endpoints.
class MidiTransport {
 public:
  virtual ~MidiTransport() = default;
  [[nodiscard]] virtual std::string name() const = 0;
  /// 0 or an errno.
  [[nodiscard]] virtual int open(const std::string& client, MidiReadProc read, void* context) = 0;
  [[nodiscard]] virtual std::vector<MidiEndpoint> destinations() = 0;
  [[nodiscard]] virtual std::vector<MidiEndpoint> sources() = 0;
  /// Sends one message; a time stamp of 0 means now. Never blocks.
  [[nodiscard]] virtual int send(std::uint64_t destination, std::uint64_t timeStamp,
                                 std::span<const std::uint8_t> message) = 0;
  virtual void close() = 0;
};

}  // namespace ovka
