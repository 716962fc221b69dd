#include <atomic>
#include <chrono>
#include <doctest/doctest.h>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>

#include "AmplifierPorts.h"
#include "AmplifierVariables.h"
#include "BufferVariables.h"
#include "CapturedPrint.h"
#include "FarEnd.h"
#include "LineGuard.h"
#include "LinuxAddressSpace.h"
#include "LinuxClock.h"
#include "LinuxSerialPorts.h"
#include "RecordingShell.h"
#include "TemporaryFolder.h"

namespace {

namespace amplifier = ovka::amplifier;
namespace buffer = ovka::buffer;
namespace fs = std::filesystem;
using namespace std::chrono_literals;
using ovka::testing::FarEnd;

const std::string kLine = "800 800 800 800\r";

/// The ports over real lines, with the poll and guard threads of a running program.
struct RealBench {
  ovka::testing::CapturedPrint print;
  ovka::testing::RecordingShell shell;
  ovka::LinuxSerialPorts serial;
  ovka::LinuxClock clock;
  ovka::LinuxAddressSpace space;
  ovka::NotificationCenter notifications;
  ovka::LossCounters losses;
  ovka::SampleStore store{space, shell.recording, shell.annotations};
  ovka::StreamDecoder decoder{store, notifications, losses, shell.application};
  ovka::AmplifierPorts ports{{serial, notifications, losses, clock, shell.annotations,
                              shell.portView, shell.recording, shell.application},
                             decoder};
  ovka::LineGuard guard{ports, losses, clock};
  std::atomic<bool> stop{false};
  std::thread poller;
  std::thread guardian;

  RealBench() {
    buffer::resetVariables();
    amplifier::resetVariables();
    store.initMalloc(100'000);
    buffer::setRecModeX = 2;
  }
  void run() {
    poller = std::thread([this] {
      for (; !stop; std::this_thread::sleep_for(5ms)) {
        if (buffer::setPauseX == 0) ports.getFromPortNew();
      }
    });
    guardian = std::thread([this] {
      for (; !stop; std::this_thread::sleep_for(ovka::LineGuard::kTick)) guard.tick();
    });
  }
  ~RealBench() {
    stop = true;
    ports.stopWaiting();
    if (poller.joinable()) poller.join();
    if (guardian.joinable()) guardian.join();
    static_cast<void>(print.take());
  }
};

/// Waits for something that a thread brings about; bounded, so a failure ends the test.
template <typename Condition>
bool comesTrue(Condition condition, std::chrono::milliseconds within = 5s) {
  const auto end = std::chrono::steady_clock::now() + within;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::sleep_for(2ms);
  }
  return true;
}

/// Sends sample lines until four batches' worth of frames were stored.
bool framesArrive(const FarEnd& far) {
  const std::int64_t start = buffer::ploop;
  return comesTrue([&] {
    far.send(kLine);
    std::this_thread::sleep_for(10ms);
    return buffer::ploop >= start + 16;
  });
}

TEST_CASE("an amplifier is unplugged while paused and comes back under another terminal") {
  const ovka::testing::TemporaryFolder folder;
  const std::string link = folder.at("amplifier");
  auto far = std::make_unique<FarEnd>();
  fs::create_symlink(far->path(), link);
  RealBench bench;
  buffer::SampleSpeed = 240;
  far->send("OVKA\rready\r");
  const auto opened = bench.ports.openInput(1, link);
  REQUIRE_MESSAGE(opened.explanation.empty(), opened.explanation);
  // The slave was still cooked when the greeting came, so its echo stands before the commands.
  const std::string sent = far->receive(40);
  CHECK(sent.find("SR 120\rSR 240\r") != std::string::npos);
  bench.run();
  REQUIRE(framesArrive(*far));

  const std::string silent = bench.print.take();
  buffer::setPauseX = 1;
  const auto cut = std::chrono::steady_clock::now();
  fs::remove(link);
  far->hangUp();
  std::string said;
  REQUIRE(comesTrue([&] { return !(said += bench.print.take()).empty(); }));
  CHECK(std::chrono::steady_clock::now() - cut < 1s);
  CHECK(said == "Line 1 (" + link +
                    ") hung up; what is recorded is kept, waiting for the line to come back.\n");
  const std::int64_t kept = buffer::ploop;
  std::this_thread::sleep_for(600ms);  // real devices stay away for real time
  CHECK(bench.print.take().empty());
  buffer::setPauseX = 0;

  far = std::make_unique<FarEnd>();
  far->send("OVKA\rready\r");
  fs::create_symlink(far->path(), link);
  REQUIRE(comesTrue(
      [&] { return bench.ports.lineState(1) == ovka::AmplifierPorts::LineState::Running; }));
  CHECK(far->receive(40).find("SR 120\rSR 240\r") != std::string::npos);
  CHECK(buffer::ploop == kept);
  REQUIRE(framesArrive(*far));
  said = bench.print.take();
  CHECK(said.find("Line 1 (" + link + ") is back after ") == 0);
  CHECK(said.find('\n') == said.size() - 1);
  CHECK(bench.losses.lineHangups.get() == 1);
  bench.ports.closeInput(1);
}

TEST_CASE("a silent amplifier, a port in use and a path that is no port are said in one line") {
  RealBench bench;
  CHECK(bench.ports.openInput(1, "/dev/null").explanation ==
        "/dev/null is not a serial port (it is no terminal device)");
  const FarEnd far;
  far.send("OVKA\rready\r");
  REQUIRE(bench.ports.openInput(1, far.path()).explanation.empty());
  CHECK(bench.ports.openInput(2, far.path()).explanation.find("in use by another program") !=
        std::string::npos);
  const FarEnd silent;
  const auto start = std::chrono::steady_clock::now();
  const auto opened = bench.ports.openInput(3, silent.path());
  CHECK(opened.explanation.find("the amplifier said nothing for 2 s") != std::string::npos);
  CHECK(std::chrono::steady_clock::now() - start < 4s);
  // Closing meanwhile cuts the wait short.
  std::thread closer([&] {
    std::this_thread::sleep_for(100ms);
    bench.ports.closeInput(3);
  });
  const auto again = std::chrono::steady_clock::now();
  CHECK(bench.ports.openInput(3, silent.path()).descriptor == -1);
  CHECK(std::chrono::steady_clock::now() - again < 1500ms);
  closer.join();
}

}  // namespace
