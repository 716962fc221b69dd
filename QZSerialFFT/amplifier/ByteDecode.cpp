#include <algorithm>

#include "AmplifierVariables.h"
#include "Print.h"
#include "StreamDecoder.h"
#include "Truncate.h"
#include "bitRevRev8MK.h"

namespace ovka {
namespace {

[[nodiscard]] std::int64_t byteSample(std::uint8_t byte, double scale) {
  constexpr double kSteps = 4.0;
  const double sample =
      static_cast<double>(truncateTo<std::int64_t>(scale * (int{bitrev[byte]} - 128)));
  return truncateTo<std::int32_t>(kSteps * sample);
}

/// Channel of a port; 0 when the configuration gives it none.
[[nodiscard]] std::int32_t channelOf(std::int32_t portN) {
  const std::uint32_t config = buffer::DeviceConfig;
  if (portN == 1 || portN == 2) return portN;
  if (portN == 3 && config == 2) return 3;
  if (portN == 4 && config == 3) return 4;
  return 0;
}

/// Where byte `index` of ports 2 to 4 belongs: beside the byte of port 1 with the same index.
[[nodiscard]] std::int64_t alignedPoint(std::int64_t index) {
  const std::int64_t start = amplifier::ploopRock;
  // While paused port 1 writes to one point only.
  if (buffer::setPauseX != 0 && buffer::ploop == start) return start;
  const std::int64_t point =
      std::clamp<std::int64_t>(start, 0, std::int64_t{buffer::MAXbuffer}) + index;
  const auto capacity =
      static_cast<std::int64_t>(std::min(buffer::maxploop.get(), buffer::MAXbuffer));
  if (buffer::setLoopModeX == 0 || point < capacity) return point;
  const std::int64_t first = std::clamp<std::int64_t>(buffer::ploopStart, 0, capacity);
  return first + (point - capacity) % std::max<std::int64_t>(capacity - first, 1);
}

}  // namespace

void StreamDecoder::printXNumberSTR(std::span<const std::uint8_t> bytes, std::int32_t portN) {
  const std::scoped_lock guard(lock_);
  if (silenced()) return;
  appendToLog(bytes);
  printHXNumber(bytes, portN);
}

void StreamDecoder::printHXNumber(std::span<const std::uint8_t> bytes, std::int32_t portN) {
  const std::scoped_lock guard(lock_);
  const std::int32_t channel = channelOf(portN);
  if (silenced() || channel == 0) return;
  const double scale = amplifier::GainOr;
  if (portN == 1) amplifier::ploopRock = buffer::ploop.get();
  std::int64_t index = 0;
  for (const std::uint8_t byte : bytes) {
    const std::int64_t value = byteSample(byte, scale);
    if (portN != 1) {
      store_.putIntToBuffer(channel, alignedPoint(index++), value);
      continue;
    }
    store_.putIntToBuffer(channel, buffer::ploop, value);
    frames_ = frames_ + 1;
    if (store_.advance()) Print("loopCount=%08d\n", buffer::loopCount.get());
  }
}

}  // namespace ovka
