#include "SampleLine.h"

#include <algorithm>

#include "AmplifierVariables.h"
#include "ByteCodes.h"
#include "Truncate.h"

namespace ovka {
namespace {

constexpr std::int32_t kMiddle12 = 512;       // of the text code, as the amplifier centres it
constexpr std::int32_t kMiddle24 = 0x800000;  // of the offset-binary code
constexpr std::int64_t kTextOffsetStep = 20;  // offset units in one step of the text code
constexpr std::int32_t kHexPairScale = 2000;  // of the third channel between the hex groups

[[nodiscard]] std::int64_t heldOffset(std::int64_t offset) {
  constexpr std::int64_t kLimit = std::int64_t{1} << 28U;
  return std::clamp(offset, -kLimit, kLimit);
}

[[nodiscard]] std::int32_t truncated(double value) {
  return truncateTo<std::int32_t>(value);
}

[[nodiscard]] std::int32_t negated(std::int32_t value) {
  return truncated(-static_cast<double>(value));
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
  if (model <= 3) return oldBluetooth ? decodeOldRecord(line) : decodeText12(line);
  if (model > 9) return {};
  if (config <= 2) return decodeText24(line);
  return config == 3 ? decodeBinary24(line) : Frame{};
}

// All factors are single precision here, so every product is rounded to single precision.
std::int32_t SampleLine::text12(std::uint8_t d0, std::uint8_t d1, std::uint8_t d2,
                                Side side) const {
  const std::int32_t code = hex12(d0, d1, d2) - (kMiddle12 + textOffset[side]);
  const float scaled = amplifierGain * 2.0F * static_cast<float>(code) * gain[side];
  return truncated(static_cast<double>(scaled));
}

Frame SampleLine::decodeText12(const std::uint8_t* line) const {
  const auto group = [&](std::size_t at, Side side) {
    return text12(line[at], line[at + 1], line[at + 2], side);
  };
  Frame frame;
  frame.set(1, group(0, Left));
  frame.set(2, group(4, Right));
  if (config <= 1 && showReverseWave) {
    frame.set(3, frame.values[1]);
    frame.set(4, negated(frame.values[2]));
  }
  if (config == 2 || config == 3) frame.set(3, group(8, Left));
  if (config == 3) frame.set(4, group(12, Right));
  return frame;
}

Frame SampleLine::decodeOldRecord(const std::uint8_t* line) const {
  // A signed 12-bit code: the inverted top bit turns it into an offset one. It has no gain.
  const auto group = [&](std::size_t at) {
    return 256 * (CharToInt(line[at]) ^ 8) + 16 * CharToInt(line[at + 1]) +
           CharToInt(line[at + 2]) - 2048;
  };
  Frame frame;
  frame.set(0, group(0));
  frame.set(1, group(4));
  frame.set(2, group(8));
  if (config == 2 || config == 3) frame.set(3, group(12));
  if (config == 3) frame.set(4, group(16));
  return frame;
}

// The gain factor stays fractional here; the last factor is double precision.
std::int32_t SampleLine::text24(const std::uint8_t* digits, Side side) const {
  const std::int64_t code = hex12(digits[0], digits[1], digits[2]) * 4096 +
                            hex12(digits[4], digits[5], digits[6]) - kMiddle24;
  std::int64_t value = 0;
  if (filterSetUp >= 0 && filterSetUp <= 5) value = code - binaryOffset[side];
  if (filterSetUp == 6) value = code;
  const float scaled = amplifierGain * static_cast<float>(value) * gain[side];
  return truncated(static_cast<double>(scaled) * 1.25);
}

Frame SampleLine::decodeText24(const std::uint8_t* line) const {
  Frame frame;
  frame.set(1, text24(line, Left));
  frame.set(2, text24(line + 8, Right));
  if (config == 2) {
    const std::int32_t between = text12(line[3], line[7], line[11], Left);
    frame.set(3, truncated(static_cast<double>(kHexPairScale) * static_cast<double>(between)));
  }
  return frame;
}

// The integer part of the gain factor: a gain below 1 silences the side, as the amplifier's users
// know it.
std::int32_t SampleLine::binary24(const std::uint8_t* bytes, std::int32_t channel) const {
  if (channel < 1 || channel > 5) return 0;
  const Side side = channel == 1 || channel == 3 ? Left : Right;
  const std::int64_t code = 65536 * bytes[0] + 256 * bytes[1] + bytes[2];
  std::int64_t value = code - kMiddle24;
  if (channel <= 2) value = code - (kMiddle24 + binaryOffset[side]);
  value *= truncated(static_cast<double>(gain[side]));
  const float scaled = amplifierGain * static_cast<float>(value);
  return truncated(static_cast<double>(scaled) * 1.25);
}

Frame SampleLine::decodeBinary24(const std::uint8_t* line) const {
  Frame frame;
  for (std::int32_t channel = 1; channel <= 5; ++channel) {
    const auto at = static_cast<std::size_t>(channel - 1) * 3;
    // The fifth channel of the amplifier is the buffer's auxiliary channel 0.
    frame.set(static_cast<std::size_t>(channel % 5), binary24(line + at, channel));
  }
  return frame;
}

}  // namespace ovka
