#include <algorithm>

#include "SampleStore.h"

namespace ovka {

void SampleStore::copyStored(std::int32_t channel, std::int64_t first,
                             std::span<std::int32_t> out) const {
  const auto opened = static_cast<std::int64_t>(opened_.load(std::memory_order_acquire));
  const bool known = channel >= 0 && channel < buffer::kChannels && first < opened;
  const std::int64_t from = std::max<std::int64_t>(first, 0);
  const std::size_t before =
      known ? std::min(out.size(), static_cast<std::size_t>(static_cast<std::uint64_t>(from) -
                                                            static_cast<std::uint64_t>(first)))
            : out.size();
  std::ranges::fill(out.first(before), 0);
  out = out.subspan(before);
  if (out.empty()) return;
  const auto there = out.first(std::min(out.size(), static_cast<std::size_t>(opened - from)));
  channels_[static_cast<std::size_t>(channel)].values.snapshot(static_cast<std::size_t>(from),
                                                               there);
  std::ranges::fill(out.subspan(there.size()), 0);
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
