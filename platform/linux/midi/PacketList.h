#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "MidiTransport.h"

namespace ovka {

/// Gathers incoming messages into the packet list that a MidiReadProc takes. One thread.
class PacketList {
 public:
  /// Lists stay below this, so that no reader has to refuse one for its length.
  static constexpr std::size_t kMostBytes = 64 * 1024;

  /// Appends a packet. Data longer than a packet's 2-byte length is cut into several.
  void add(std::uint64_t timeStamp, std::span<const std::uint8_t> data);
  [[nodiscard]] bool full() const { return bytes_.size() >= kMostBytes / 2; }
  /// Hands the list over, if it has packets and somebody reads, and empties it.
  void deliver(MidiReadProc reader, void* context);

 private:
  std::uint32_t packets_ = 0;
  std::vector<std::uint8_t> bytes_;
};

}  // namespace ovka
