#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "AlignedBlock.h"
#include "Shared.h"
#include "SharedArray.h"

namespace ovka {

/// What the two sound channels listen to: 65536 samples a channel, filled with a generated sine or
/// with any block that a caller puts in. Any thread.
class SoundInput {
 public:
  static constexpr std::int64_t kRoom = 65536;

  SoundInput();

  /// Puts a block at the start of sound channel 0 or 1 and clears the rest; samples beyond the room
  /// and other channels are ignored.
  void putSoundBlock(std::int32_t channel, std::span<const double> block);

  /// sinwaveSoundTest:offsetPoint: a sine of `p` points per radian (0 or not finite: silence) in
  /// both channels, the second one delayed by the angle (degrees). Its amplitude is 184.32 at
  /// first.
  void sinwaveSoundTest(float p, std::int32_t offsetPoint);
  /// sinwaveSoundTestPower: the same with amplitude 6.144 x power, the stored period and angle 0.
  void sinwaveSoundTestPower(float power);

  /// Samples first, first + 1, ... of sound channel 0 or 1; 0 outside the room.
  void readSound(std::int32_t channel, std::int64_t first, std::span<double> out) const;

 private:
  AlignedBlock memory_;
  std::array<SharedArray<double>, 2> channels_;
  Shared<float> amplitude_{184.32F};
  Shared<float> period_{0.0F};  // points per radian
};

}  // namespace ovka
