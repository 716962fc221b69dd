#pragma once

#include <atomic>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "AmplifierPortsLines.h"
#include "BluetoothCommands.h"
#include "SerialPorts.h"

namespace ovka {

/// The commands to the amplifier: written to `fileDescriptorBAK` when `openPort` is 1 (not for
/// model 1), else over the Bluetooth channel when `openBluetooth` is set. Any thread; commands of
/// several threads never mix, and each takes a bounded time. Nothing is written while
/// `setNoPortAccess` is set. A write that fails or stays incomplete is printed, never fatal.
class AmplifierCommands {
 public:
  explicit AmplifierCommands(SerialPorts& serial) : serial_(serial) {}
  AmplifierCommands(const AmplifierCommands&) = delete;
  AmplifierCommands& operator=(const AmplifierCommands&) = delete;

  /// Where commands go when no serial line is open; nullptr for nowhere. It outlives this object.
  void setBluetoothCommands(BluetoothCommands* bluetooth) { bluetooth_ = bluetooth; }

  /// SampleSpeedSet: sends "SR %d\r" and returns what `SampleSpeed` becomes: the speed (samples per
  /// second), or, with one printed line and nothing sent, the present one when it is below 1.
  std::int32_t SampleSpeedSet(std::int32_t samplesPerSecond);
  /// FilterHCRatioSet: sends "FR %.4f\r", returns the ratio.
  float FilterHCRatioSet(float ratio);
  /// sendBL asks the amplifier for its battery level; the answer arrives in `batteryMonitor`.
  void sendBL();

  /// Writes to any open line, as one message. EBADF when it is not open, ETIMEDOUT when the far end
  /// does not take it in time (value: the bytes it took).
  SerialResult writeLine(std::int32_t descriptor, std::span<const std::uint8_t> bytes);

 protected:
  ~AmplifierCommands() = default;

  /// `SampleSpeedSet:`, silent on request (a guard that tries again and again).
  void sendSampleSpeed(std::int32_t samplesPerSecond, bool loud);

  SerialPorts& serial_;
  OpenLines lines_;

 private:
  enum class Way : std::uint8_t { Nowhere, Serial, Bluetooth };
  [[nodiscard]] Way way() const;
  /// Writes a command to `fileDescriptorBAK`; prints a failure under `name`.
  bool writeCommand(std::string_view command, const char* name, bool loud);

  std::atomic<BluetoothCommands*> bluetooth_{nullptr};
};

/// The texts of the commands. The ratio has four decimals after a point whatever the locale of the
/// process: the amplifier knows no decimal comma.
[[nodiscard]] std::string sampleSpeedCommand(std::int32_t samplesPerSecond);
[[nodiscard]] std::string filterCommand(float ratio);

/// A text as a console can show it: control and other unprintable bytes become "\r", "\n", "\t" or
/// a three-digit octal escape; more than `most` bytes end in "...".
[[nodiscard]] std::string printable(std::string_view bytes, std::size_t most = 200);

}  // namespace ovka
