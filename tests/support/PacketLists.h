#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace ovka::testing {

template <typename T>
void append(std::vector<std::uint8_t>& to, T value) {
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(&value);
  for (std::size_t i = 0; i < sizeof value; ++i) to.push_back(bytes[i]);
}

/// A MIDI packet list: a 4-byte count, then per packet an 8-byte time stamp (1000, 1001, ...), a
/// 2-byte length and the data.
inline std::vector<std::uint8_t> packetList(const std::vector<std::vector<std::uint8_t>>& packets) {
  std::vector<std::uint8_t> list;
  append(list, static_cast<std::uint32_t>(packets.size()));
  std::uint64_t timeStamp = 1000;
  for (const auto& data : packets) {
    append(list, timeStamp++);
    append(list, static_cast<std::uint16_t>(data.size()));
    list.insert(list.end(), data.begin(), data.end());
  }
  return list;
}

}  // namespace ovka::testing
