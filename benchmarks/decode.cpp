#include <benchmark/benchmark.h>
#include <cstring>
#include <random>
#include <string_view>
#include <vector>

#include "AmplifierVariables.h"
#include "HeapAddressSpace.h"
#include "NotificationCenter.h"
#include "StreamDecoder.h"

// Decoding of a full staging buffer into the sample store, beside a memcpy of the same bytes.

namespace {

using namespace ovka;

struct NoRecording final : RecordingControl {
  void PauseMovie() override {}
  void StopRecord2VideoandBrainwave() override {}
  void StartRecord2VideoandBrainwave() override {}
  void AutoSaveWhenRecEnd() override {}
};
struct NoAnnotations final : AnnotationTrack {
  std::int64_t getLengthofTime() override { return 0; }
  void gotoStartWhenLoopmodeAndEnd() override {}
  void autoReONport(std::int32_t) override {}
};
struct NoApplication final : ApplicationControl {
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

struct Bench {
  HeapAddressSpace space;
  NoRecording recording;
  NoAnnotations annotations;
  NoApplication application;
  NotificationCenter center;
  LossCounters losses;
  SampleStore store{space, recording, annotations};
  StreamDecoder decoder{store, center, losses, application};
};

/// Whole frames that fill the staging buffer: samples of any value.
std::vector<std::uint8_t> stream(bool text) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::mt19937 random(1);
  std::vector<std::uint8_t> bytes(StreamDecoder::kBufferBytes);
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const std::size_t at = i % SampleLine::kLineBytes;
    const auto value = static_cast<unsigned>(random());
    bytes[i] =
        text ? static_cast<std::uint8_t>(kDigits[value % 16]) : static_cast<std::uint8_t>(value);
    if (text && at % 4 == 3) bytes[i] = ' ';
    if (at == SampleLine::kLineBytes - 1) bytes[i] = 13;
  }
  return bytes;
}

void decode(benchmark::State& state) {
  const auto model = static_cast<std::uint32_t>(state.range(0));
  buffer::resetVariables();
  amplifier::resetVariables();
  Bench bench;
  if (!bench.store.initMalloc(432000)) state.SkipWithError("no memory");
  buffer::setLoopModeX = 1;
  buffer::SelectDevice = model;
  buffer::DeviceConfig = static_cast<std::uint32_t>(state.range(1));
  amplifier::FixedFramingX = static_cast<std::int32_t>(state.range(2));
  const auto bytes = stream(model < 4 || state.range(1) != 3);
  for (auto _ : state) bench.decoder.printNumberSTR(bytes);
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes.size()));
  const auto sent = static_cast<double>(state.iterations()) *
                    static_cast<double>(bytes.size() / SampleLine::kLineBytes);
  state.counters["stored"] = static_cast<double>(bench.decoder.framesStored()) / sent;
}

void copy(benchmark::State& state) {
  const auto from = stream(true);
  std::vector<std::uint8_t> to(from.size());
  for (auto _ : state) {
    std::memcpy(to.data(), from.data(), from.size());
    benchmark::DoNotOptimize(to.data());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(from.size()));
}

}  // namespace

BENCHMARK(copy)->Name("memcpy");
BENCHMARK(decode)
    ->Name("decode")
    ->ArgNames({"model", "config", "fixed"})
    ->Args({0, 3, 0})
    ->Args({6, 1, 0})
    ->Args({6, 3, 0})
    ->Args({0, 3, 1})
    ->Args({6, 1, 1})
    ->Args({6, 3, 1});

BENCHMARK_MAIN();
