#pragma once

#include <cstdint>
#include <span>

namespace ovka::desktop {

/// What an electrode delivers, judged from its newest samples.
enum class SignalState : std::uint8_t {
  Good,
  Hum,      ///< more than half of its power is mains hum
  Railed,   ///< the amplifier's input is driven to its limit
  Flat,     ///< no signal at all
  Unknown,  ///< too few samples to say
};

struct SignalQuality {
  SignalState state = SignalState::Unknown;
  double peakToPeak = 0;    ///< microvolts
  double humShare = 0;      ///< 0 to 1, of the power above 1 Hz
  double humFrequency = 0;  ///< Hz; 0: mains hum lies beyond what this sample speed can show
};

/// Judges samples in microvolts, at least a second of them, oldest first. `limit` is the largest
/// magnitude that the amplifier can send (microvolts); 0: not known.
[[nodiscard]] SignalQuality judgeSignal(std::span<const double> samples, double samplesPerSecond,
                                        double limit);

/// That limit for the amplifier model and gains in force.
[[nodiscard]] double amplifierLimit();

}  // namespace ovka::desktop
