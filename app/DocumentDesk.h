#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "ActionRegistry.h"
#include "Dialogs.h"
#include "DisplayGroups.h"
#include "DocumentCommands.h"
#include "DocumentShell.h"
#include "DocumentSwitches.h"
#include "EngineGroups.h"
#include "FileLocks.h"
#include "Files.h"
#include "Folders.h"
#include "HostFacts.h"
#include "InformationList.h"
#include "JournalCatalogue.h"
#include "JournalWriter.h"
#include "OVKA4DrawDocument.h"
#include "PresetShell.h"
#include "RawBackups.h"
#include "SetPreSet.h"
#include "SettingsByName.h"
#include "SettingsGroups.h"

namespace ovka {

class Engine;
struct Machine;

/// What documents, presets, backups and journals need of the machine. All of it outlives the
/// engine.
struct DocumentMachine {
  Files& files;
  FileLocks& locks;
  const Folders& folders;
  const HostFacts& host;
  Dialogs& dialogs;
  bool journal = false;       ///< what is acquired is journaled
  bool backupFolder = false;  ///< the folder of the backups is made at the start
  DocumentProgress progress{};
};

/// Where documents with a date in their name go.
inline constexpr std::string_view kDocumentFolder = "/Users/Shared/OVKADocuments/";
/// Ending of a document's file name.
inline constexpr std::string_view kDocumentEnding = ".ovkanote";

/// The application as documents and presets know it: the front document, its file, the ports, the
/// playing back. Owns everything that keeps recordings on disk. The thread that made it; what other
/// threads ask for (timed saves, a full recording) runs on the main run loop, one at a time with
/// what that thread does.
class DocumentDesk final : public DocumentShell, public PresetShell {
 public:
  DocumentDesk(Engine& engine, const Machine& machine, const DocumentMachine& documents);
  ~DocumentDesk() override;
  DocumentDesk(const DocumentDesk&) = delete;
  DocumentDesk& operator=(const DocumentDesk&) = delete;

  /// The start and the end of the engine's threads.
  void start(ThreadLauncher& threads);
  void stop();
  /// The actions of documents, backups, presets and playing back.
  void addActions(ActionRegistry& to);

  /// Opens a document, which becomes the front one; it stands still at its end. False: `*error`
  /// says why.
  [[nodiscard]] bool open(const std::string& path, DocumentError* error);
  /// Saves the recording as a Brain Note at `path`, which becomes the front document. Its journal
  /// goes once the document is on disk and holds everything. False: `*error` says why; the old file
  /// and the journal stay.
  [[nodiscard]] bool save(const std::string& path, DocumentError* error);
  /// Saves the drawing alone, as PDF or TIFF (kPdfDocumentType, kTiffDocumentType).
  [[nodiscard]] bool saveDrawing(const std::string& path, std::string_view typeName,
                                 DocumentError* error);
  /// Brings a journaled recording back, as opening a document does; one that looped comes in the
  /// order of time. Its files go with the next
  /// document that holds all of it, unless `keepFiles`. Empty when done, else one line.
  [[nodiscard]] std::string recover(const JournalSession& session, bool keepFiles = false);
  /// What settings of opened documents and presets could not be taken, a line each; once.
  [[nodiscard]] std::vector<std::string> takeProblems() { return engineGroups_.takeProblems(); }

  /// Plays from a point on, at the sample speed of the recording.
  void playFrom(std::int64_t point);
  /// Playback that reaches `end` goes on at `first`; cut to the recording. An empty range ends
  /// that: false.
  bool playLoop(std::int64_t first, std::int64_t end);
  /// A recording in which looping wrapped comes into the order of time and ends where the buffer
  /// does, annotations included, so that a save takes all of it. After the engine's threads ended.
  void straightenRecording();

  [[nodiscard]] const std::string& frontPath() const { return frontPath_; }
  /// The input port that was opened last, for the port preset.
  void setChosenPort(const std::string& path) { chosenPort_ = path; }
  /// Makes the chosen port the one that is switched on at the next start. False: not written.
  bool rememberPort();
  /// Settings ("NAME=VALUE") that go before those of a port preset.
  void setLineSettings(std::vector<std::string> settings) { lineSettings_ = std::move(settings); }
  /// Why the last switching on of a port failed; empty when it did not.
  [[nodiscard]] const std::string& portProblem() const { return portProblem_; }
  void setOutputPathField(std::string text) { outputPathField_ = std::move(text); }

  DocumentSwitches& switches() { return switches_; }
  InformationList& information() { return information_; }
  SettingsGroups& groups() { return groups_; }
  RawBackups& backups() { return backups_; }
  DocumentServices& services() { return services_; }
  SetPreSet& panel() { return panel_; }
  JournalWriter& journal() { return journal_; }
  JournalCatalogue& catalogue() { return catalogue_; }

  // --- DocumentShell
  void applicationStartUp() override;
  [[nodiscard]] std::string frontDocumentName() override { return frontName_; }
  void closeFrontDocument() override;
  void makeNewDocument(const std::string& name) override;
  void saveFrontDocument() override;
  void setNoPortAccess(bool blocked) override;
  void setPortON() override;
  void switchToPlayMode() override;
  void resetMaximumTime() override;

  // --- PresetShell
  void onMainThread(std::function<void()> task) override;
  [[nodiscard]] std::string outputPathField() override { return outputPathField_; }
  [[nodiscard]] PortPreset chosenPorts() override;
  void switchPortOn(const PortPreset& ports) override;
  void switchPortOff() override;

 private:
  void listen();
  void runTasks();
  void report(const DocumentError& error);
  [[nodiscard]] bool saveReference(const std::string& path, DocumentError* error);
  void putTextsIntoDrawing(OVKA4DrawDocument& document);
  void takeTextsFromDrawing(const OVKA4DrawDocument& document);
  [[nodiscard]] bool savesEverything() const;
  [[nodiscard]] bool isRedundant(std::int32_t channel, std::int64_t end) const;
  [[nodiscard]] std::string settingsText() const;
  void addDocumentActions(ActionRegistry& to);
  void addPlaybackActions(ActionRegistry& to);

  Engine& engine_;
  const Machine& machine_;
  DocumentMachine documents_;
  std::thread::id thread_ = std::this_thread::get_id();
  std::recursive_mutex lock_;  ///< one document, preset or recovery at a time

  DocumentSwitches switches_;
  InformationList information_;
  SettingsGroups groups_;
  SettingsByName named_;
  EngineGroups engineGroups_;
  display::DisplayGroups displayGroups_;
  RawBackups backups_;
  DocumentServices services_;
  DocumentCommands commands_{services_};
  SetPreSet panel_;
  JournalWriter journal_;
  JournalCatalogue catalogue_;
  std::shared_ptr<OVKA4DrawDocument> front_;  ///< nullptr: nothing was opened or made
  std::string frontName_;
  std::string frontPath_;
  std::string chosenPort_;
  std::string portProblem_;
  std::vector<std::string> lineSettings_;
  std::string outputPathField_;
  Shared<std::int32_t> loopFrom_{0};  ///< first point of a playback loop whose end is not set yet

  std::mutex tasksLock_;  ///< guards the tasks
  std::vector<std::function<void()>> tasks_;
  int tasksSource_ = 0;              ///< of the main run loop
  Shared<std::int32_t> saveDue_{0};  ///< 1: a recording came to its end and is to be saved
};

/// The annotation track as one of a drawing's graphics.
inline constexpr std::string_view kTextsGraphic = "TypeTextHere";

}  // namespace ovka
