#include <algorithm>

#include "SampleStore.h"

namespace ovka {

void SampleStore::copyStored(std::int32_t channel, std::int64_t first,
                             std::span<std::int32_t> out) const {
  const auto opened = static_cast<std::int64_t>(opened_.load(std::memory_order_acquire));
  std::fill(out.begin(), out.end(), 0);
  if (channel < 0 || channel >= buffer::kChannels || first >= opened) return;
  const std::int64_t from = std::max<std::int64_t>(first, 0);
  const auto skipped = static_cast<std::uint64_t>(from) - static_cast<std::uint64_t>(first);
  if (skipped >= out.size()) return;
  const std::size_t count =
      std::min<std::size_t>(out.size() - skipped, static_cast<std::size_t>(opened - from));
  channels_[static_cast<std::size_t>(channel)].values.snapshot(static_cast<std::size_t>(from),
                                                               out.subspan(skipped, count));
}

void SampleStore::storeStored(std::int32_t channel, std::int64_t first,
                              std::span<const std::int32_t> values) {
  const auto opened = static_cast<std::int64_t>(opened_.load(std::memory_order_acquire));
  if (channel < 0 || channel >= buffer::kChannels || first >= opened) return;
  const std::int64_t from = std::max<std::int64_t>(first, 0);
  const auto skipped = static_cast<std::uint64_t>(from) - static_cast<std::uint64_t>(first);
  if (skipped >= values.size()) return;
  const std::size_t count =
      std::min<std::size_t>(values.size() - skipped, static_cast<std::size_t>(opened - from));
  channels_[static_cast<std::size_t>(channel)].values.publish(static_cast<std::size_t>(from),
                                                              values.subspan(skipped, count));
  noteWrite();
}

bool SampleStore::openRoom(std::uint64_t capacity) {
  const std::scoped_lock guard(growth_);
  return growTo(std::min(capacity, buffer::MAXbuffer));
}

}  // namespace ovka
