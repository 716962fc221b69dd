#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "Signal.h"

namespace ovka {

/// Which frames a line carries.
struct FrameFormat {
  std::uint32_t model = 6;
  std::uint32_t config = 3;
  bool oldBluetooth = false;
  std::uint32_t port = 1;  ///< model 1: the channel of this line
};

/// The longest frame: a record of the old Bluetooth head set.
inline constexpr std::size_t kLongestFrame = 20;

/// One encoded frame.
struct WireFrame {
  std::array<std::uint8_t, kLongestFrame> bytes{};
  std::size_t size = 0;
};

/// The codes of a frame, by channel 0 to 4, from 0 to topCode(); the middle of the range is 0 uV in
/// all formats but 12-bit text, whose middle is 512.
struct FrameCodes {
  std::array<std::uint32_t, 5> channels{};
  std::uint32_t between = 0;  ///< 24-bit text, configuration 2: channel 3, between the hex groups
};
/// The greatest code of a channel; of `between` 0xFFF.
[[nodiscard]] std::uint32_t topCode(const FrameFormat& format);
/// Lays codes out as a frame.
[[nodiscard]] WireFrame encodeCodes(const FrameFormat& format, const FrameCodes& codes);

/// Encodes one sample of every channel so that a reader's getIntFromBuffer gives microvolts (model
/// 4: the same codes; its readers see them 163.84 times as large). Values beyond the code's range
/// saturate. Codes:
/// - models 0, 2, 3: "hhh hhh hhh hhh\r", h = 512 + microvolts / (2 x amplifier gain), 0 to 4095;
/// - model 1: one byte, bit-reversed(128 + microvolts / 4), of channel `port`;
/// - models 4 to 9: 24 bits, 0x800000 + microvolts x 131.072; text with six digits a channel for
///   configurations 0 to 2 (2: channel 3 as three digits between them, 512 + microvolts x 0.04096),
///   three bytes a channel for configuration 3, order 1, 2, 3, 4, 0;
/// - old Bluetooth: five groups for channels 0 to 4, 12-bit two's complement, one code a microvolt.
[[nodiscard]] WireFrame encodeFrame(const FrameFormat& format, const Microvolts& microvolts);

/// A frame whose codes carry the frame number n, so that a test can prove what was lost:
/// - 12-bit text and old Bluetooth: groups 0, 2 (and 4) hold n mod 4096, groups 1 and 3 n / 4096;
/// - model 1: bit-reversed(n mod 256);
/// - 24 bits: channels 1, 3, 0 hold n mod 2^24, channels 2 and 4 its complement; the three digits
/// of
///   configuration 2 hold n mod 4096.
[[nodiscard]] WireFrame encodeSequence(const FrameFormat& format, std::uint64_t n);

}  // namespace ovka
