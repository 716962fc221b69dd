#include "QZInputStream.h"

#include <algorithm>
#include <array>

#include "MessageQueue.h"
#include "Print.h"

namespace ovka {
namespace {

using std::chrono::nanoseconds;

// Intervals are typed as the system types them: the port poll in single precision.
constexpr nanoseconds seconds(double value) {
  return std::chrono::round<nanoseconds>(std::chrono::duration<double>(value));
}

}  // namespace

std::span<const QZInputStream::ThreadRow> QZInputStream::threadTable() {
  using Q = QZInputStream;
  using enum ThreadKind;
  static constexpr nanoseconds kPoll = seconds(0.015F);
  static constexpr nanoseconds kNone{0};
  static constexpr std::array<ThreadRow, kStartedThreads + 4> kTable{{
      {"runSecondarySerialThread:", Timer, kPoll, &Q::timerUpdate, nullptr, &Q::timerX},
      {"runSecondaryPlaySerialThread:", Loop, kNone, nullptr, &Q::playbackStep, nullptr},
      {"runThiredSerialThread:", Once, kNone, &Q::addObserver, nullptr, nullptr},
      {"runAutoPortThread:", Timer, seconds(3.0), &Q::timerUpdateAutoPortCommand, nullptr,
       &Q::timerAutoPortCommand},
      {"runPublishThread:", Loop, kNone, nullptr, &Q::publishStep, nullptr},
      {"runSerialOutWDIThread:", Timer, seconds(0.5), &Q::timerUpdateWDICommand, nullptr,
       &Q::timerWDICommand},
      {"runSerialOutThread:", Loop, kNone, nullptr, &Q::serialOutStep, nullptr},
      {"runSerialOutSLThread:", Loop, kNone, nullptr, &Q::serialOutSLStep, nullptr},
      {"runSecondaryAutoSaveThread:", Timer, seconds(60.0), &Q::timerUpdateBackup, nullptr,
       &Q::timerQ},
      {"runInPortSerialThread:", Timer, seconds(0.1), &Q::timerUpdateInPort, nullptr, &Q::timerR},
      {"runInPort2SerialThread:", Timer, seconds(0.1), &Q::timerUpdateInPort2, nullptr, &Q::timerS},
      {"runInPort3SerialThread:", Timer, seconds(1.0 / 30.0), &Q::timerUpdateInPort3, nullptr,
       &Q::timerT},
      {"runEXtimerThread:", Timer, seconds(2.0), &Q::timerUpdateTimer, nullptr, &Q::timerTX},
      // Not started: the first thread's poll serves all four ports.
      {"runSecondarySerialThread2:", Timer, kPoll, &Q::timerUpdate2, nullptr, &Q::timerX2},
      {"runSecondarySerialThread3:", Timer, kPoll, &Q::timerUpdate3, nullptr, &Q::timerX3},
      {"runSecondarySerialThread4:", Timer, kPoll, &Q::timerUpdate4, nullptr, &Q::timerX4},
      {"runShowInPortCommandThread:", Timer, seconds(1.0), &Q::timerUpdateInPortCommand, nullptr,
       &Q::timerOutInCommand},
  }};
  return kTable;
}

void QZInputStream::start(const ThreadRow& row) {
  switch (row.kind) {
    case ThreadKind::Timer:
      this->*row.timer = &row;
      services_.launcher.repeat(row.selector, row.interval, [this, &row] { (this->*row.tick)(); });
      break;
    case ThreadKind::Loop:
      services_.launcher.loop(row.selector, [this, &row] { return (this->*row.step)(); });
      break;
    case ThreadKind::Once:
      services_.launcher.once(row.selector, [this, &row] { (this->*row.tick)(); });
      break;
  }
}

void QZInputStream::initializeThred() {
  if (threads::firstTimeRun == 0) return;
  for (const ThreadRow& row : threadTable().first(kStartedThreads)) start(row);
  threads::firstTimeRun = 0;
}

void QZInputStream::initializeThredReadUDP() {
  if (threads::firstTimeRunUDP == 0) return;
  services_.launcher.once("runMainUDPXThread:",
                          [this] { services_.network.mainUDPXX(threads::PortNumberX); });
  threads::firstTimeRunUDP = 0;
}

void QZInputStream::detachThread(std::string_view selector) {
  const std::span<const ThreadRow> table = threadTable();
  const auto row = std::find_if(table.begin(), table.end(),
                                [&](const ThreadRow& entry) { return entry.selector == selector; });
  if (row != table.end()) start(*row);
}

void QZInputStream::setTimeforAutoSaveData(std::int32_t minutes) {
  threads::timeMX = minutes;
  Print("setTimeforAutoSaveData = %d\n", minutes);
}

void QZInputStream::setTimeforAutoSavePreSetData(std::int32_t minutes) {
  threads::timeMXPreSet = minutes;
  Print("setTimeforAutoSavePreSetData = %d\n", minutes);
}

MidiReadProc QZInputStream::midiReadProc() {
  return &ovka::midiReadProc;
}

QZMessageParser* QZInputStream::parserForSourceConnectionRefCon(void* /*refCon*/) {
  QZRequestConcreteImplementation("QZInputStream", "parserForSourceConnectionRefCon:");
  return nullptr;
}

void QZRequestConcreteImplementation(std::string_view object, std::string_view selector) {
  Print("Error %.*s %.*s a subclass must supply this method.\n", static_cast<int>(object.size()),
        object.data(), static_cast<int>(selector.size()), selector.data());
}

}  // namespace ovka
