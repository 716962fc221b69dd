#pragma once

#include <cerrno>
#include <cstdint>
#include <string>

#include "BluetoothChannel.h"
#include "Shell.h"

namespace ovka {

/// Services that nobody has set up yet: outputs to external devices, backups, the observer of
/// levels, the network receiver, desktop scripts, the visualiser. A call does nothing and reports
/// nothing; whoever sets such a service up passes it to the engine in place of this one.
class QuietShell final : public SerialOutputs,
                         public DataBackups,
                         public LevelObserver,
                         public NetworkReceiver,
                         public SelfCommands,
                         public VisualiserControl {
 public:
  void inSerialOutBS() override {}
  void inSerialOut2BS() override {}
  void inSerialOut3BS() override {}
  void sendSerialWDI() override {}
  void saveDataBackup() override {}
  void addOvka(std::int32_t /*argument*/) override {}
  void mainUDPXX(std::int32_t /*port*/) override {}
  void SimpleRunAppleScript(const char* /*script*/) override {}
  void needupdateSerialOutNotification() override {}
  [[nodiscard]] std::int32_t getSerialOutputTiming() override { return 0; }
};

/// A machine without Bluetooth: nothing to choose from, nothing to open.
class NoBluetooth final : public BluetoothChannel {
 public:
  [[nodiscard]] BluetoothSelection select() override { return BluetoothSelection::NoSelector; }
  [[nodiscard]] int openAsync(BluetoothChannelDelegate& /*delegate*/) override { return ENODEV; }
  [[nodiscard]] int writeSync(std::span<const std::uint8_t> /*bytes*/) override { return ENODEV; }
  void closeChannel() override {}
  void closeConnection() override {}
  [[nodiscard]] std::string deviceName() const override { return {}; }
};

}  // namespace ovka
