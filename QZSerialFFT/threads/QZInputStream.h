#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include "MidiTransport.h"
#include "NotificationCenter.h"
#include "PortPolling.h"
#include "QZInputStreamS.h"
#include "QZMessageParser.h"
#include "Shared.h"
#include "Shell.h"
#include "ThreadLauncher.h"
#include "ThreadVariables.h"

namespace ovka {

/// QZRequestConcreteImplementation: prints that a subclass must supply the method.
void QZRequestConcreteImplementation(std::string_view object, std::string_view selector);

/// What the acquisition threads work on; all of it outlives them.
struct InputStreamServices {
  ThreadLauncher& launcher;
  NotificationCenter& notifications;
  PortPolling& ports;
  ApplicationControl& application;
  VisualiserControl& visualiser;
  SerialOutputs& serialOutputs;
  DataBackups& backups;
  LevelObserver& observer;
  NetworkReceiver& network;
  SelfCommands& selfCommands;
};

/// The background activity of acquisition: a fixed set of threads, started once, that poll the
/// input ports, drive the periodic outputs, ask for redraws, make the timed backups and confirm
/// automatic saves. Flags switch their work; nothing but the launcher's stopAll() ends them.
class QZInputStream {
 public:
  /// +sharedQZInputStream: the one of this process. Defined by the engine alone.
  static QZInputStream& sharedQZInputStream();

  enum class ThreadKind : std::uint8_t { Timer, Loop, Once };
  struct ThreadRow;
  /// The timer that a thread made, by the row it was made from; null before.
  using TimerReference = Shared<const ThreadRow*>;
  struct ThreadRow {
    std::string_view selector;
    ThreadKind kind;
    std::chrono::nanoseconds interval;                  ///< Timer
    void (QZInputStream::*tick)();                      ///< Timer, Once
    std::chrono::nanoseconds (QZInputStream::*step)();  ///< Loop: returns its sleep
    TimerReference QZInputStream::*timer;               ///< where a timer is kept
  };
  /// Threads that initializeThred starts: the first rows of the table.
  static constexpr std::size_t kStartedThreads = 13;

  explicit QZInputStream(const InputStreamServices& services) : services_(services) {}
  virtual ~QZInputStream() = default;
  QZInputStream(const QZInputStream&) = delete;
  QZInputStream& operator=(const QZInputStream&) = delete;

  /// Every thread: the thirteen in the order of their start, then those that are not started.
  [[nodiscard]] static std::span<const ThreadRow> threadTable();

  /// initializeThred: starts the thirteen threads while `firstTimeRun` is set, and clears it. Main
  /// thread.
  void initializeThred();
  /// initializeThredReadUDP: the same for the network receive thread and `firstTimeRunUDP`. Main
  /// thread.
  void initializeThredReadUDP();
  /// Starts one thread of the table by its selector, whether the thirteen run or not. Unknown
  /// selectors do nothing. Main thread.
  void detachThread(std::string_view selector);

  /// setTimeforAutoSaveData: period of the data backups in minutes, 0 or less is off. Takes effect
  /// at the next minute tick; the minutes already counted stay.
  void setTimeforAutoSaveData(std::int32_t minutes);
  /// setTimeforAutoSavePreSetData: the same for the preset saves.
  void setTimeforAutoSavePreSetData(std::int32_t minutes);

  // Ticks, each on the thread of its row.
  /// timerUpdate: polls the ports unless paused or playing back.
  void timerUpdate();
  /// timerUpdate2: reads port 2 alone, on the same terms; 3 and 4 likewise.
  void timerUpdate2();
  void timerUpdate3();
  void timerUpdate4();
  /// timerUpdateY: decodes the batch that waits, unless paused. No thread uses it.
  void timerUpdateY();
  /// timerUpdateInPort: reads the first command-input port while it is open; 2 and 3 likewise.
  void timerUpdateInPort();
  void timerUpdateInPort2();
  void timerUpdateInPort3();
  /// timerUpdateWDICommand: sends to the device while the main port is open.
  void timerUpdateWDICommand();
  /// timerUpdateInPortCommand: nothing.
  void timerUpdateInPortCommand() {}
  /// timerUpdateAutoPortCommand: nothing.
  void timerUpdateAutoPortCommand() {}
  /// timerUpdateTimer: confirms the save dialogs that automatic saves wait in.
  void timerUpdateTimer();
  /// timerUpdateBackup: the minute tick of the timed backups. The test comes before the count, so
  /// the first data backup falls on tick `timeMX` + 1, later ones every `timeMX` ticks.
  void timerUpdateBackup();

  /// midiReadProc: the read procedure to register with the MIDI system.
  [[nodiscard]] static MidiReadProc midiReadProc();

  // The MIDI input lists; main thread. Subclasses fill them.
  [[nodiscard]] const std::vector<std::shared_ptr<QZInputStreamS>>& inputSources() const {
    return inputSources_;
  }
  [[nodiscard]] const std::vector<std::shared_ptr<QZInputStreamS>>& selectedInputSources() const {
    return selectedInputSources_;
  }
  /// setSelectedInputSources:
  virtual void setSelectedInputSources(std::vector<std::shared_ptr<QZInputStreamS>> sources) {
    selectedInputSources_ = std::move(sources);
  }
  [[nodiscard]] const std::vector<std::shared_ptr<QZMessageParser>>& parsers() const {
    return parsers_;
  }
  /// parserForSourceConnectionRefCon: for subclasses; here it reports that and gives null.
  [[nodiscard]] virtual QZMessageParser* parserForSourceConnectionRefCon(void* refCon);

  /// Receives parsed MIDI messages; not owned.
  QZMessageParserDelegate* nonretainedMessageDestination = nullptr;

  TimerReference timerX{nullptr};
  TimerReference timerX2{nullptr};
  TimerReference timerX3{nullptr};
  TimerReference timerX4{nullptr};
  TimerReference timerY{
      nullptr};  // timerY, timerP, timerAutoImpedanceCommand: no thread fills them
  TimerReference timerP{nullptr};
  TimerReference timerQ{nullptr};
  TimerReference timerR{nullptr};
  TimerReference timerS{nullptr};
  TimerReference timerT{nullptr};
  TimerReference timerOutInCommand{nullptr};
  TimerReference timerWDICommand{nullptr};
  TimerReference timerTX{nullptr};
  TimerReference timerAutoPortCommand{nullptr};
  TimerReference timerAutoImpedanceCommand{nullptr};

 protected:
  std::vector<std::shared_ptr<QZInputStreamS>> inputSources_;
  std::vector<std::shared_ptr<QZInputStreamS>> selectedInputSources_;
  std::vector<std::shared_ptr<QZMessageParser>> parsers_;

 private:
  void start(const ThreadRow& row);
  void addObserver();
  std::chrono::nanoseconds playbackStep();
  std::chrono::nanoseconds publishStep();
  std::chrono::nanoseconds serialOutStep();
  std::chrono::nanoseconds serialOutSLStep();
  void backUpData();
  void backUpPreSet();

  InputStreamServices services_;
  Shared<std::int32_t> serialOutTiming_{0};
  Shared<std::int32_t> serialOutSLTiming_{0};
};

}  // namespace ovka
