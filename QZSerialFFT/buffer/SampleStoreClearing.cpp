#include <algorithm>

#include "SampleStore.h"

namespace ovka {
namespace {

constexpr std::int32_t kClearedAuxiliary = 49;
constexpr std::uint8_t kClearedByte = 32;
/// Points behind the current one that cleanData wipes.
constexpr std::int64_t kCleanPoints = 2024;

/// Writes only what differs: memory that was never touched stays untaken where 0 is asked for.
template <typename T>
void fill(SharedArray<T>& array, std::int64_t first, std::int64_t end, T value) {
  for (auto i = static_cast<std::size_t>(first); i < static_cast<std::size_t>(end); ++i) {
    if (array.get(i) != value) array.set(i, value);
  }
}

}  // namespace

void SampleStore::clear(std::size_t channel, std::int64_t first, std::int64_t end) {
  fill(channels_[channel].values, first, end, channel == 0 ? kClearedAuxiliary : 0);
  fill(channels_[channel].bytes, first, end, kClearedByte);
}

void SampleStore::recCleare() {
  recCleareX(0);
}

void SampleStore::recCleareX(std::uint64_t oldCapacity) {
  const std::int64_t end = lastWritable();
  if (end < 0 || oldCapacity >= static_cast<std::uint64_t>(end)) return;
  for (std::size_t channel = 0; channel < channels_.size(); ++channel) {
    clear(channel, static_cast<std::int64_t>(oldCapacity), end);
  }
  noteWrite();
}

void SampleStore::recCleare0() {
  if (const std::int64_t end = lastWritable(); end > 0) clear(0, 0, end);
  noteWrite();
}

void SampleStore::cleanData() {
  const std::int64_t now = std::max<std::int64_t>(buffer::ploop, 0);
  for (std::int64_t i = 0; i < kCleanPoints; ++i) {
    for (std::size_t channel = 1; channel < channels_.size(); ++channel) write(channel, now - i, 0);
  }
  noteWrite();
}

}  // namespace ovka
