#include <algorithm>
#include <array>
#include <doctest/doctest.h>
#include <string>
#include <vector>

#include "InputStreamFixture.h"

using namespace std::chrono_literals;
using namespace ovka;
using ovka::testing::grid;
using ovka::testing::InputStreamFixture;

namespace {

constexpr std::int64_t kMs = 1'000'000;

/// Nanoseconds between the first two calls of `text`, as one step of its loop sleeps.
std::int64_t firstSleep(InputStreamFixture& f, const std::string& text) {
  f.stream.initializeThred();
  f.time.advance(10s);
  const auto times = f.log.timesOf(text);
  REQUIRE(times.size() >= 2);
  return times[1] - times[0];
}

}  // namespace

TEST_CASE("the thirteen threads start once, in their order") {
  InputStreamFixture f;
  f.stream.initializeThred();
  f.stream.initializeThred();
  CHECK(f.time.threads() ==
        std::vector<std::string>{
            "runSecondarySerialThread:", "runSecondaryPlaySerialThread:", "runThiredSerialThread:",
            "runAutoPortThread:", "runPublishThread:", "runSerialOutWDIThread:",
            "runSerialOutThread:", "runSerialOutSLThread:", "runSecondaryAutoSaveThread:",
            "runInPortSerialThread:", "runInPort2SerialThread:", "runInPort3SerialThread:",
            "runEXtimerThread:"});
  CHECK(threads::firstTimeRun == 0);
  REQUIRE(f.stream.timerTX.get() != nullptr);
  CHECK(f.stream.timerTX.get()->selector == "runEXtimerThread:");
  for (const auto* unfilled : {&f.stream.timerX2, &f.stream.timerY, &f.stream.timerP,
                               &f.stream.timerOutInCommand, &f.stream.timerAutoImpedanceCommand}) {
    CHECK(unfilled->get() == nullptr);
  }
}

TEST_CASE("every thread's calls within five seconds") {
  InputStreamFixture f;
  buffer::setRecModeX = 2;
  amplifier::openPort = 1;
  threads::openPort5 = 1;
  threads::openPort6 = 1;
  threads::openPort7 = 1;
  f.shell.application.distributeTiming = 3;
  f.shell.application.serialOutputTiming = 3;
  f.shell.visualiser.serialOutputTiming = 3;
  f.stream.initializeThred();
  f.time.advance(5s);

  struct Row {
    const char* call;
    std::int64_t first;
    std::int64_t step;
  };
  constexpr std::int64_t kNever = 100'000 * kMs;
  for (const Row& row :
       {Row{"getFromPortNew", 15 * kMs, 15 * kMs}, Row{"inSerialOutBS", 100 * kMs, 100 * kMs},
        Row{"inSerialOut2BS", 100 * kMs, 100 * kMs}, Row{"inSerialOut3BS", 33'333'333, 33'333'333},
        Row{"sendSerialWDI", 500 * kMs, 500 * kMs}, Row{"needupdateNotification", 0, 250 * kMs},
        Row{"needupdateSerialOutNotification", 0, 500 * kMs},
        Row{"visualiser needupdateSerialOutNotification", 0, 333 * kMs},
        Row{"addOvka 1", 0, kNever}}) {
    CAPTURE(row.call);
    CHECK(f.log.timesOf(row.call) == grid(row.first, row.step, 5000 * kMs));
  }

  SUBCASE("closed ports are left alone") {
    amplifier::openPort = 0;
    threads::openPort5 = threads::openPort6 = threads::openPort7 = 0;
    f.log.clear();
    f.time.advance(5s);
    const auto calls = f.log.texts();
    CHECK(std::all_of(calls.begin(), calls.end(), [](const std::string& text) {
      return text == "getFromPortNew" || text == "needupdateNotification";
    }));
  }
}

TEST_CASE("while paused nothing is read or published, and playback resumes at once") {
  InputStreamFixture f;
  bool playing = false;
  SUBCASE("acquiring") {
    playing = false;
  }
  SUBCASE("playing back") {
    playing = true;
  }
  buffer::setRecModeX = playing ? 0 : 1;
  buffer::setPauseX = 1;
  amplifier::openPort = 1;
  f.stream.initializeThred();
  f.time.advance(999ms);
  CHECK(f.log.texts() == std::vector<std::string>{"addOvka 1", "sendSerialWDI"});
  buffer::setPauseX = 0;
  f.time.advance(playing ? 30ms : 15ms);
  CHECK(f.log.count("getFromPortNew") == 1);
}

TEST_CASE("playback polls by the sample speed, a speed of 0 does not end the process") {
  struct Case {
    std::uint32_t speed;
    std::int64_t sleep;
  };
  for (const Case& c : {Case{120, 33 * kMs}, Case{128, 30'937'000}, Case{1920, 2'062'000},
                        Case{0, 33 * kMs}, Case{4'000'000'000U, 100'000}}) {
    CAPTURE(c.speed);
    InputStreamFixture f;
    buffer::SampleSpeed = c.speed;
    CHECK(firstSleep(f, "getFromPortNew") == c.sleep);
  }
}

TEST_CASE("timing indices beyond their tables sleep a second") {
  for (const int index : {-1, 11, 100}) {
    CAPTURE(index);
    InputStreamFixture f;
    threads::openPort5 = threads::openPort6 = 1;
    f.shell.application.distributeTiming = index;
    f.shell.application.serialOutputTiming = index;
    f.shell.visualiser.serialOutputTiming = index;
    CHECK(firstSleep(f, "needupdateNotification") == 1000 * kMs);
    CHECK(firstSleep(f, "needupdateSerialOutNotification") == 1000 * kMs);
    CHECK(firstSleep(f, "visualiser needupdateSerialOutNotification") == 1000 * kMs);
  }
}

TEST_CASE("the gate of the serial-output pass") {
  for (const std::int32_t mainPort : {0, 1, 2}) {
    for (const std::int32_t commandPort : {0, 1}) {
      CAPTURE(mainPort);
      CAPTURE(commandPort);
      InputStreamFixture f;
      amplifier::openPort = mainPort;
      threads::openPort5 = commandPort;
      f.stream.initializeThred();
      f.time.advance(0s);
      CHECK((f.log.count("needupdateSerialOutNotification") == 1) ==
            (mainPort == 1 || commandPort == 1));
    }
  }
}

TEST_CASE("a closed gate keeps the timing index that was read last") {
  InputStreamFixture f;
  threads::openPort5 = 1;
  f.shell.application.serialOutputTiming = 10;
  f.stream.initializeThred();
  f.time.advance(10ms);
  threads::openPort5 = 0;
  f.shell.application.serialOutputTiming = 0;
  f.time.advance(95ms);  // now 105 ms: steps go on every 10 ms
  threads::openPort5 = 1;
  f.time.advance(10ms);
  CHECK(f.log.timesOf("needupdateSerialOutNotification") ==
        std::vector<std::int64_t>{0, 10 * kMs, 110 * kMs});
}

TEST_CASE("data backups at the minutes 6, 11, 16, 21, preset saves at 1, 4, 7, ...") {
  constexpr std::int64_t kMinute = 60'000 * kMs;
  InputStreamFixture f;
  f.stream.setTimeforAutoSaveData(5);
  f.stream.setTimeforAutoSavePreSetData(3);
  CHECK(f.printed.take() == "setTimeforAutoSaveData = 5\nsetTimeforAutoSavePreSetData = 3\n");
  f.stream.initializeThred();

  SUBCASE("acquiring") {
    buffer::setRecModeX = 1;
    f.time.advance(22min);
    CHECK(f.log.timesOf("saveDataBackup") == grid(6 * kMinute, 5 * kMinute, 22 * kMinute));
    CHECK(f.log.timesOf("save preset") == grid(kMinute, 3 * kMinute, 22 * kMinute));
    CHECK(f.printed.take().find("timerUpdateBackup AutoSave Data IN\n"
                                "timerUpdateBackup AutoSave Data OUT\n") != std::string::npos);
  }
  SUBCASE("playing back: presets only, and the data minutes do not count") {
    f.time.advance(10min);
    CHECK(f.log.count("saveDataBackup") == 0);
    CHECK(f.log.count("save preset") == 4);
    CHECK(threads::BackupTimer == 0);
  }
  SUBCASE("a new period keeps the minutes counted, 0 switches off") {
    buffer::setRecModeX = 1;
    f.time.advance(4min);
    f.stream.setTimeforAutoSaveData(2);
    f.time.advance(1min);
    CHECK(f.log.timesOf("saveDataBackup") == std::vector<std::int64_t>{5 * kMinute});
    f.stream.setTimeforAutoSaveData(0);
    f.stream.setTimeforAutoSavePreSetData(-1);
    f.log.clear();
    f.time.advance(30min);
    CHECK(f.log.count("saveDataBackup") + f.log.count("save preset") == 0);
  }
}

TEST_CASE("pending automatic saves are confirmed at the next two-second tick") {
  const std::string activate = "script tell application \"";
  const std::string returnKey =
      "script tell application \"System Events\"\nkeystroke return\nend tell";
  InputStreamFixture f;
  f.shell.application.autoSaveProcess = 1;
  f.shell.application.autoSaveMovie = 1;
  f.stream.timerUpdateTimer();
  CHECK(f.log.texts() ==
        std::vector<std::string>{activate + "OVKA\"\nactivate\nend tell", returnKey,
                                 "SetStartAutoSaveProcess 0",
                                 activate + "QuickTime Player\"\nactivate\nend tell", returnKey,
                                 "SetStartAutoSaveMovie 0"});
  CHECK(f.printed.take() == "timer ON SaveOVKAtimer ON SaveMovie");

  f.log.clear();
  f.shell.application.autoSaveMovie = 1;
  f.shell.application.autoSaveProcess = 2;  // 1 alone means pending
  f.stream.initializeThred();
  f.time.advance(4s);
  CHECK(f.log.timesOf("SetStartAutoSaveMovie 0") == std::vector<std::int64_t>{2000 * kMs});
  CHECK(f.log.count("SetStartAutoSaveProcess 0") == 0);
}

TEST_CASE("threads that are not started can be, and keep to the same terms") {
  InputStreamFixture f;
  for (const char* selector : {"runSecondarySerialThread2:", "runSecondarySerialThread3:",
                               "runSecondarySerialThread4:", "noSuchThread:"}) {
    f.stream.detachThread(selector);
  }
  CHECK(f.time.threads().size() == 3);
  f.time.advance(30ms);
  CHECK(f.log.texts().empty());  // playing back
  buffer::setRecModeX = 1;
  f.time.advance(15ms);
  CHECK(f.log.texts() ==
        std::vector<std::string>{"getFromPort2New", "getFromPort3New", "getFromPort4New"});
  REQUIRE(f.stream.timerX3.get() != nullptr);
  CHECK(f.stream.timerX3.get()->interval == 15ms);

  f.stream.timerUpdateY();
  CHECK(f.log.count("putToData") == 1);
}

TEST_CASE("the network receive thread starts once with the configured port") {
  InputStreamFixture f;
  threads::PortNumberX = 7777;
  f.stream.initializeThredReadUDP();
  f.stream.initializeThredReadUDP();
  f.time.advance(0s);
  CHECK(f.log.texts() == std::vector<std::string>{"mainUDPXX 7777"});
  CHECK(f.time.threads().empty());
}
