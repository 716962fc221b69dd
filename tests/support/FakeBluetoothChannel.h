#pragma once

#include <cstdint>
#include <doctest/doctest.h>
#include <span>
#include <string>

#include "BluetoothChannel.h"

namespace ovka::testing {

/// A Bluetooth channel of a test: the outcome of every step is a member, what is written is kept;
/// the test plays the far end through `delegate`. Writing to a channel that was not opened fails
/// the test.
class FakeBluetoothChannel final : public BluetoothChannel {
 public:
  BluetoothSelection selection = BluetoothSelection::Selected;
  int openError = 0;
  int writeError = 0;
  BluetoothChannelDelegate* delegate = nullptr;  ///< set while a channel opens or is open
  std::string written;
  int channelsClosed = 0;
  int connectionsClosed = 0;

  BluetoothSelection select() override { return selection; }
  int openAsync(BluetoothChannelDelegate& to) override {
    if (openError == 0) delegate = &to;
    return openError;
  }
  int writeSync(std::span<const std::uint8_t> bytes) override {
    if (delegate == nullptr) FAIL_CHECK("written to a closed channel");
    if (writeError == 0) written.append(bytes.begin(), bytes.end());
    return writeError;
  }
  void closeChannel() override {
    ++channelsClosed;
    delegate = nullptr;
  }
  void closeConnection() override { ++connectionsClosed; }
  std::string deviceName() const override { return "head set"; }
};

/// The test window: its two logs and what its buttons allow ("open", "close", "").
class FakeBluetoothWindow final : public BluetoothTestWindow {
 public:
  std::string ascii;
  std::string hex;
  std::string enabled;

  void appendLog(View view, const std::string& text) override {
    (view == View::Ascii ? ascii : hex) += text;
  }
  void enableButtons(bool open, bool close) override {
    enabled = std::string(open ? "open" : "") + (close ? "close" : "");
  }
};

}  // namespace ovka::testing
