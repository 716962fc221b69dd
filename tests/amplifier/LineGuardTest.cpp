#include <doctest/doctest.h>
#include <thread>

#include "AmplifierBench.h"
#include "LineGuard.h"

using namespace ovka;
using namespace ovka::testing;

namespace {

struct GuardBench : AmplifierBench {
  Device& device = greeting("/dev/a");
  LineGuard guard{ports, losses, time};
  GuardBench() {
    buffer::SampleSpeed = 1000;
    REQUIRE(ports.openInput(1, "/dev/a").descriptor >= 0);
    buffer::setRecModeX = 2;
    device.input = {"800 800 800 800\r"};
    ports.getFromPortNew();
    static_cast<void>(print.take());
  }
  /// The guard's thread over a stretch of time.
  void ticks(int count) {
    for (int tick = 0; tick < count; ++tick) {
      after(250);
      guard.tick();
    }
  }
  void unplug() {
    device.hungUp = true;
    device.errors[Step::Open] = ENOENT;
  }
  /// A tick after which the line is known to be away, which was said.
  void goAway() {
    unplug();
    ticks(1);
    static_cast<void>(print.take());
  }
  void plugIn() {
    device.hungUp = false;
    device.errors.clear();
    device.input = {"OVKA\r", "ready\r"};
    device.written.clear();
  }
};

const std::string kGone =
    "Line 1 (/dev/a) hung up; what is recorded is kept, waiting for the line to come back.\n";

TEST_CASE("a line that hangs up and returns: two lines, one count, the gap in points") {
  GuardBench bench;
  bench.unplug();
  bench.ticks(1);
  CHECK(bench.print.take() == kGone);
  CHECK(bench.device.closed == 1);
  CHECK(amplifier::fileDescriptor1 == -1);
  bench.device.steps.clear();
  bench.ticks(20);  // five seconds away
  CHECK(bench.print.take().empty());
  CHECK(bench.device.steps.size() == 10);  // a try every half second, each ends at the open
  CHECK(bench.losses.gapPoints.get() == 5250);

  bench.plugIn();
  bench.ticks(2);
  CHECK(bench.print.take() == "Line 1 (/dev/a) is back after 5.5 s.\n");
  CHECK(bench.device.written == "SR 120\rSR 1000\r");
  CHECK(bench.ports.lineState(1) == AmplifierPorts::LineState::Running);
  CHECK(amplifier::fileDescriptor1 == amplifier::fileDescriptorBAK);
  bench.after(30);
  bench.device.input = {"800 800 800 800\r"};
  bench.ports.getFromPortNew();
  CHECK(bench.losses.gapPoints.get() == 5780);  // from the last byte to the first new one
  CHECK(bench.losses.lineHangups.get() == 1);
  // The batch that was staged before goes on: 2 reads now, 2 more make it whole.
  bench.device.input = {"800 800 800 800\r", "800 800 800 800\r"};
  bench.ports.getFromPortNew();
  bench.ports.getFromPortNew();
  CHECK(buffer::ploop == 4);
}

TEST_CASE("a hang-up is noticed while paused, whose time is not missing") {
  GuardBench bench;
  buffer::setPauseX = 1;
  bench.ticks(1);
  bench.unplug();
  bench.ticks(4);
  CHECK(bench.print.take() == kGone);
  CHECK(bench.losses.gapPoints.get() == 0);
  buffer::setPauseX = 0;
  bench.ticks(4);
  CHECK(bench.losses.gapPoints.get() == 1000);
}

TEST_CASE("what comes while nobody records is let go, and the next read goes on behind it") {
  GuardBench bench;
  amplifier::FixedFramingX = 1;  // the other way loses the lines that a block border cuts
  const std::int64_t before = buffer::ploop;
  bench.device.input = {"900 900 9"};  // waits in the batch
  bench.ports.getFromPortNew();
  buffer::setPauseX = 1;
  bench.device.input = {"00 900\rA00 A00 A00 A00\rB00 B00 B"};
  bench.ticks(2);
  buffer::setPauseX = 0;
  bench.device.input = {"00 B00\r", "C00 C00 C00 C00\r", "D00 D00 D00 D00\r", "E00 E00 E00 E00\r"};
  for (int i = 0; i < 4; ++i) bench.ports.getFromPortNew();
  CHECK(buffer::ploop == before + 4);
  // What comes during a save is recorded after it, wherever the ticks fall.
  buffer::setPauseX = 1;
  amplifier::setNoPortAccess = 1;
  bench.device.input = {"800 800 800 800\r"};
  bench.ticks(2);
  amplifier::setNoPortAccess = 0;
  bench.ticks(1);
  CHECK(bench.device.input.size() == 1);
  for (const LossCause& cause : kLossCauses) {
    CAPTURE(cause.text);
    CHECK((bench.losses.*cause.count).get() == 0);
  }
}

TEST_CASE("an amplifier that is back but silent is tried again without a word") {
  GuardBench bench;
  bench.goAway();
  bench.plugIn();
  bench.device.input.clear();
  bench.ticks(8);
  CHECK(bench.print.take().empty());
  CHECK(bench.device.opened == bench.device.closed);
  CHECK(bench.device.opened > 2);
  CHECK(amplifier::openPort == 1);
  CHECK(bench.shell.log.texts().empty());
}

TEST_CASE("other lines are watched while a greeting is awaited") {
  GuardBench bench;
  Device& second = bench.greeting("/dev/b");
  REQUIRE(bench.ports.openInput(2, "/dev/b").descriptor >= 0);
  bench.goAway();
  bench.ports.sendBL();  // commands go to the line that is left, also after tries for the other
  CHECK(second.written == "SR 120\rSR 1000\rBL\r");
  bench.plugIn();
  bench.device.input.clear();
  bench.device.whileWaiting = [&](int timeout) {
    bench.after(timeout);
    second.hungUp = true;
    // Reading the others goes on: nothing of theirs is locked.
    std::thread([&] { bench.ports.getFromPortNew(); }).join();
  };
  second.errors[Step::Open] = ENOENT;
  bench.ticks(2);
  CHECK(bench.print.take().find("Line 2 (/dev/b) hung up") == 0);
}

TEST_CASE("a line that the user closes while it is away stays closed") {
  GuardBench bench;
  bench.goAway();
  bench.ports.closeInput(1);
  static_cast<void>(bench.print.take());
  bench.plugIn();
  bench.device.steps.clear();
  bench.ticks(4);
  CHECK(bench.device.steps.empty());
  CHECK(bench.ports.lineState(1) == AmplifierPorts::LineState::Closed);
  CHECK(amplifier::openPort == 0);
}

TEST_CASE("a line that broke while it greeted is opened again by itself") {
  AmplifierBench bench;
  LineGuard guard(bench.ports, bench.losses, bench.time);
  Device& device = bench.serial.device("/dev/a");
  device.errors[Step::Read] = EIO;
  REQUIRE(bench.ports.openInput(1, "/dev/a").descriptor < 0);
  device.errors.clear();
  device.input = {"OVKA\r", "ready\r"};
  guard.tick();
  CHECK(bench.ports.lineState(1) == AmplifierPorts::LineState::Running);
  CHECK(amplifier::openPort == 1);
}

}  // namespace
