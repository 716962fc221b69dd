#include <doctest/doctest.h>
#include <memory>
#include <thread>

#include "AmplifierBench.h"
#include "FarEnd.h"
#include "LineGuard.h"
#include "LinuxClock.h"
#include "LinuxSerialPorts.h"
#include "TemporaryFolder.h"

using namespace ovka;
using namespace ovka::testing;
using namespace std::chrono_literals;
namespace fs = std::filesystem;

namespace {

const std::string kLine = "800 800 800 800\r";

/// The ports over real lines, with the poll and guard threads of a running program.
struct RealBench : AmplifierBenchOn<LinuxSerialPorts, LinuxClock> {
  LineGuard guard{ports, losses, time};
  std::vector<std::jthread> threads;

  RealBench() {
    store.initMalloc(10'000);
    buffer::setRecModeX = 2;
  }
  void run() {
    threads.emplace_back([this](const std::stop_token& stop) {
      for (; !stop.stop_requested(); std::this_thread::sleep_for(5ms)) {
        if (buffer::setPauseX == 0) ports.getFromPortNew();
      }
    });
    threads.emplace_back([this](const std::stop_token& stop) {
      for (; !stop.stop_requested(); std::this_thread::sleep_for(LineGuard::kTick)) guard.tick();
    });
  }
  ~RealBench() {
    for (std::jthread& thread : threads) thread.request_stop();
    ports.stopWaiting();
    threads.clear();
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
  const TemporaryFolder folder;
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
  using State = AmplifierPorts::LineState;
  REQUIRE(comesTrue([&] { return bench.ports.lineState(1) == State::Running; }));
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
