#include <algorithm>

#include "FrameWriter.h"
#include "SampleStore.h"
#include "bitRevRev8MK.h"

namespace ovka {
namespace {

/// The byte copy of a sample: a quarter of it, offset to 128, bits reversed; 0 outside the byte.
[[nodiscard]] std::uint8_t byteCopy(double sample) {
  return bitRevRev8MK(static_cast<std::int64_t>(sample / 4) + 128);
}

}  // namespace

void SampleStore::storeFrame(const Frame& frame) {
  FrameWriter(*this).store(frame);
}

void SampleStore::finishFrame() {
  FrameWriter(*this).finish();
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
