#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <span>

#include "AmplifierVariables.h"
#include "BufferVariables.h"
#include "Print.h"
#include "QZInputStream.h"
#include "TickGrid.h"

namespace ovka {
namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;
using std::chrono::nanoseconds;

bool paused() {
  return buffer::setPauseX != 0;
}
bool acquiring() {
  return buffer::setRecModeX != 0;
}
bool polls() {
  return !paused() && acquiring();
}

/// Sleeps of the publish loop by the distribution timing index.
constexpr std::array kPublishSleeps{milliseconds(1000), milliseconds(500), milliseconds(333),
                                    milliseconds(250),  milliseconds(200), milliseconds(100),
                                    milliseconds(10)};
/// Sleeps of the serial-output loop by its timing index.
constexpr std::array kSerialOutSleeps{milliseconds(4000), milliseconds(2000), milliseconds(1000),
                                      milliseconds(500),  milliseconds(333),  milliseconds(250),
                                      milliseconds(200),  milliseconds(100),  milliseconds(50),
                                      milliseconds(25),   milliseconds(10)};
/// The visualiser's table lacks the first entry on purpose: its index 0 means 2 s.
constexpr std::span kSerialOutSLSleeps = std::span(kSerialOutSleeps).subspan<1>();

nanoseconds sleepOf(std::span<const milliseconds> table, std::int32_t index) {
  constexpr milliseconds kOther{1000};
  if (index < 0 || static_cast<std::size_t>(index) >= table.size()) return kOther;
  return table[static_cast<std::size_t>(index)];
}

}  // namespace

void QZInputStream::timerUpdate() {
  if (polls()) services_.ports.getFromPortNew();
}
void QZInputStream::timerUpdate2() {
  if (polls()) services_.ports.getFromPort2New();
}
void QZInputStream::timerUpdate3() {
  if (polls()) services_.ports.getFromPort3New();
}
void QZInputStream::timerUpdate4() {
  if (polls()) services_.ports.getFromPort4New();
}
void QZInputStream::timerUpdateY() {
  if (!paused()) services_.ports.putToData();
}

void QZInputStream::timerUpdateInPort() {
  if (threads::openPort5 != 0) services_.serialOutputs.inSerialOutBS();
}
void QZInputStream::timerUpdateInPort2() {
  if (threads::openPort6 != 0) services_.serialOutputs.inSerialOut2BS();
}
void QZInputStream::timerUpdateInPort3() {
  if (threads::openPort7 != 0) services_.serialOutputs.inSerialOut3BS();
}
void QZInputStream::timerUpdateWDICommand() {
  if (amplifier::openPort != 0) services_.serialOutputs.sendSerialWDI();
}

void QZInputStream::addObserver() {
  services_.observer.addOvka(1);
}

nanoseconds QZInputStream::playbackStep() {
  constexpr std::uint32_t kMicrosecondsTimesSpeed = 3960000;  // 33 ms at 120 samples per second
  constexpr std::uint32_t kUsualSpeed = 120;
  // No loop holds the processor, however large the speed that was set.
  constexpr microseconds kShortest{100};
  if (paused()) return kRest;
  if (!acquiring()) services_.ports.getFromPortNew();
  std::uint32_t speed = buffer::SampleSpeed;
  if (speed == 0) speed = kUsualSpeed;  // the setters refuse it; a division by it ends the process
  return std::max(microseconds(kMicrosecondsTimesSpeed / speed), kShortest);
}

nanoseconds QZInputStream::publishStep() {
  if (!paused()) services_.application.needupdateNotification();
  return sleepOf(kPublishSleeps, services_.application.setDistributeTiming());
}

nanoseconds QZInputStream::serialOutStep() {
  const std::int32_t commandPort = threads::openPort5;
  const bool mainPortAlone = amplifier::openPort == 1 && commandPort == 0;
  if (mainPortAlone || commandPort != 0) {
    if (!paused()) services_.application.needupdateSerialOutNotification();
    serialOutTiming_ = services_.application.getSerialOutputTiming();
  }
  return sleepOf(kSerialOutSleeps, serialOutTiming_);
}

nanoseconds QZInputStream::serialOutSLStep() {
  if (threads::openPort6 != 0) {
    if (!paused()) services_.visualiser.needupdateSerialOutNotification();
    serialOutSLTiming_ = services_.visualiser.getSerialOutputTiming();
  }
  return sleepOf(kSerialOutSLSleeps, serialOutSLTiming_);
}

void QZInputStream::timerUpdateBackup() {
  backUpData();
  backUpPreSet();
}

void QZInputStream::backUpData() {
  const std::int32_t period = threads::timeMX;
  if (period <= 0 || !acquiring()) return;
  if (threads::BackupTimer >= period) {
    Print("timerUpdateBackup AutoSave Data IN\n");
    services_.backups.saveDataBackup();
    Print("timerUpdateBackup AutoSave Data OUT\n");
    threads::BackupTimer = 0;
  }
  threads::BackupTimer = threads::BackupTimer + 1;
}

void QZInputStream::backUpPreSet() {
  const std::int32_t period = threads::timeMXPreSet;
  if (period <= 0) return;
  if (threads::firstTimePreSet != 0) {
    Print("firstTimePreSet timerUpdateBackup AutoSave PreSet IN\n");
    services_.notifications.post("savePreSetPreference");
    Print("firstTimePreSet timerUpdateBackup AutoSave PreSet OUT\n");
    threads::firstTimePreSet = 0;
  }
  if (threads::BackupTimerPreSet >= period) {
    Print("timerUpdateBackup AutoSave PreSet IN\n");
    services_.notifications.post("savePreSetPreference");
    Print("timerUpdateBackup AutoSave PreSet OUT\n");
    threads::BackupTimerPreSet = 0;
  }
  threads::BackupTimerPreSet = threads::BackupTimerPreSet + 1;
}

void QZInputStream::timerUpdateTimer() {
  constexpr const char* kPressReturn =
      "tell application \"System Events\"\nkeystroke return\nend tell";
  ApplicationControl& application = services_.application;
  if (application.getSetStartAutoSaveProcess() == 1) {
    Print("timer ON SaveOVKA");
    services_.selfCommands.SimpleRunAppleScript("tell application \"OVKA\"\nactivate\nend tell");
    services_.selfCommands.SimpleRunAppleScript(kPressReturn);
    application.SetStartAutoSaveProcess(0);
  }
  if (application.getSetStartAutoSaveMovie() == 1) {
    Print("timer ON SaveMovie");
    services_.selfCommands.SimpleRunAppleScript(
        "tell application \"QuickTime Player\"\nactivate\nend tell");
    services_.selfCommands.SimpleRunAppleScript(kPressReturn);
    application.SetStartAutoSaveMovie(0);
  }
}

}  // namespace ovka
