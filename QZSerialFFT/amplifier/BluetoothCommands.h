#pragma once

#include <cstdint>

namespace ovka {

/// The amplifier's commands over the Bluetooth channel; nothing is sent while it is closed.
class BluetoothCommands {
 public:
  virtual ~BluetoothCommands() = default;
  /// sendSampleSpeedBluetooth: samples per second, remembered in `speedX`.
  virtual void sendSampleSpeedBluetooth(std::int32_t samplesPerSecond) = 0;
  /// sendFilterBluetooth: the filter ratio.
  virtual void sendFilterBluetooth(float ratio) = 0;
  /// sendBLBluetooth asks for the battery level.
  virtual void sendBLBluetooth() = 0;
};

}  // namespace ovka
