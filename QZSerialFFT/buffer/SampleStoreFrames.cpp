#include <algorithm>

#include "SampleStore.h"
#include "bitRevRev8MK.h"

namespace ovka {
namespace {

/// The byte copy of a sample: a quarter of it, offset to 128, bits reversed; 0 outside the byte.
template <typename Number>
[[nodiscard]] std::uint8_t byteCopy(Number sample) {
  return bitRevRev8MK(static_cast<std::int64_t>(sample / 4) + 128);
}

}  // namespace

void SampleStore::storeFrame(const Frame& frame) {
  const std::int64_t point = buffer::ploop;
  if (const std::int64_t last = lastWritable(); last >= 0) {
    const auto at = static_cast<std::size_t>(std::clamp<std::int64_t>(point, 0, last));
    for (std::size_t channel = 0; channel < frame.values.size(); ++channel) {
      if (frame.present[channel]) channels_[channel].values.set(at, frame.values[channel]);
    }
  }
  finishFrame();
}

void SampleStore::finishFrame() {
  if (const std::int64_t last = lastWritable(); last >= 0) storeBytes(buffer::ploop, last);
  advance();
  if (buffer::UploadStartZ != 0) copyUpload();
  noteFrame();
}

void SampleStore::storeBytes(std::int64_t point, std::int64_t last) {
  const auto to = static_cast<std::size_t>(std::clamp<std::int64_t>(point, 0, last));
  // As readers get the sample: at the very end that is the point before.
  const std::size_t from =
      std::min(to, static_cast<std::size_t>(std::max<std::int64_t>(last - 1, 0)));
  const ReadSettings settings;
  const bool scaled = settings.isScaled();
  for (std::int32_t channel = 1; channel < buffer::kChannels; ++channel) {
    const std::size_t array = settings.arrayOf(channel);
    const std::int32_t stored = array == kNoArray ? 0 : channels_[array].values.get(from);
    // Unscaled, whole numbers truncate as their quotients would.
    const std::uint8_t byte = scaled ? byteCopy(settings.apply(array, stored))
                                     : byteCopy(settings.withSign(array, stored));
    channels_[static_cast<std::size_t>(channel)].bytes.set(to, byte);
  }
}

bool SampleStore::advance() {
  const std::int64_t point = buffer::ploop;
  if (buffer::setPauseX != 0) return false;
  const std::uint64_t limit = buffer::maxploop;
  const auto capacity = static_cast<std::int64_t>(std::min(limit, buffer::MAXbuffer));
  if (point >= capacity - 1) return endOfBuffer(capacity);
  buffer::ploop = point + 1;
  return false;
}

/// The end of the buffer is reached: stop and pause, or loop. True when looping wrapped.
bool SampleStore::endOfBuffer(std::int64_t capacity) {
  const bool recording = buffer::setRecModeX == 1;
  const bool autoSave = recording && buffer::AutoSaveX != 0;
  // The pause that this sets does not put the point back: it stays at the end.
  buffer::ploop = capacity;
  if (buffer::setLoopModeX == 0) {
    buffer::setPauseX = 1;
    if (!autoSave) return false;
    recording_.PauseMovie();
    recording_.StopRecord2VideoandBrainwave();
    buffer::AutoSaveX = 0;
    return false;
  }
  if (autoSave) recording_.StopRecord2VideoandBrainwave();
  buffer::ploop = buffer::ploopStart.get();
  if (autoSave) buffer::loopCount = buffer::loopCount + 1;
  if (recording) annotations_.gotoStartWhenLoopmodeAndEnd();
  if (autoSave) recording_.StartRecord2VideoandBrainwave();
  return true;
}

void SampleStore::copyUpload() {
  const std::int64_t start = buffer::ploopRockNet;
  if (start < 1 || start > lastReadable()) return;
  std::array<double, kUploadPoints> samples;
  for (const std::int32_t channel : {1, 2}) {
    readBlock(channel, start, samples);
    SharedArray<std::uint8_t>& to = channel == 1 ? bufferLX : bufferRX;
    for (std::size_t i = 0; i < samples.size(); ++i) to.set(i, byteCopy(samples[i]));
  }
}

}  // namespace ovka
