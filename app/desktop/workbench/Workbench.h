#pragma once

#include <QObject>
#include <QString>
#include <atomic>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "DeskThread.h"
#include "DesktopDialogs.h"
#include "DisplayMemory.h"
#include "Feed.h"
#include "LinuxClock.h"
#include "LinuxFileLocks.h"
#include "LinuxFiles.h"
#include "MusicMachine.h"
#include "Recorder.h"

namespace ovka::desktop {

/// Thrown through a save or an opening that the user cancelled; nothing was changed then.
struct Cancelled {};

/// How far a document is read or written. Any thread.
struct WorkProgress {
  std::atomic<std::uint64_t> done{0};
  std::atomic<std::uint64_t> total{0};
  std::atomic<bool> cancel{false};       ///< the user's wish
  std::atomic<bool> cancellable{false};  ///< while nothing was changed yet
};

/// What all windows share: this machine, the desk thread, the present engine and its recorder. The
/// GUI thread unless a member says otherwise.
class Workbench final : public QObject {
  Q_OBJECT

 public:
  /// `folders`: where journals, backups and presets lie. `music`: what live sessions play on;
  /// nullptr: nothing. Both outlive it.
  explicit Workbench(const Folders& folders, MusicMachine* music = nullptr);
  /// Closes the session; a journal whose recording nobody wants goes.
  ~Workbench() override;

  [[nodiscard]] Engine* engine() const { return engine_; }
  [[nodiscard]] DeskThread& desk() { return desk_; }
  [[nodiscard]] Recorder& recorder() { return recorder_; }
  [[nodiscard]] Feed& feed() { return feed_; }
  [[nodiscard]] DesktopDialogs& dialogs() { return dialogs_; }
  [[nodiscard]] WorkProgress& progress() { return progress_; }
  [[nodiscard]] const LinuxClock& clock() const { return clock_; }
  [[nodiscard]] const Folders& folders() const { return folders_; }
  [[nodiscard]] LinuxHostFacts& facts() { return facts_; }
  [[nodiscard]] LinuxFiles& files() { return files_; }
  [[nodiscard]] LinuxFileLocks& locks() { return locks_; }
  /// nullptr: this program plays nothing.
  [[nodiscard]] MusicMachine* music() const { return music_; }

  /// Closes the present session and opens another; whether anything unsaved may go was asked
  /// before. Settings in force go along. `done` gets one line about what failed, or an empty one;
  /// it is not called when another opening follows before this one is through.
  void openSource(SourceChoice choice, const std::function<void(const QString&)>& done);
  [[nodiscard]] const SourceChoice& source() const { return source_; }
  /// For a person.
  [[nodiscard]] QString sourceText() const { return sourceText_; }
  [[nodiscard]] bool opening() const { return opening_; }

  /// Sets a variable of the engine ("NAME=VALUE") on the desk thread; what is wrong is told by
  /// `problem`.
  void assign(const QString& nameAndValue);
  /// Performs a window action on the desk thread.
  void perform(const std::string& selector, double sender = 0,
               const std::function<void()>& done = {});

  /// Performs an action that switches the input port on, in a session without input; a port that
  /// is open then is the source. `chosen`: the port that the action takes for chosen; empty: none.
  void switchPort(const std::string& selector, const std::string& chosen,
                  const std::function<void()>& done);

  /// Asks whether the capture that is the source has come to its end; `done` gets one line about
  /// what was damaged, empty when nothing was, and is not called before the end.
  void askCaptureEnd(const std::function<void(const QString&)>& done);

  /// Delivers what the desk thread finished. The main window's timer calls it.
  void deliver();

 Q_SIGNALS:
  /// Another engine, or none.
  void engineChanged();
  /// One line that concerns the user.
  void problem(const QString& text, const QString& detail);
  /// A setting or action was carried out.
  void changed(const QString& name);

 private:
  void detach();
  [[nodiscard]] DocumentMachine machineOf();

  const Folders& folders_;
  MusicMachine* music_;
  LinuxClock clock_;
  LinuxFiles files_;
  LinuxFileLocks locks_;
  LinuxHostFacts facts_;
  DesktopDialogs dialogs_;
  WorkProgress progress_;
  DocumentMachine machine_;
  DeskThread desk_;
  Recorder recorder_{desk_};
  Feed feed_;
  Engine* engine_ = nullptr;
  SourceChoice source_;
  QString sourceText_;
  DisplayMemory display_;  ///< of the views, for the engine that is being opened
  bool opening_ = false;
  unsigned openings_ = 0;  ///< the newest counts
  bool first_ = true;
};

}  // namespace ovka::desktop
