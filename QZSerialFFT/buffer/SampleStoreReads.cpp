#include <algorithm>

#include "SampleStore.h"

namespace ovka {
namespace {

[[nodiscard]] bool isKnown(std::int32_t channel) {
  return channel >= 0 && channel < buffer::kChannels;
}

}  // namespace

std::int64_t SampleStore::lastReadable() const {
  const std::int64_t writable = lastWritable();
  return writable < 0 ? -1 : std::max<std::int64_t>(writable - 1, 0);
}

double SampleStore::getIntFromBuffer(std::int32_t channel, std::int64_t samplepoint) const {
  const std::int64_t last = lastReadable();
  if (!isKnown(channel) || last < 0) return 0.0;
  const ReadSettings settings;
  const std::size_t array = settings.arrayOf(channel);
  if (array == kNoArray) return 0.0;
  const std::int64_t point = std::clamp<std::int64_t>(samplepoint, 0, last);
  return settings.apply(array, channels_[array].values.get(static_cast<std::size_t>(point)));
}

void SampleStore::readBlock(std::int32_t channel, std::int64_t first, std::span<double> out) const {
  const ReadSettings settings;
  const std::int64_t last = lastReadable();
  const std::size_t array =
      isKnown(channel) && last >= 0 ? settings.arrayOf(channel) : std::size_t{kNoArray};
  if (array == kNoArray) {
    std::fill(out.begin(), out.end(), 0.0);
    return;
  }
  const SharedArray<std::int32_t>& values = channels_[array].values;
  const auto at = [&](std::int64_t point) {
    return settings.apply(array, values.get(static_cast<std::size_t>(point)));
  };
  auto to = out.begin();
  const auto left = [&] { return static_cast<std::uint64_t>(out.end() - to); };
  if (first < 0) {
    const std::uint64_t front = std::min(left(), -static_cast<std::uint64_t>(first));
    to = std::fill_n(to, front, at(0));
    first = 0;
  }
  if (first <= last) {
    const auto inside = static_cast<std::uint64_t>(last - first + 1);
#pragma GCC unroll 8
    for (std::uint64_t count = std::min(left(), inside); count > 0; --count) *to++ = at(first++);
  }
  if (left() > 0) std::fill(to, out.end(), at(last));
}

std::int32_t SampleStore::storedValue(std::int32_t channel, std::int64_t samplepoint) const {
  const std::int64_t last = lastReadable();
  if (!isKnown(channel) || last < 0) return 0;
  const std::int64_t point = std::clamp<std::int64_t>(samplepoint, 0, last);
  return channels_[static_cast<std::size_t>(channel)].values.get(static_cast<std::size_t>(point));
}

std::uint64_t SampleStore::writeGeneration() const noexcept {
  return frames_.load(std::memory_order_acquire) + writes_.load(std::memory_order_acquire);
}

std::uint8_t SampleStore::getCharFromBuffer(std::int32_t channel, std::int64_t samplepoint) const {
  const std::int64_t last = lastWritable();
  if (!isKnown(channel) || last < 0) return 0;
  const std::int64_t point = std::clamp<std::int64_t>(samplepoint, 0, last);
  return channels_[static_cast<std::size_t>(channel)].bytes.get(static_cast<std::size_t>(point));
}

void SampleStore::write(std::size_t channel, std::int64_t samplepoint, std::int64_t dataX) {
  const std::int64_t last = lastWritable();
  if (last < 0) return;
  const auto point = static_cast<std::size_t>(std::clamp<std::int64_t>(samplepoint, 0, last));
  channels_[channel].values.set(point, static_cast<std::int32_t>(dataX));
}

void SampleStore::putIntToBuffer(std::int32_t channel, std::int64_t samplepoint,
                                 std::int64_t dataX) {
  if (!isKnown(channel)) return;
  write(static_cast<std::size_t>(channel), samplepoint, dataX);
  noteWrite();
}

void SampleStore::putCharToBuffer(std::int32_t channel, std::int64_t samplepoint,
                                  std::uint8_t dataX) {
  const std::int64_t last = lastWritable();
  if (!isKnown(channel) || last < 0) return;
  const auto point = static_cast<std::size_t>(std::clamp<std::int64_t>(samplepoint, 0, last));
  channels_[static_cast<std::size_t>(channel)].bytes.set(point, dataX);
}

}  // namespace ovka
