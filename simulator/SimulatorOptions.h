#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace ovka {

/// What the virtual amplifier's electrodes pick up. Sequence is for tests: channel values carry the
/// frame number (FrameEncoder.h says how).
enum class SignalKind : std::uint8_t { Eeg, Sine, File, Sequence };

/// Alternating: 15 s open, 15 s closed, and so on.
enum class Eyes : std::uint8_t { Open, Closed, Alternating };

/// By buffer channel 0 to 4.
struct SineChoice {
  double frequency = 10.0;                               ///< Hz, 0 to 10000
  std::array<double, 5> microvolts{50, 50, 50, 50, 50};  ///< amplitude, up to 100000
  std::array<double, 5> degrees{0, 0, 0, 0, 0};          ///< phase
};

struct EegChoice {
  Eyes eyes = Eyes::Alternating;
  double humFrequency = 0.0;   ///< Hz: 50 or 60, 0 for none
  double humMicrovolts = 5.0;  ///< amplitude of the hum
};

struct FileChoice {
  std::string path;
  double samplesPerSecond = 0.0;  ///< of the file; must be given
};

/// Faults on demand. Rates are per byte of the sample stream; greeting and replies stay whole.
struct FaultChoice {
  double dropRate = 0.0;       ///< 0 to 1: the byte is not sent
  double duplicateRate = 0.0;  ///< 0 to 1: the byte is sent twice
  double corruptRate = 0.0;    ///< 0 to 1: some of its bits are turned
  double stallsPerMinute = 0.0;
  double stallSeconds = 0.5;  ///< silence; the frames meanwhile are lost
  double burstsPerMinute = 0.0;
  double burstSeconds = 0.5;   ///< silence, then everything held back at once
  double hangUpEvery = 0.0;    ///< seconds between hang-ups, 0 for never
  double hangUpSeconds = 2.0;  ///< how long the line stays away
  std::int32_t driftPpm = 0;   ///< the sample clock runs fast (+) or slow (-), parts per million
};

/// Every choice of the virtual amplifier, with the values it ships with.
struct SimulatorOptions {
  std::uint32_t model = 6;               ///< 0 to 9, as SelectDevice
  std::uint32_t config = 3;              ///< 0 to 3, as DeviceConfig
  bool oldBluetooth = false;             ///< 20-byte records of the old Bluetooth head set
  std::uint32_t port = 1;                ///< 1 to 4: the channel that model 1 sends on this line
  std::uint32_t samplesPerSecond = 120;  ///< 1 to 16000, until the host asks for another
  double batteryVolts = 8.4;             ///< 0 to 63.98
  SignalKind signal = SignalKind::Eeg;
  std::uint64_t seed = 1;
  SineChoice sine;
  EegChoice eeg;
  FileChoice file;
  FaultChoice faults;
  std::string link;  ///< a symbolic link to the line's path; empty for none

  /// Empty when the choices fit together, else one line that says what is wrong and what would do.
  /// Does not open files.
  [[nodiscard]] std::string validate() const;
};

}  // namespace ovka
