#include <doctest/doctest.h>
#include <thread>

#include "AmplifierBench.h"

using namespace ovka;
using namespace ovka::testing;

namespace {

struct RecordedBluetooth final : BluetoothCommands {
  std::vector<std::string> sent;
  void sendSampleSpeedBluetooth(std::int32_t speed) override {
    sent.push_back("SR " + std::to_string(speed));
  }
  void sendFilterBluetooth(float ratio) override { sent.push_back(filterCommand(ratio)); }
  void sendBLBluetooth() override { sent.emplace_back("BL"); }
};

struct CommandBench : AmplifierBench {
  Device& device = greeting("/dev/a");
  RecordedBluetooth bluetooth;
  CommandBench() {
    ports.setBluetoothCommands(&bluetooth);
    REQUIRE(ports.openInput(1, "/dev/a").descriptor >= 0);
    device.written.clear();
    static_cast<void>(print.take());
  }
};

TEST_CASE("commands on the serial line") {
  CommandBench bench;
  CHECK(bench.ports.SampleSpeedSet(256) == 256);
  CHECK(bench.print.take() ==
        "sampling speed = SR 256\\r\nWrote 7 bytes \"SR 256\\r\"\nSpeed set for \"SR 256\\r\"\n");
  CHECK(bench.ports.FilterHCRatioSet(0.5F) == 0.5F);
  CHECK(bench.print.take() == "ratio = FR 0.5000\\r\nFilterHCRatioSet \"FR 0.5000\\r\"\n");
  bench.ports.sendBL();
  CHECK(bench.device.written == "SR 256\rFR 0.5000\rBL\r");
  CHECK(filterCommand(-0.00005F) == "FR -0.0000\r");
  CHECK(filterCommand(3.4e38F).size() == 3 + 39 + 5 + 1);
}

TEST_CASE("an impossible sample speed is refused with one line") {
  CommandBench bench;
  for (const std::int32_t speed : {0, -1}) {
    CHECK(bench.ports.SampleSpeedSet(speed) == 120);
    const std::string said = bench.print.take();
    CHECK(said.find("Error setting the sample speed - a sample speed of") == 0);
    CHECK(said.find('\n') == said.size() - 1);
  }
  CHECK(bench.device.written.empty());
}

TEST_CASE("a failed or partial write is said, never fatal") {
  CommandBench bench;
  bench.device.errors[Step::Write] = EIO;
  CHECK(bench.ports.SampleSpeedSet(240) == 240);
  CHECK(bench.print.take() ==
        "sampling speed = SR 240\\r\nError writing to modem - Input/output error(5).\n");
  bench.ports.sendBL();
  CHECK(bench.print.take() == "Error writing to modem sendBL - Input/output error(5).\n");
  bench.device.errors.clear();
  bench.device.takes = 2;
  bench.ports.sendBL();
  CHECK(bench.print.take() == "Error writing to modem sendBL - Input/output error(5).\n");
  // The line is gone: nothing to write to.
  amplifier::fileDescriptorBAK = 7;
  bench.ports.sendBL();
  CHECK(bench.print.take() == "Error writing to modem sendBL - Bad file descriptor(9).\n");
}

TEST_CASE("where a command goes") {
  struct Case {
    std::int32_t openPort, openBluetooth, noAccess;
    std::uint32_t model;
    bool serial, bluetooth;
  };
  for (const Case& c : {Case{1, 1, 0, 0, true, false}, Case{1, 0, 0, 9, true, false},
                        Case{1, 1, 0, 1, false, true}, Case{0, 1, 0, 0, false, true},
                        Case{0, 0, 0, 0, false, false}, Case{1, 1, 1, 0, false, false}}) {
    CommandBench bench;
    amplifier::openPort = c.openPort;
    amplifier::openBluetooth = c.openBluetooth;
    amplifier::setNoPortAccess = c.noAccess;
    buffer::SelectDevice = c.model;
    bench.ports.SampleSpeedSet(240);
    if (c.bluetooth) CHECK(bench.print.take() == "Wrote SampleSpeedSet\n");
    bench.ports.FilterHCRatioSet(1.0F);
    bench.ports.sendBL();
    CHECK(bench.device.written == (c.serial ? "SR 240\rFR 1.0000\rBL\r" : ""));
    CHECK(bench.bluetooth.sent.size() == (c.bluetooth ? 3U : 0U));
  }
}

TEST_CASE("polling, commands and closing on several threads never touch a closed descriptor") {
  CommandBench bench;
  buffer::setRecModeX = 2;
  std::atomic<bool> stop{false};
  std::thread poll([&] {
    while (!stop) bench.ports.getFromPortNew();
  });
  std::thread command([&] {
    while (!stop) bench.ports.sendBL();
  });
  for (int round = 0; round < 20; ++round) {
    bench.ports.closeInput(1);
    bench.device.input = {"OVKA\r", "ready\r"};
    CHECK(bench.ports.openInput(1, "/dev/a").descriptor >= 0);
  }
  stop = true;
  poll.join();
  command.join();
  CHECK(bench.device.closed == 20);  // FakeSerialPorts fails the test on a closed descriptor
}

}  // namespace
