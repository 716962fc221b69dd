#include "DocumentDesk.h"

#include <algorithm>
#include <cerrno>
#include <span>
#include <system_error>
#include <utility>

#include "BufferVariables.h"
#include "CaptureSettings.h"
#include "DocumentVariables.h"
#include "Engine.h"
#include "Print.h"

namespace ovka {
namespace {

using journalformat::Annotation;
using journalformat::AnnotationChange;

constexpr std::size_t kPiecePoints = 64U << 10U;

[[nodiscard]] Annotation journaled(TypeTextHere::Change change, const TimedText& text) {
  const AnnotationChange kind = change == TypeTextHere::Change::Set ? AnnotationChange::Set
                                : change == TypeTextHere::Change::Removed
                                    ? AnnotationChange::Remove
                                    : AnnotationChange::RemoveAll;
  return {kind, text.id, text.point, text.text};
}

/// The file name without folder and ending.
[[nodiscard]] std::string stemOf(const std::string& path) {
  std::string name = path.substr(path.rfind('/') + 1);
  if (const std::size_t dot = name.rfind('.'); dot != std::string::npos && dot > 0)
    name.resize(dot);
  return name;
}

}  // namespace

DocumentDesk::DocumentDesk(Engine& engine, const Machine& machine, const DocumentMachine& documents)
    : engine_(engine),
      machine_(machine),
      documents_(documents),
      information_(engine.store(), documents.host, machine.clock, switches_),
      named_(engine.settings()),
      engineGroups_(named_),
      backups_(engine.store(), documents.files, documents.folders, documents.dialogs, switches_),
      services_{engine.store(),    documents.files,        documents.folders,
                documents.dialogs, engine.notifications(), *this,
                switches_,         information_,           groups_,
                backups_,          documents.progress},
      panel_(services_, *this, &engineGroups_),
      journal_(
          {engine.store(), documents.files, documents.locks, documents.folders, documents.host,
           machine.clock},
          [this] { return settingsText(); },
          [&engine] {
            std::vector<Annotation> all;
            for (const TimedText& text : engine.annotations().list())
              all.push_back(journaled(TypeTextHere::Change::Set, text));
            return all;
          }),
      catalogue_(documents.files, documents.locks, documents.folders) {
  engineGroups_.use(groups_, information_);
  displayGroups_.use(groups_, information_);
  tasksSource_ = machine.mainLoop.addSource([this] { runTasks(); });
  if (documents.journal) {
    engine.annotations().setListener([this](TypeTextHere::Change change, const TimedText& text) {
      journal_.annotate(journaled(change, text));
    });
  }
  listen();
}

DocumentDesk::~DocumentDesk() {
  engine_.notifications().removeObserver(this);
  machine_.mainLoop.removeSource(tasksSource_);
  engine_.annotations().setListener({});
}

void DocumentDesk::listen() {
  NotificationCenter& center = engine_.notifications();
  center.addObserver(this, "gotoStartAndPlayNotification",
                     [this] { playFrom(buffer::ploopStart); });
  // Posted by the acquisition thread, which must not wait for a disk.
  center.addObserver(this, "AutoSaveWhenRecEnd", [this] {
    saveDue_ = 1;
    machine_.mainLoop.signal(tasksSource_);
  });
}

void DocumentDesk::start(ThreadLauncher& threads) {
  if (documents_.backupFolder) {
    backups_.openCheckBackupFile();
    DocumentError error;
    if (!panel_.loadAtStart(false, &error)) report(error);
  }
  if (documents_.journal) journal_.start(threads);
}

void DocumentDesk::stop() {
  if (documents_.journal) journal_.stop();
}

std::string DocumentDesk::settingsText() const {
  std::string text;
  for (const auto& [name, value] : captureSettings(engine_, {})) text += name + "=" + value + "\n";
  return text;
}

bool DocumentDesk::open(const std::string& path, DocumentError* error) {
  const std::scoped_lock guard(lock_);
  const auto scope = static_cast<OpenScope>(document::openScopeX.get());
  const bool samples = scope != OpenScope::PreferencesOnly &&
                       scope != OpenScope::PreferencesOnlyAndPort &&
                       !switches_.open.on(DocumentSwitch::PreferenceOnly);
  const std::int32_t pauseBefore = buffer::setPauseX;
  const std::int32_t modeBefore = buffer::setRecModeX;
  if (samples) {
    if (documents_.journal) journal_.newRecording();
    // Playing back must not move the point before the clock stands where the recording ends.
    engine_.annotations().pause();
    buffer::setPauseX = 1;
  }
  const auto opened = std::make_shared<OVKA4DrawDocument>(services_);
  if (!opened->readFromFile(path, OVKA4DrawDocumentType, error)) {
    if (buffer::setRecModeX == modeBefore) buffer::setPauseX = pauseBefore;
    return false;
  }
  if (samples) {
    takeTextsFromDrawing(*opened);
    if (!engine_.annotations().playing()) engine_.annotations().seek(buffer::ploop);
  }
  front_ = opened;
  frontPath_ = path;
  frontName_ = stemOf(path);
  panel_.setUpPortIfAsked();
  return true;
}

bool DocumentDesk::save(const std::string& path, DocumentError* error) {
  const std::scoped_lock guard(lock_);
  if (!front_) front_ = std::make_shared<OVKA4DrawDocument>(services_);
  // The zero-buffer command may put another document in front while this one is written.
  const std::shared_ptr<OVKA4DrawDocument> document = front_;
  putTextsIntoDrawing(*document);
  const std::int64_t end = buffer::ploop;
  const bool everything = savesEverything();
  if (!document->writeToFile(path, OVKA4DrawDocumentType, error)) return false;
  if (front_ != document) {
    journal_.noteCleared();
  } else if (everything) {
    if (const int code = journal_.documentSaved(path, end)) {
      PrintError(code, "Error reading %s back; its journal stays - ", path.c_str());
    }
  }
  if (front_ == document) {
    frontPath_ = path;
    frontName_ = stemOf(path);
  }
  return true;
}

bool DocumentDesk::saveDrawing(const std::string& path, std::string_view typeName,
                               DocumentError* error) {
  const std::scoped_lock guard(lock_);
  if (!front_) front_ = std::make_shared<OVKA4DrawDocument>(services_);
  return front_->writeToFile(path, typeName, error);
}

/// The older save entry's reference data: an empty dictionary. Beside the document, never over it.
bool DocumentDesk::saveReference(const std::string& path, DocumentError* error) {
  std::string data;
  if (!front_->dataRepresentationOfType(OVKA4ReferenceDataType, &data, error)) return false;
  int code = 0;
  const auto file = documents_.files.write(path, WriteMode::Atomic, &code);
  if (file != nullptr) code = file->write(std::as_bytes(std::span(data)));
  if (file != nullptr && code == 0) code = file->commit();
  if (code == 0) return true;
  error->description = "The reference data could not be saved.";
  error->reason = std::generic_category().message(code);
  error->detail = "\"" + path + "\": " + error->reason;
  return false;
}

/// A document without a channel may still hold everything, when that channel is a copy that
/// loading makes again, or empty.
bool DocumentDesk::isRedundant(std::int32_t channel, std::int64_t end) const {
  const std::uint32_t configuration = buffer::DeviceConfig;
  const bool copied = (channel == 3 && configuration <= 1) || (channel == 4 && configuration == 1);
  std::vector<std::int32_t> points(kPiecePoints);
  std::vector<std::int32_t> source(kPiecePoints);
  const SampleStore& store = engine_.store();
  for (std::int64_t at = 0; at < end; at += static_cast<std::int64_t>(kPiecePoints)) {
    const auto length = static_cast<std::size_t>(
        std::min<std::int64_t>(end - at, static_cast<std::int64_t>(kPiecePoints)));
    const std::span<std::int32_t> now(points.data(), length);
    const std::span<std::int32_t> from(source.data(), length);
    store.copyStored(channel, at, now);
    std::fill(from.begin(), from.end(), 0);
    if (copied && switches_.save.channel(channel - 2)) store.copyStored(channel - 2, at, from);
    if (!std::equal(now.begin(), now.end(), from.begin())) return false;
  }
  return true;
}

bool DocumentDesk::savesEverything() const {
  const std::int64_t end = buffer::ploop;
  if (buffer::ploopStart != 0 || end > OVKA4DrawDocument::longestSave() ||
      switches_.save.on(DocumentSwitch::PreferenceOnly)) {
    return false;
  }
  for (std::int32_t channel = 1; channel < buffer::kChannels; ++channel) {
    if (!switches_.save.channel(channel) && !isRedundant(channel, end)) return false;
  }
  return true;
}

void DocumentDesk::putTextsIntoDrawing(OVKA4DrawDocument& document) {
  PropertyList::Array graphics;
  for (const PropertyList& graphic : document.graphics()) {
    const PropertyList* kind = graphic.find("Class");
    if (kind == nullptr || kind->text() == nullptr || *kind->text() != kTextsGraphic)
      graphics.push_back(graphic);
  }
  if (!engine_.annotations().list().empty()) {
    const std::vector<std::string> texts = engine_.annotations().texts();
    PropertyList::Dictionary track;
    track.push_back({"Class", std::string(kTextsGraphic)});
    track.push_back({"texts", PropertyList::Array(texts.begin(), texts.end())});
    graphics.emplace_back(std::move(track));
  }
  document.setGraphics(std::move(graphics));
}

void DocumentDesk::takeTextsFromDrawing(const OVKA4DrawDocument& document) {
  std::vector<std::string> texts;
  for (const PropertyList& graphic : document.graphics()) {
    const PropertyList* kind = graphic.find("Class");
    if (kind == nullptr || kind->text() == nullptr || *kind->text() != kTextsGraphic) continue;
    if (!textsOf(graphic.find("texts"), &texts) || !engine_.annotations().put(texts)) {
      Print("Error: not every annotation of the document could be read.\n");
    }
    return;
  }
  engine_.annotations().removeAll();
}

std::string DocumentDesk::recover(const JournalSession& session, bool keepFiles) {
  const std::scoped_lock guard(lock_);
  if (documents_.journal) journal_.newRecording();
  engine_.annotations().pause();
  constexpr std::string_view kFollowsFromTheRecording = "maxploop=";
  std::size_t begin = 0;
  while (begin < session.settings.size()) {
    const std::size_t end = std::min(session.settings.find('\n', begin), session.settings.size());
    const std::string line = session.settings.substr(begin, end - begin);
    begin = end + 1;
    if (line.empty() || line.starts_with(kFollowsFromTheRecording)) continue;
    if (const std::string problem = engine_.assign(line); !problem.empty())
      Print("Error: a setting of the journal was not taken: %s.\n", problem.c_str());
  }
  setNoPortAccess(true);
  std::string problem = catalogue_.recover(session, engine_.store());
  setNoPortAccess(false);
  if (!problem.empty()) return problem;
  engine_.annotations().removeAll();
  for (const auto& [number, text] : session.annotations)
    static_cast<void>(engine_.annotations().addAt(text.point, text.text));
  engine_.annotations().seek(buffer::ploop);
  front_ = std::make_shared<OVKA4DrawDocument>(services_);
  frontPath_.clear();
  frontName_ = "Untitled";
  if (session.wrapped) straightenRecording();
  if (!keepFiles) journal_.adopt(session.parts, session.end);
  return {};
}

}  // namespace ovka
