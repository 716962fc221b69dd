#include "MaximumTime.h"

#include <algorithm>

#include "Print.h"

namespace ovka {
namespace {

[[nodiscard]] std::uint64_t capacityFor(std::uint64_t speed, std::uint64_t seconds) {
  return std::min(speed * seconds, buffer::MAXbuffer);
}

}  // namespace

bool setMaxTime(SampleStore& store, std::int32_t index) {
  if (index < 0 || index >= static_cast<std::int32_t>(kMaximumTimes.size())) return false;
  const std::uint64_t before = buffer::maxploop;
  const std::uint32_t seconds = kMaximumTimes[static_cast<std::size_t>(index)].seconds;
  if (!store.initMalloc(capacityFor(buffer::SampleSpeed, seconds))) return false;
  buffer::MaxTimeActionX = index;
  store.recCleareX(before);
  return true;
}

bool setMaxTime(SampleStore& store, std::string_view selector) {
  for (std::size_t i = 0; i < kMaximumTimes.size(); ++i) {
    if (kMaximumTimes[i].selector == selector) {
      return setMaxTime(store, static_cast<std::int32_t>(i));
    }
  }
  return false;
}

std::string takeMaximumTime(SampleStore& store, std::int32_t before) {
  const std::int32_t wanted = buffer::MaxTimeActionX;
  if (wanted == before || wanted < 0 || wanted >= static_cast<std::int32_t>(kMaximumTimes.size()))
    return {};
  const std::uint32_t seconds = kMaximumTimes[static_cast<std::size_t>(wanted)].seconds;
  const auto points = static_cast<std::int64_t>(capacityFor(buffer::SampleSpeed, seconds));
  const bool cut = buffer::ploop > points;
  if (!cut && setMaxTime(store, wanted)) return {};
  buffer::MaxTimeActionX = before;
  return cut ? "the maximum recording time was not taken: the recording in memory is longer; save "
               "it and clear the buffer first"
             : "the maximum recording time was not taken: there is not enough memory";
}

std::uint32_t samplingModeSpeed(std::int32_t mode) {
  if (mode == kCustomSamplingMode) return buffer::SampleSpeedX;
  if (mode < 0 || mode >= static_cast<std::int32_t>(kSamplingModes.size())) return 0;
  return kSamplingModes[static_cast<std::size_t>(mode)];
}

bool setSamplingMode(SampleStore& store, std::int32_t mode, const SampleSpeedSender& send) {
  const std::uint32_t wanted = samplingModeSpeed(mode);
  if (wanted == 0) return false;
  buffer::samplingModeX = mode;
  return changeSampleSpeed(store, send(wanted));
}

bool changeSampleSpeed(SampleStore& store, std::uint32_t samplesPerSecond) {
  if (samplesPerSecond == 0) return false;
  const std::uint64_t before = buffer::maxploop;
  const std::uint64_t old = std::max<std::uint32_t>(buffer::SampleSpeed, 1);
  // `maxploop` may stand anywhere, so the product is held before it can overflow.
  const std::uint64_t seconds = std::min(before, buffer::MAXbuffer) / old;
  const std::uint64_t capacity = capacityFor(samplesPerSecond, seconds);
  buffer::SampleSpeed = samplesPerSecond;
  Print("maxploop in the setsamplingF = %lld\n", static_cast<long long>(capacity));
  if (!store.initMalloc(capacity)) return false;
  store.recCleareX(before);
  return true;
}

}  // namespace ovka
