#include "PacketList.h"

#include <algorithm>
#include <cstring>

namespace ovka {
namespace {

template <typename T>
void append(std::vector<std::uint8_t>& to, T value) {
  const std::size_t at = to.size();
  to.resize(at + sizeof value);
  std::memcpy(to.data() + at, &value, sizeof value);
}

}  // namespace

void PacketList::add(std::uint64_t timeStamp, std::span<const std::uint8_t> data) {
  constexpr std::size_t kLongestPacket = 8192;
  while (!data.empty()) {
    const auto part = data.first(std::min(data.size(), kLongestPacket));
    if (bytes_.empty()) append(bytes_, packets_);
    append(bytes_, timeStamp);
    append(bytes_, static_cast<std::uint16_t>(part.size()));
    bytes_.insert(bytes_.end(), part.begin(), part.end());
    ++packets_;
    data = data.subspan(part.size());
  }
}

void PacketList::deliver(MidiReadProc reader, void* context) {
  if (packets_ != 0 && reader != nullptr) {
    std::memcpy(bytes_.data(), &packets_, sizeof packets_);
    reader(bytes_.data(), context, nullptr);
  }
  packets_ = 0;
  bytes_.clear();
}

}  // namespace ovka
