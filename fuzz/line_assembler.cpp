#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

#include "AmplifierVariables.h"
#include "HeapAddressSpace.h"
#include "NotificationCenter.h"
#include "Print.h"
#include "RecordingShell.h"
#include "StreamDecoder.h"

// Five bytes choose model, configuration, framing, head set and filter set-up; then come blocks,
// each behind a byte with its length and the way in.

namespace {

using namespace ovka;
namespace amp = amplifier;

constexpr std::uint64_t kCapacity = 500;

struct Bench {
  Bench() {
    setPrintSink([](std::string_view) {});
    store.initMalloc(kCapacity);
    center.addObserver(this, "needUpdateDataBuffer", [this] { decoder.needUpdateDataBuffer(); });
  }
  HeapAddressSpace space;
  testing::RecordingShell shell;
  NotificationCenter center;
  LossCounters losses;
  SampleStore store{space, shell.recording, shell.annotations};
  StreamDecoder decoder{store, center, losses, shell.application};
};

void chooseSettings(std::span<const std::uint8_t> choice) {
  buffer::resetVariables();
  amp::resetVariables();
  buffer::maxploop = kCapacity;
  buffer::SelectDevice = choice[0] % 10U;
  buffer::DeviceConfig = choice[1] % 5U;
  amp::FixedFramingX = choice[2] % 2;
  amp::oldBluetooth = choice[3] % 2;
  amp::SelectLSFset = choice[4] % 9;
  buffer::setLoopModeX = choice[2] / 2 % 2;
  buffer::ShowReverseWaveX = choice[3] / 2 % 3;
  // Gains and offsets from sane to absurd.
  amp::hardwareGainCH1 = static_cast<float>(choice[0] / 10U) * 1e30F;
  amp::hardwareGainCH2 = -static_cast<float>(choice[1] / 5U);
  amp::DCoffSetCH1X100000 = std::int64_t{choice[4]} << 55U;
  amp::GainOr = choice[0] > 128 ? 1e300 : 1.0;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr std::size_t kChoiceBytes = 5;
  if (size < kChoiceBytes) return 0;
  static Bench bench;
  std::span<const std::uint8_t> left(data, size);
  chooseSettings(left.first(kChoiceBytes));
  left = left.subspan(kChoiceBytes);
  bench.decoder.resetInput();
  bench.losses.reset();
  while (!left.empty()) {
    const std::size_t length = std::min<std::size_t>(left[0] & 0x3FU, left.size() - 1);
    const unsigned way = left[0] >> 6U;
    const auto block = left.subspan(1, length);
    left = left.subspan(1 + length);
    const auto port = static_cast<std::int32_t>(length % 6);
    if (way == 0) bench.decoder.stageRead(port, block);
    if (way == 1) bench.decoder.decodeRead(port, block);
    if (way == 2) bench.decoder.decodePacket(block);
    if (way == 3) {
      bench.decoder.setStringIn(block);
      bench.decoder.getFromModemNewQCstringIN(0, port);
    }
  }
  bench.shell.log.clear();
  // Whatever came in, the position stays inside the buffer.
  const std::int64_t point = buffer::ploop;
  if (point < 0 || point > static_cast<std::int64_t>(kCapacity)) __builtin_trap();
  return 0;
}
