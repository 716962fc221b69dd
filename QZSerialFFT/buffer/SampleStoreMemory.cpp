#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>

#include "Print.h"
#include "SampleStore.h"

namespace ovka {
namespace {

constexpr std::size_t kPoints = buffer::MAXbuffer + buffer::kMarginPoints;
/// Blocks begin at page borders; each array starts a little further into its block than the one
/// before, or a frame's stores would all meet in the same places of the processor's cache.
constexpr std::size_t kSkew = 448;
constexpr std::size_t kBlockExtra = 10 * kSkew;
constexpr std::size_t kValueBytes = kPoints * sizeof(std::int32_t) + kBlockExtra;
constexpr std::size_t kByteBytes = kPoints + kBlockExtra;
/// Bytes of one point in all ten arrays.
constexpr std::uint64_t kBytesAPoint = buffer::kChannels * (sizeof(std::int32_t) + 1);
constexpr float kStartAmplitude = 184.32F;

/// One 32-bit value of a saved block.
std::int32_t savedValue(const std::uint8_t* from, bool bigEndian) {
  if (!bigEndian) {
    std::int32_t value = 0;
    std::memcpy(&value, from, sizeof value);
    return value;
  }
  return static_cast<std::int32_t>(std::uint32_t{from[0]} << 24U | std::uint32_t{from[1]} << 16U |
                                   std::uint32_t{from[2]} << 8U | std::uint32_t{from[3]});
}

}  // namespace

SampleStore::SampleStore(AddressSpace& space, RecordingControl& recording,
                         AnnotationTrack& annotations)
    : space_(space), recording_(recording), annotations_(annotations) {
  bufferLX.attach(uploadLeft_.data(), uploadLeft_.size());
  bufferRX.attach(uploadRight_.data(), uploadRight_.size());
  reserveArrays();
}

SampleStore::~SampleStore() {
  releaseArrays();
}

void SampleStore::reserveArrays() {
  std::size_t skew = 0;
  for (Channel& channel : channels_) {
    channel.valueBlock = space_.reserve(kValueBytes);
    channel.byteBlock = space_.reserve(kByteBytes);
    if (channel.valueBlock == nullptr || channel.byteBlock == nullptr) return;
    channel.values.attach(reinterpret_cast<std::int32_t*>(channel.valueBlock + skew), kPoints);
    skew += kSkew;
    channel.bytes.attach(reinterpret_cast<std::uint8_t*>(channel.byteBlock + skew), kPoints);
    skew += kSkew;
  }
  reserved_ = true;
}

void SampleStore::releaseArrays() {
  for (const Channel& channel : channels_) {
    if (channel.valueBlock != nullptr) space_.release(channel.valueBlock, kValueBytes);
    if (channel.byteBlock != nullptr) space_.release(channel.byteBlock, kByteBytes);
  }
}

int SampleStore::openFor(std::uint64_t capacity) {
  const std::uint64_t points = capacity + buffer::kMarginPoints;
  if (!reserved_) return ENOMEM;
  if (points <= opened_.load(std::memory_order_relaxed)) return 0;
  for (const Channel& channel : channels_) {
    const std::size_t valueBytes = points * sizeof(std::int32_t) + kBlockExtra;
    if (const int error = space_.open(channel.valueBlock, valueBytes)) return error;
    if (const int error = space_.open(channel.byteBlock, points + kBlockExtra)) return error;
  }
  opened_.store(points, std::memory_order_release);
  return 0;
}

bool SampleStore::growTo(std::uint64_t capacity) {
  const int error = openFor(capacity);
  if (error == 0) return true;
  const std::uint64_t megabytes = (capacity + buffer::kMarginPoints) * kBytesAPoint / 1000000;
  PrintError(error,
             "Error allocating the sample buffer: %llu points need %llu MB, the old length of %llu "
             "points is kept - ",
             static_cast<unsigned long long>(capacity), static_cast<unsigned long long>(megabytes),
             static_cast<unsigned long long>(buffer::maxploop));
  return false;
}

bool SampleStore::initMalloc(std::uint64_t capacity) {
  const std::scoped_lock guard(growth_);
  capacity = std::min(capacity, buffer::MAXbuffer);
  if (!growTo(capacity)) return false;
  buffer::maxploop = capacity;
  PPvolt = kStartAmplitude;
  noteWrite();
  return true;
}

std::vector<std::uint8_t> SampleStore::getDataFromBuffer(std::int32_t channel,
                                                         std::int64_t startPoint,
                                                         std::int64_t samplepoint) const {
  if (channel < 0 || channel >= buffer::kChannels || lastWritable() < 0) return {};
  const std::int64_t start = std::clamp<std::int64_t>(startPoint, 0, lastWritable());
  const std::int64_t end = std::clamp<std::int64_t>(samplepoint, 0, lastWritable());
  if (end <= start) return {};
  const auto values = static_cast<std::size_t>(end - start);
  // Channel 1 states its length as 8 bytes a point once the start is not 0.
  const std::size_t stated = channel == 1 && start != 0 ? 2 * values : values;
  const auto first = static_cast<std::size_t>(start);
  const std::size_t readable =
      std::min<std::size_t>(stated, opened_.load(std::memory_order_acquire) - first);
  const auto& array = channels_[static_cast<std::size_t>(channel)].values;
  std::vector<std::uint8_t> data(stated * sizeof(std::int32_t));
  for (std::size_t i = 0; i < readable; ++i) {
    const std::int32_t value = array.get(first + i);
    std::memcpy(data.data() + i * sizeof value, &value, sizeof value);
  }
  return data;
}

bool SampleStore::putDataToBuffer(std::int32_t channel, std::int64_t samplepoint,
                                  std::span<const std::uint8_t> dataX, std::int32_t dataSwap) {
  Print("process putDataToBuffer ");
  if (channel < 0 || channel >= buffer::kChannels) return true;
  const std::scoped_lock guard(growth_);
  const bool whole = samplepoint == 0 && dataSwap == 0;
  std::uint64_t count =
      std::min<std::uint64_t>(dataX.size() / sizeof(std::int32_t), buffer::MAXbuffer);
  std::int64_t first = 0;
  if (whole) {
    if (!growTo(count)) return false;
  } else {
    first =
        std::clamp<std::int64_t>(buffer::ploopStart, 0, std::max<std::int64_t>(lastWritable(), 0));
    const std::int64_t room = lastWritable() - first;
    count = std::min(count, static_cast<std::uint64_t>(std::max<std::int64_t>(room, 0)));
  }
  auto& array = channels_[static_cast<std::size_t>(channel)].values;
  for (std::uint64_t i = 0; i < count; ++i) {
    array.set(static_cast<std::size_t>(first) + i,
              savedValue(dataX.data() + i * sizeof(std::int32_t), dataSwap != 0));
  }
  if (whole) buffer::maxploop = count;
  noteWrite();
  return true;
}

}  // namespace ovka
