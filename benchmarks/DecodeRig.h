#pragma once

#include <array>
#include <cstdint>
#include <random>
#include <span>
#include <string_view>
#include <vector>

#include "AmplifierVariables.h"
#include "EegSignal.h"
#include "FrameEncoder.h"
#include "HeapAddressSpace.h"
#include "LossCounters.h"
#include "NotificationCenter.h"
#include "Print.h"
#include "SampleStore.h"
#include "StreamDecoder.h"

namespace ovka::bench {

/// A store and a decoder in a house of their own, looping, with nobody to tell.
struct DecodeRig {
  struct Quiet final : RecordingControl, AnnotationTrack, ApplicationControl {
    void PauseMovie() override {}
    void StopRecord2VideoandBrainwave() override {}
    void StartRecord2VideoandBrainwave() override {}
    void AutoSaveWhenRecEnd() override {}
    std::int64_t getLengthofTime() override { return 0; }
    void gotoStartWhenLoopmodeAndEnd() override {}
    void autoReONport(std::int32_t) override {}
    void needupdateNotification() override {}
    std::int32_t setDistributeTiming() override { return 0; }
    void needupdateSerialOutNotification() override {}
    std::int32_t getSerialOutputTiming() override { return 0; }
    void doSomethingSlow(std::int32_t) override {}
    std::int32_t getSetStartAutoSaveProcess() override { return 0; }
    void SetStartAutoSaveProcess(std::int32_t) override {}
    std::int32_t getSetStartAutoSaveMovie() override { return 0; }
    void SetStartAutoSaveMovie(std::int32_t) override {}
  };

  DecodeRig(std::uint64_t capacity, std::uint32_t model, std::uint32_t config, bool fixed) {
    setPrintSink([](std::string_view) {});
    buffer::resetVariables();
    amplifier::resetVariables();
    store.initMalloc(capacity);
    store.recCleare();
    use(model, config, fixed);
    center.addObserver(this, "needUpdateDataBuffer", [this] { decoder.needUpdateDataBuffer(); });
  }
  /// The settings are process-wide: a rig takes them before it decodes.
  static void use(std::uint32_t model, std::uint32_t config, bool fixed) {
    buffer::setLoopModeX = 1;
    buffer::SelectDevice = model;
    buffer::DeviceConfig = config;
    amplifier::FixedFramingX = fixed ? 1 : 0;
  }

  Quiet quiet;
  HeapAddressSpace space;
  NotificationCenter center;
  LossCounters losses;
  SampleStore store{space, quiet, quiet};
  StreamDecoder decoder{store, center, losses, quiet};
};

/// What a stream carries.
enum class Values : std::uint8_t { Random, Eeg };

using Bytes = std::vector<std::uint8_t>;

/// Whole frames of a model with lines of 16 bytes.
inline Bytes frames(std::uint32_t model, std::uint32_t config, Values values, std::size_t count,
                    double samplesPerSecond) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  const bool text = model < 4 || config != 3;
  std::mt19937 random(1);
  EegSignal eeg({}, 1);
  Bytes bytes;
  bytes.reserve(count * SampleLine::kLineBytes);
  for (std::size_t n = 0; n < count; ++n) {
    if (values == Values::Eeg) {
      Microvolts microvolts{};
      eeg.next(samplesPerSecond, microvolts);
      const WireFrame frame = encodeFrame({model, config, false, 1}, microvolts);
      bytes.insert(bytes.end(), frame.bytes.begin(), frame.bytes.begin() + 16);
      continue;
    }
    for (std::size_t at = 0; at < SampleLine::kLineBytes; ++at) {
      const auto value = static_cast<unsigned>(random());
      auto byte = static_cast<std::uint8_t>(text ? kDigits[value % 16] : static_cast<char>(value));
      if (text && at % 4 == 3) byte = ' ';
      bytes.push_back(at == SampleLine::kLineBytes - 1 ? std::uint8_t{13} : byte);
    }
  }
  return bytes;
}

}  // namespace ovka::bench
