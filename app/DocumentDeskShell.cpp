#include <string>
#include <utility>

#include "AmplifierVariables.h"
#include "BufferVariables.h"
#include "DocumentDesk.h"
#include "DocumentVariables.h"
#include "Engine.h"
#include "MaximumTime.h"
#include "Print.h"

namespace ovka {

void DocumentDesk::applicationStartUp() {
  if (documents_.backupFolder) backups_.openCheckBackupFile();
}

void DocumentDesk::closeFrontDocument() {
  front_.reset();
  frontName_.clear();
  frontPath_.clear();
}

void DocumentDesk::makeNewDocument(const std::string& name) {
  front_ = std::make_shared<OVKA4DrawDocument>(services_);
  frontName_ = name.empty() ? "Untitled" : name;
  frontPath_.clear();
  if (!name.empty()) {
    frontPath_ = documents_.folders.resolve(std::string(kDocumentFolder) + name +
                                            std::string(kDocumentEnding));
  }
}

void DocumentDesk::report(const DocumentError& error) {
  documents_.dialogs.alert(error.description, error.detail.empty() ? error.reason : error.detail);
}

void DocumentDesk::saveFrontDocument() {
  const std::scoped_lock guard(lock_);
  // A recording that has no name yet must not get lost for want of one.
  if (!front_ || frontPath_.empty()) {
    makeNewDocument(DocumentCommands::nameWithDate(information_.now(), buffer::loopCount));
  }
  const std::string path = frontPath_;
  if (path.starts_with(documents_.folders.resolve(kDocumentFolder)))
    static_cast<void>(documents_.files.makeFolder(documents_.folders.resolve(
        std::string(kDocumentFolder.substr(0, kDocumentFolder.size() - 1)))));
  DocumentError error;
  bool done = false;
  if (document::setSaveAsReferenceX != 0) {
    done = saveReference(path + "-reference", &error);
  } else {
    document::setSaveAsBrainNoteX = 0;
    done = save(path, &error);
  }
  if (!done) {
    report(error);
    return;
  }
  Print("Saved %s.\n", path.c_str());
}

void DocumentDesk::setNoPortAccess(bool blocked) {
  amplifier::setNoPortAccess = blocked ? 1 : 0;
}

void DocumentDesk::setPortON() {
  panel_.setPortONAction(1);
}

void DocumentDesk::switchToPlayMode() {
  engine_.annotations().pause();
  engine_.annotations().seek(buffer::ploop);
  buffer::setRecModeX = kPlayback;
}

void DocumentDesk::resetMaximumTime() {
  static_cast<void>(setMaxTime(engine_.store(), buffer::MaxTimeActionX.get()));
}

void DocumentDesk::onMainThread(std::function<void()> task) {
  if (std::this_thread::get_id() == thread_) {
    const std::scoped_lock guard(lock_);
    task();
    return;
  }
  {
    const std::scoped_lock guard(tasksLock_);
    tasks_.push_back(std::move(task));
  }
  machine_.mainLoop.signal(tasksSource_);
}

void DocumentDesk::runTasks() {
  std::vector<std::function<void()>> due;
  {
    const std::scoped_lock guard(tasksLock_);
    due.swap(tasks_);
  }
  const std::scoped_lock guard(lock_);
  for (const std::function<void()>& task : due) task();
  if (saveDue_ == 0) return;
  saveDue_ = 0;
  saveFrontDocument();
}

PortPreset DocumentDesk::chosenPorts() {
  PortPreset ports;
  ports.path = chosenPort_;
  ports.menuName = chosenPort_.substr(chosenPort_.rfind('/') + 1);
  return ports;
}

void DocumentDesk::switchPortOn(const PortPreset& ports) {
  for (const std::string& setting : lineSettings_) static_cast<void>(engine_.assign(setting));
  portProblem_ = ports.path.empty() ? "No port is chosen and none is remembered."
                                    : engine_.openAmplifier(ports.path).explanation;
  if (!portProblem_.empty())
    documents_.dialogs.alert("The input port cannot be switched on.", portProblem_);
}

bool DocumentDesk::rememberPort() {
  PortPreset ports = chosenPorts();
  ports.automaticOn = true;
  return !ports.path.empty() &&
         OVKA4DrawDocument(services_).saveDataForPortPreference(presetPath({}), ports);
}

void DocumentDesk::switchPortOff() {
  engine_.closeAmplifier();
}

void DocumentDesk::addActions(ActionRegistry& to) {
  panel_.addActions([this, &to](std::string_view selector, std::string_view meaning,
                                std::function<void(std::int32_t)> perform) {
    to.add(selector, meaning, [this, perform = std::move(perform)](std::int32_t sender) {
      const std::scoped_lock guard(lock_);
      perform(sender);
    });
  });
  addDocumentActions(to);
  addPlaybackActions(to);
}

void DocumentDesk::addDocumentActions(ActionRegistry& to) {
  struct Command {
    std::string_view selector;
    std::string_view meaning;
    void (DocumentCommands::*method)();
  };
  using C = DocumentCommands;
  for (const Command& command : std::initializer_list<Command>{
           {"saveDocumentwithDate:", "saves a new document named after the time",
            &C::saveDocumentwithDate},
           {"setSaveAsBrainNote:", "the next save is a Brain Note", &C::setSaveAsBrainNote},
           {"setSaveAsReference:", "the next save is reference data", &C::setSaveAsReference},
           {"setBufferZeroNewBrainNote:",
            "the next save ends with an empty recording, after asking",
            &C::setBufferZeroNewBrainNote},
           {"setOpenBrainDataOnlyAction:", "the next opening takes the samples alone",
            &C::setOpenBrainDataOnlyAction},
           {"setOpenPreferencesOnlyAction:", "the next opening takes the settings alone",
            &C::setOpenPreferencesOnlyAction},
           {"setOpenPreferencesOnlyAndPortAction:",
            "the next opening takes the settings and switches the port on",
            &C::setOpenPreferencesOnlyAndPortAction},
           {"setOpenPortRecordingAction:", "the next opening starts playing",
            &C::setOpenPortRecordingAction},
           {"setDataSwap:", "old documents are byte-swapped", &C::setDataSwap},
           {"setDataSwapOFF:", "old documents are not byte-swapped", &C::setDataSwapOFF},
           {"setselectSaveAction:", "saves the backups, after asking", &C::setselectSaveAction},
           {"setselectOpenAction:", "loads the backups, after asking", &C::setselectOpenAction},
       }) {
    const bool replaces = command.selector == "setselectOpenAction:";
    to.add(command.selector, command.meaning,
           [this, replaces, method = command.method](std::int32_t /*sender*/) {
             const std::scoped_lock guard(lock_);
             if (replaces && documents_.journal) journal_.newRecording();
             (commands_.*method)();
           });
  }
}

}  // namespace ovka
