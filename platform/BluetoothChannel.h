#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace ovka {

/// How a device selection ended.
enum class BluetoothSelection : std::uint8_t {
  Selected,
  Cancelled,
  NoSelector,   ///< the selector could not be made
  NoDevice,     ///< nothing was selected although the user went on
  NoService,    ///< the device has no Serial Port Profile
  NoChannelId,  ///< its service record names no RFCOMM channel
};

/// Receives what happens on a channel; called on the adapter's own thread.
class BluetoothChannelDelegate {
 public:
  virtual ~BluetoothChannelDelegate() = default;
  virtual void rfcommChannelOpenComplete(int status) = 0;
  virtual void rfcommChannelData(std::span<const std::uint8_t> data) = 0;
  virtual void rfcommChannelClosed() = 0;
};

/// One Serial Port Profile channel over RFCOMM.
class BluetoothChannel {
 public:
  virtual ~BluetoothChannel() = default;
  /// Lets the user choose a device that offers the Serial Port Profile; may block.
  [[nodiscard]] virtual BluetoothSelection select() = 0;
  /// Opens the selected device's channel; the delegate hears of the outcome. Returns 0 or an errno
  /// when the sequence could not even begin.
  [[nodiscard]] virtual int openAsync(BluetoothChannelDelegate& delegate) = 0;
  /// Writes all bytes before it returns: 0 or an errno.
  [[nodiscard]] virtual int writeSync(std::span<const std::uint8_t> bytes) = 0;
  virtual void closeChannel() = 0;
  /// Drops the connection to the device itself.
  virtual void closeConnection() = 0;
  /// The selected device as a person knows it; empty before a selection.
  [[nodiscard]] virtual std::string deviceName() const = 0;
};

/// The small test window of the Bluetooth channel: two buttons and two log views.
class BluetoothTestWindow {
 public:
  virtual ~BluetoothTestWindow() = default;
  enum class View : std::uint8_t { Ascii, Hex };
  virtual void appendLog(View view, const std::string& text) = 0;
  virtual void enableButtons(bool open, bool close) = 0;
};

}  // namespace ovka
