#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "Frame.h"

namespace ovka {

/// Gain factor of a user gain g: 1 for 0, 1 + g above, 1 / (1 - g) below (+1 doubles, -1 halves).
[[nodiscard]] constexpr float gainFactor(float g) noexcept {
  if (g > 0.0F) return 1.0F + g;
  if (g < 0.0F) return 1.0F / (1.0F - g);
  return 1.0F;
}

/// Decodes sample lines of every model and configuration. A value: it holds the settings that the
/// decoding depends on, so that a block of lines is decoded by one snapshot of them, and nothing
/// else.
struct SampleLine {
  /// Bytes of a line with its carriage return; of a record of the old Bluetooth head set.
  static constexpr std::size_t kLineBytes = 16;
  static constexpr std::size_t kRecordBytes = 20;

  enum Side : std::size_t { Left, Right };

  std::uint32_t model = 0;
  std::uint32_t config = 1;
  bool oldBluetooth = false;
  bool showReverseWave = false;
  std::int32_t filterSetUp = 0;
  float amplifierGain = 1.0F;
  std::array<float, 2> gain{1.0F, 1.0F};       ///< gain factors of the sides
  std::array<std::int32_t, 2> textOffset{};    ///< DC offset of the 12-bit decode, already / 20
  std::array<std::int64_t, 2> binaryOffset{};  ///< the three DC offsets of a side together

  /// The settings as they stand. An offset beyond +-2^28, far outside a 24-bit code, is held there.
  [[nodiscard]] static SampleLine current();

  [[nodiscard]] constexpr std::size_t length() const noexcept {
    return oldBluetooth ? kRecordBytes : kLineBytes;
  }
  /// True when every byte of a frame is a character, so that no carriage return occurs inside one.
  [[nodiscard]] constexpr bool isText() const noexcept { return model < 4 || config != 3; }

  /// Decodes a line of at least length() bytes. Values beyond 32 bits are held at the limits.
  [[nodiscard]] Frame decode(const std::uint8_t* line) const;

  /// Calls `use` once with the function that decodes the lines of these settings, every one exactly
  /// as `decode` does, chosen and compiled for a loop over many. With SampleLineDecode.h.
  template <typename Use>
  void withDecode(Use&& use) const;

  /// True when no line can lead to a value beyond 32 bits, so that nothing need be held.
  [[nodiscard]] bool staysInRange() const;

  /// The 24-bit binary decode of channel 1 to 5; an unknown channel gives 0.
  [[nodiscard]] std::int32_t binary24(const std::uint8_t* bytes, std::int32_t channel) const;

 private:
  // Defined in SampleLineDecode.h.
  template <bool kHold>
  [[nodiscard]] std::int32_t text12(std::int32_t digits, Side side) const;
  template <bool kHold>
  [[nodiscard]] std::int32_t text24(std::int32_t high, std::int32_t low, Side side) const;
  template <bool kHold>
  [[nodiscard]] std::int32_t binary24Of(std::int32_t code, std::int32_t channel) const;
  template <bool kHold>
  [[nodiscard]] Frame decodeText12(const std::uint8_t* text) const;
  template <bool kHold>
  [[nodiscard]] Frame decodeText24(const std::uint8_t* text) const;
  template <bool kHold>
  [[nodiscard]] Frame decodeBinary24(const std::uint8_t* bytes) const;
  [[nodiscard]] Frame decodeOldRecord(const std::uint8_t* record) const;
};

}  // namespace ovka
