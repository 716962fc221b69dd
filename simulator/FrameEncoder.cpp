#include "FrameEncoder.h"

#include <algorithm>
#include <cmath>
#include <string_view>

namespace ovka {
namespace {

constexpr std::uint32_t kMiddle12 = 512;
constexpr std::uint32_t kTop12 = 0xFFF;
constexpr std::uint32_t kTop24 = 0xFFFFFF;
constexpr std::uint8_t kCarriageReturn = 13;
constexpr double kGainModels2And3 = 0.98F;       // single precision, as the receiver has it
constexpr double kCodesPerMicrovolt = 131.072;   // 163.84 / 1.25
constexpr double kDigitsPerMicrovolt = 0.04096;  // 163.84 / (2 x 2000)

/// Code of every channel 0 to 4, whatever the width.
using Codes = std::array<std::uint32_t, 5>;

bool is12Bit(const FrameFormat& format) {
  return format.model <= 3 || format.oldBluetooth;
}
bool isBinary(const FrameFormat& format) {
  return !is12Bit(format) && format.config == 3;
}

std::int64_t rounded(double value, double low, double high) {
  // A value that is no number must not become a code by chance.
  if (!(value == value)) value = 0.0;
  return static_cast<std::int64_t>(std::floor(std::clamp(value, low, high) + 0.5));
}

std::uint32_t offsetCode(double value, std::uint32_t middle, std::uint32_t top) {
  const double below = -static_cast<double>(middle);
  return static_cast<std::uint32_t>(middle +
                                    rounded(value, below, static_cast<double>(top - middle)));
}

void putDigits(WireFrame& frame, std::size_t at, std::uint32_t value, std::size_t digits) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  for (std::size_t i = 0; i < digits; ++i) {
    frame.bytes[at + i] =
        static_cast<std::uint8_t>(kDigits[(value >> (4 * (digits - 1 - i))) & 15U]);
  }
}

void putBytes(WireFrame& frame, std::size_t at, std::uint32_t value) {
  frame.bytes[at] = static_cast<std::uint8_t>(value >> 16U);
  frame.bytes[at + 1] = static_cast<std::uint8_t>(value >> 8U);
  frame.bytes[at + 2] = static_cast<std::uint8_t>(value);
}

std::uint8_t bitReversed(std::uint32_t byte) {
  std::uint32_t result = 0;
  for (unsigned bit = 0; bit < 8; ++bit) result |= ((byte >> bit) & 1U) << (7U - bit);
  return static_cast<std::uint8_t>(result);
}

/// The layout of a frame is one thing, what its codes mean another: this is the layout. `digits3`
/// is the code of channel 3 in the three-channel text frame of 24 bits.
WireFrame layOut(const FrameFormat& format, const Codes& codes, std::uint32_t digits3) {
  WireFrame frame;
  frame.size = 16;
  if (format.oldBluetooth) {
    frame.size = 20;
    frame.bytes.fill(' ');
    for (std::size_t channel = 0; channel < 5; ++channel)
      putDigits(frame, 4 * channel, codes[channel], 3);
  } else if (format.model == 1) {
    frame.size = 1;
    frame.bytes[0] = bitReversed(codes[std::clamp(format.port, 1U, 4U)]);
    return frame;
  } else if (is12Bit(format)) {
    frame.bytes.fill(' ');
    for (std::size_t group = 0; group < 4; ++group)
      putDigits(frame, 4 * group, codes[group + 1], 3);
  } else if (isBinary(format)) {
    for (std::size_t group = 0; group < 5; ++group)
      putBytes(frame, 3 * group, codes[(group + 1) % 5]);
  } else {
    frame.bytes.fill(' ');
    for (std::size_t half = 0; half < 4; ++half) {
      const std::uint32_t code = codes[half / 2 + 1];
      putDigits(frame, 4 * half, half % 2 == 0 ? code >> 12U : code & kTop12, 3);
    }
    if (format.config == 2) {
      for (std::size_t digit = 0; digit < 3; ++digit) {
        putDigits(frame, 4 * digit + 3, (digits3 >> (4 * (2 - digit))) & 15U, 1);
      }
    }
  }
  frame.bytes[frame.size - 1] = kCarriageReturn;
  return frame;
}

std::uint32_t codeOf(const FrameFormat& format, double microvolts) {
  if (format.oldBluetooth) {
    return static_cast<std::uint32_t>(rounded(microvolts, -2048.0, 2047.0)) & kTop12;
  }
  switch (format.model) {
    case 0:
      return offsetCode(microvolts / 2.0, kMiddle12, kTop12);
    case 1:
      return offsetCode(microvolts / 4.0, 128, 255);
    case 2:
    case 3:
      return offsetCode(microvolts / (2.0 * kGainModels2And3), kMiddle12, kTop12);
    default:
      return offsetCode(microvolts * kCodesPerMicrovolt, 0x800000, kTop24);
  }
}

}  // namespace

std::uint32_t topCode(const FrameFormat& format) {
  if (is12Bit(format)) return format.model == 1 && !format.oldBluetooth ? 0xFFU : kTop12;
  return kTop24;
}

WireFrame encodeCodes(const FrameFormat& format, const FrameCodes& codes) {
  constexpr std::uint32_t kSign12 = 0x800;  // the old head set sends two's complement
  Codes onLine = codes.channels;
  if (format.oldBluetooth) {
    for (std::uint32_t& code : onLine) code ^= kSign12;
  }
  return layOut(format, onLine, codes.between);
}

WireFrame encodeFrame(const FrameFormat& format, const Microvolts& microvolts) {
  Codes codes{};
  for (std::size_t channel = 0; channel < codes.size(); ++channel) {
    codes[channel] = codeOf(format, microvolts[channel]);
  }
  return layOut(format, codes, offsetCode(microvolts[3] * kDigitsPerMicrovolt, kMiddle12, kTop12));
}

WireFrame encodeSequence(const FrameFormat& format, std::uint64_t n) {
  const auto low12 = static_cast<std::uint32_t>(n & kTop12);
  const auto high12 = static_cast<std::uint32_t>((n >> 12U) & kTop12);
  const auto low24 = static_cast<std::uint32_t>(n & kTop24);
  Codes codes{};
  if (format.oldBluetooth) {
    codes = {low12, high12, low12, high12, low12};
  } else if (format.model == 1) {
    codes.fill(low12 & 255U);
  } else if (is12Bit(format)) {
    codes = {0, low12, high12, low12, high12};
  } else {
    codes = {low24, low24, low24 ^ kTop24, low24, low24 ^ kTop24};
  }
  return layOut(format, codes, low12);
}

}  // namespace ovka
