#include <doctest/doctest.h>
#include <tuple>

#include "AmplifierBench.h"

using namespace ovka;
using namespace ovka::testing;

namespace {

const std::string kLine = "800 800 800 800\r";

struct PollBench : AmplifierBench {
  Device& device = greeting("/dev/a");
  PollBench() {
    REQUIRE(ports.openInput(1, "/dev/a").descriptor >= 0);
    buffer::setRecModeX = 2;
  }
  void poll(const std::string& bytes) {
    if (!bytes.empty()) device.input.push_back(bytes);
    ports.getFromPortNew();
  }
};

TEST_CASE("what is not polled") {
  using Case = std::tuple<std::uint32_t, std::int32_t, std::int32_t>;
  for (const auto& [model, open, noAccess] :
       {Case{4, 1, 0}, Case{0, 0, 0}, Case{0, 1, 1}, Case{12, 1, 0}}) {
    PollBench bench;
    buffer::SelectDevice = model;
    amplifier::openPort = open;
    amplifier::setNoPortAccess = noAccess;
    for (int read = 0; read < 4; ++read) bench.poll(kLine);
    CHECK(bench.device.input.size() == 4);
    CHECK(buffer::ploop == 0);
  }
}

TEST_CASE("a poll passes over a line that is being greeted") {
  PollBench bench;
  int polls = 0;
  bench.device.whileWaiting = [&](int timeout) {
    REQUIRE(timeout > 0);  // the greeting's own wait: the poll does not get that far
    bench.ports.getFromPortNew();
    CHECK_FALSE(bench.ports.hungUp(1));
    if (++polls == 2) bench.device.input = {"OVKA\r", "ready\r"};
  };
  CHECK(bench.ports.InitializeModem(amplifier::fileDescriptor1));
  CHECK(polls == 2);
  bench.device.whileWaiting = nullptr;
  for (int read = 0; read < 4; ++read) bench.poll(kLine);
  CHECK(buffer::ploop == 4);
}

TEST_CASE("ports 2 to 4 are read alone by their own polls") {
  AmplifierBench bench;
  std::vector<Device*> devices;
  for (int port = 1; port <= 4; ++port) {
    const std::string path = "/dev/" + std::to_string(port);
    devices.push_back(&bench.greeting(path));
    REQUIRE(bench.ports.openInput(port, path).descriptor >= 0);
    devices.back()->input = {kLine};
  }
  bench.ports.getFromPort3New();
  CHECK(devices[1]->input.size() == 1);
  CHECK(devices[2]->input.empty());
  bench.ports.getFromPort2New();
  bench.ports.getFromPort4New();
  CHECK(devices[0]->input.size() == 1);
  CHECK(devices[3]->input.empty());
}

TEST_CASE("playing back follows the annotation track") {
  PollBench bench;
  buffer::setRecModeX = 0;
  bench.shell.annotations.lengthOfTime = 777;
  bench.poll(kLine);
  CHECK(buffer::ploop == 777);
  CHECK(bench.device.input.size() == 1);
  buffer::setPauseX = 1;
  bench.shell.annotations.lengthOfTime = 900;
  bench.poll("");
  CHECK(buffer::ploop == 777);
}

TEST_CASE("the end of the buffer as a poll finds it") {
  struct Case {
    const char* what;
    std::int32_t mode, loop, autoSave, pauseBefore;
    std::int64_t before, after;
    std::int32_t pauseAfter;
    long rewinds;
  };
  for (const Case& c : std::vector<Case>{
           {"not there yet", 2, 0, 1, 0, 1999, 1999, 0, 0},
           {"stops and pauses", 2, 0, 1, 0, 2005, 2000, 1, 0},
           {"a pause does not put it back", 2, 0, 0, 1, 2000, 2000, 1, 0},
           {"looping rewinds the track", 2, 1, 0, 0, 2000, 2000, 0, 1},
           {"recording is the decoder's affair", 1, 0, 1, 0, 2000, 2000, 0, 0},
           {"recording stays at the end while paused", 1, 0, 0, 1, 2000, 2000, 1, 0}}) {
    CAPTURE(c.what);
    PollBench bench;
    buffer::setRecModeX = c.mode;
    buffer::setLoopModeX = c.loop;
    buffer::AutoSaveX = c.autoSave;
    buffer::setPauseX = c.pauseBefore;
    buffer::ploop = c.before;
    bench.poll("");
    CHECK(buffer::ploop == c.after);
    CHECK(buffer::setPauseX == c.pauseAfter);
    CHECK(bench.shell.log.count("gotoStartWhenLoopmodeAndEnd") == c.rewinds);
    const bool stopped = c.pauseAfter == 1 && c.mode != 1;
    CHECK(buffer::AutoSaveX == (stopped ? 0 : c.autoSave));
    CHECK(bench.shell.log.count("AutoSaveWhenRecEnd") == 0);
  }
}

TEST_CASE("the end stays within a poll, a pause puts the point back to where the poll began") {
  PollBench bench;
  buffer::setRecModeX = 1;
  buffer::ploop = 1998;
  for (int read = 0; read < 4; ++read) bench.poll(kLine);
  CHECK(buffer::ploop == 2000);
  CHECK(buffer::setPauseX == 1);
  buffer::setRecModeX = 2;
  buffer::setPauseX = 0;
  buffer::ploop = 100;
  for (int read = 0; read < 3; ++read) bench.poll(kLine);
  bench.notifications.addObserver(&bench, "needUpdateDataBuffer", [] { buffer::setPauseX = 1; });
  bench.poll(kLine);
  CHECK(buffer::ploop == 100);
}

TEST_CASE("read errors end no poll; the line is marked for its guard") {
  for (const int error : {EINTR, EAGAIN, EIO}) {
    PollBench bench;
    bench.device.errors[Step::Read] = error;
    bench.poll("");
    CHECK(bench.ports.hungUp(1) == (error == EIO));
  }
  PollBench bench;
  bench.device.input.emplace_back();  // end of file
  bench.poll("");
  CHECK(bench.ports.hungUp(1));
}

TEST_CASE("what a silence left out is counted; a late read, a pause and a short silence are not") {
  struct Case {
    const char* text;
    int silence;    // ms, at 1000 points a second
    int lateLines;  // that come in one go after it
    std::int64_t gap;
  };
  std::string lines;
  while (lines.size() < 800 * kLine.size()) lines += kLine;
  for (const Case& c : std::vector<Case>{{"short", 250, 1, 0},
                                         {"just seen", 251, 1, 250},
                                         {"read late", 800, 800, 0},
                                         {"half of it is there", 800, 400, 400}}) {
    CAPTURE(c.text);
    PollBench bench;
    buffer::SampleSpeed = 1000;
    bench.after(900);
    bench.poll(kLine);  // before the first byte nothing is missing
    bench.after(c.silence);
    bench.poll(lines.substr(0, static_cast<std::size_t>(c.lateLines) * kLine.size()));
    for (int i = 0; i < 11; ++i) {
      bench.after(100);
      bench.poll(lines.substr(0, 100 * kLine.size()));
    }
    CHECK(bench.losses.gapPoints.get() == c.gap);
    bench.after(400);
    bench.ports.gaps(1)->idle(bench.time.nanoseconds());
    bench.after(400);
    bench.poll(kLine);
    CHECK(bench.losses.gapPoints.get() == c.gap);
  }
}

}  // namespace
