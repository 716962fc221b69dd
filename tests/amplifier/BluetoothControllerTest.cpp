#include <cerrno>
#include <cstdint>
#include <doctest/doctest.h>
#include <string>
#include <vector>

#include "AmplifierBench.h"
#include "FakeBluetoothChannel.h"
#include "RFCOMMSPPController.h"

namespace {

using ovka::BluetoothSelection;
using ovka::RFCOMMSPPController;
using ovka::testing::AmplifierBench;
using ovka::testing::FakeBluetoothChannel;
using ovka::testing::FakeBluetoothWindow;
namespace amplifier = ovka::amplifier;
namespace buffer = ovka::buffer;

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
