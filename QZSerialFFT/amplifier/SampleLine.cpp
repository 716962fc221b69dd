#include "SampleLine.h"

#include <algorithm>
#include <cmath>

#include "AmplifierVariables.h"
#include "ByteCodes.h"
#include "SampleLineDecode.h"

namespace ovka {
namespace {

constexpr std::int64_t kTextOffsetStep = 20;  // offset units in one step of the text code

[[nodiscard]] std::int64_t heldOffset(std::int64_t offset) {
  constexpr std::int64_t kLimit = std::int64_t{1} << 28U;
  return std::clamp(offset, -kLimit, kLimit);
}

}  // namespace

SampleLine SampleLine::current() {
  namespace amp = amplifier;
  SampleLine line;
  line.model = buffer::SelectDevice;
  line.config = buffer::DeviceConfig;
  line.oldBluetooth = amp::oldBluetooth != 0;
  line.showReverseWave = buffer::ShowReverseWaveX != 0;
  line.filterSetUp = amp::SelectLSFset;
  line.amplifierGain = amp::newBlueToothAmpGain;
  line.gain = {gainFactor(amp::hardwareGainCH1), gainFactor(amp::hardwareGainCH2)};
  const auto textSteps = [](std::int64_t offset) {
    return static_cast<std::int32_t>(heldOffset(offset) / kTextOffsetStep);
  };
  line.textOffset = {textSteps(amp::DCoffSetCH1X10000), textSteps(amp::DCoffSetCH2X10000)};
  line.binaryOffset = {heldOffset(amp::DCoffSetCH1X100000) + heldOffset(amp::DCoffSetCH1X10000) +
                           heldOffset(amp::DCoffSetCH1X1000),
                       heldOffset(amp::DCoffSetCH2X100000) + heldOffset(amp::DCoffSetCH2X10000) +
                           heldOffset(amp::DCoffSetCH2X1000)};
  return line;
}

Frame SampleLine::decode(const std::uint8_t* line) const {
  if (model <= 3) return oldBluetooth ? decodeOldRecord(line) : decodeText12<true>(line);
  if (model > 9) return {};
  if (config <= 2) return decodeText24<true>(line);
  return config == 3 ? decodeBinary24<true>(line) : Frame{};
}

bool SampleLine::staysInRange() const {
  constexpr double kSafe = 1073741824.0;  // half of what fits: rounding changes nothing
  constexpr double kCodes12 = 4096 + line::kMiddle12;
  constexpr double kCodes24 = 2 * line::kMiddle24;
  // Sums, which a factor that is no number makes one too: no comparison with it is true.
  const double gains = (1.0 + std::abs(double{amplifierGain})) *
                       (1.0 + std::abs(double{gain[Left]}) + std::abs(double{gain[Right]}));
  const auto largest = [](const auto& pair) {
    return std::max(std::abs(static_cast<double>(pair[Left])),
                    std::abs(static_cast<double>(pair[Right])));
  };
  return (kCodes12 + largest(textOffset)) * 2.0 * line::kHexPairScale * gains < kSafe &&
         (kCodes24 + largest(binaryOffset)) * line::kStep24 * gains < kSafe;
}

Frame SampleLine::decodeOldRecord(const std::uint8_t* record) const {
  // A signed 12-bit code: the inverted top bit turns it into an offset one. It has no gain.
  const auto group = [&](std::size_t at) {
    return 256 * (CharToInt(record[at]) ^ 8) + 16 * CharToInt(record[at + 1]) +
           CharToInt(record[at + 2]) - 2048;
  };
  Frame frame;
  frame.set(0, group(0));
  frame.set(1, group(4));
  frame.set(2, group(8));
  if (config == 2 || config == 3) frame.set(3, group(12));
  if (config == 3) frame.set(4, group(16));
  return frame;
}

std::int32_t SampleLine::binary24(const std::uint8_t* bytes, std::int32_t channel) const {
  if (channel < 1 || channel > 5) return 0;
  return binary24Of<true>(65536 * bytes[0] + 256 * bytes[1] + bytes[2], channel);
}

}  // namespace ovka
