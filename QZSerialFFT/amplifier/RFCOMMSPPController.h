#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <span>
#include <string>

#include "BluetoothChannel.h"
#include "BluetoothCommands.h"
#include "StreamDecoder.h"

namespace ovka {

/// The Bluetooth Serial Port Profile channel of the amplifier. User actions and commands may come
/// from any thread; the rfcomm... methods come from the channel's own thread.
class RFCOMMSPPController final : public BluetoothCommands, public BluetoothChannelDelegate {
 public:
  /// +sharedRFCOMMSPPController: the one of this process. Defined by the engine alone.
  static RFCOMMSPPController& sharedRFCOMMSPPController();

  /// `window` may be nullptr: there is no test window then. Everything outlives the controller.
  RFCOMMSPPController(BluetoothChannel& channel, BluetoothTestWindow* window,
                      StreamDecoder& decoder);
  ~RFCOMMSPPController() override;
  RFCOMMSPPController(const RFCOMMSPPController&) = delete;
  RFCOMMSPPController& operator=(const RFCOMMSPPController&) = delete;

  /// openSerialPortProfile lets the user choose a device and begins to open its channel; true when
  /// that began. May wait for the user.
  bool openSerialPortProfile();

  /// openConnectionAction: the window's open button.
  void openConnectionAction();
  /// closeConnectonAction: the window's close button.
  void closeConnectonAction();
  /// closeRFCOMMConnectionOnChannel: closes the channel.
  void closeRFCOMMConnectionOnChannel();
  /// closeDeviceConnectionOnDevice: drops the connection to the device.
  void closeDeviceConnectionOnDevice();

  /// rfcommChannelOpenComplete:status:
  void rfcommChannelOpenComplete(int status) override;
  /// rfcommChannelData:data:length: decodes a packet at once (the decoder drops and counts packets
  /// of 1024 bytes or more) and shows its bytes in the window. Allocates nothing without a window.
  void rfcommChannelData(std::span<const std::uint8_t> data) override;
  /// rfcommChannelClosed:
  void rfcommChannelClosed() override;

  /// sendSampleSpeedBluetooth:
  void sendSampleSpeedBluetooth(std::int32_t samplesPerSecond) override;
  /// sendFilterBluetooth:
  void sendFilterBluetooth(float ratio) override;
  /// sendBLBluetooth
  void sendBLBluetooth() override;

  /// addThisByteToTheLogs: the byte as a character and in hexadecimal.
  void addThisByteToTheLogs(std::uint8_t byte);
  /// logString:onView:
  void logString(const std::string& text, BluetoothTestWindow::View onView);

 private:
  void send(const std::string& command);
  void becomeClosed();

  BluetoothChannel& mRFCOMMChannel;
  BluetoothTestWindow* mRFCOMMSPPTestWindow;
  StreamDecoder& decoder_;
  std::mutex writing_;  // commands follow one another whole
  std::mutex control_;  // one opening or closing at a time
};

}  // namespace ovka
