#include <doctest/doctest.h>

#include "AmplifierBench.h"
#include "BluetoothChannel.h"
#include "RFCOMMSPPController.h"

using namespace ovka;
using namespace ovka::testing;

namespace {

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

struct BluetoothBench : AmplifierBench {
  FakeBluetoothChannel channel;
  FakeBluetoothWindow window;
  RFCOMMSPPController controller{channel, &window, decoder};
  void receive(const std::string& bytes) {
    const std::vector<std::uint8_t> data(bytes.begin(), bytes.end());
    controller.rfcommChannelData(data);
  }
};

TEST_CASE("an opening that ends early says why and leaves the window ready") {
  struct Case {
    BluetoothSelection selection;
    int openError;
    const char* message;
  };
  for (const Case& c : std::vector<Case>{
           {BluetoothSelection::Cancelled, 0, "User has cancelled the device selection.\n"},
           {BluetoothSelection::NoChannelId, 0,
            "Error - no spp service in selected device.  ***This should never happen an spp "
            "service must have an rfcomm channel id.***\n"},
           {BluetoothSelection::Selected, EIO, "Error - open sequence failed.***\n"}}) {
    BluetoothBench bench;
    bench.channel.selection = c.selection;
    bench.channel.openError = c.openError;
    bench.controller.openConnectionAction();
    CHECK(bench.print.take() == c.message);
    CHECK(bench.window.enabled == "open");
    CHECK(amplifier::openBluetooth == 0);
  }
}

TEST_CASE("a channel opens, carries commands and closes") {
  BluetoothBench bench;
  bench.controller.sendSampleSpeedBluetooth(256);  // remembered, nowhere to go yet
  bench.controller.openConnectionAction();
  CHECK(bench.window.enabled.empty());
  bench.channel.delegate->rfcommChannelOpenComplete(0);
  CHECK(bench.window.enabled == "close");
  bench.controller.sendFilterBluetooth(0.25F);
  bench.controller.sendBLBluetooth();
  amplifier::setNoPortAccess = 1;
  bench.controller.sendBLBluetooth();
  amplifier::setNoPortAccess = 0;
  CHECK(bench.channel.written == "SR 256\rFR 0.2500\rBL\r");
  bench.channel.writeError = EPIPE;
  bench.controller.sendBLBluetooth();
  CHECK(bench.print.take() == "Error writing to the Bluetooth channel - Broken pipe(32).\n");
  bench.controller.closeConnectonAction();
  bench.controller.sendBLBluetooth();  // the fake fails the test on a closed channel
  CHECK(bench.channel.channelsClosed == 1);
  CHECK(bench.channel.connectionsClosed == 1);
  CHECK(bench.window.enabled == "open");
}

TEST_CASE("an open that fails later and a far end that closes leave the channel closed") {
  BluetoothBench bench;
  bench.controller.openConnectionAction();
  bench.channel.delegate->rfcommChannelOpenComplete(-5);
  CHECK(bench.print.take() == "Error - failed to open the RFCOMM channel with error -5.\n");
  CHECK(amplifier::openBluetooth == 0);
  bench.controller.openConnectionAction();
  bench.channel.delegate->rfcommChannelOpenComplete(0);
  CHECK(amplifier::openBluetooth == 1);
  bench.channel.delegate->rfcommChannelClosed();
  CHECK(amplifier::openBluetooth == 0);
  CHECK(bench.window.enabled == "open");
}

TEST_CASE("packets are decoded at once, oversized ones dropped whole, all shown in the logs") {
  BluetoothBench bench;
  buffer::setRecModeX = 2;
  bench.receive("800 800 800 800\r");
  CHECK(buffer::ploop == 1);
  CHECK(bench.window.ascii == "800 800 800 800\r");
  CHECK(bench.window.hex.substr(0, 12) == "38 30 30 20 ");
  std::string big;
  while (big.size() < 1024) big += "800 800 800 800\r";
  bench.receive(big);
  CHECK(buffer::ploop == 1);
  CHECK(bench.losses.droppedPackets.get() == 1);
}

}  // namespace
