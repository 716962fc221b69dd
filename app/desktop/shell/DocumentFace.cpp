#include "DocumentFace.h"

#include <QDateTime>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QProgressBar>
#include <QProgressDialog>
#include <QPushButton>
#include <QSettings>
#include <QStandardPaths>
#include <QTimer>
#include <chrono>

#include "BufferVariables.h"
#include "DocumentDesk.h"
#include "DocumentVariables.h"

namespace ovka::desktop {
namespace {

constexpr int kMostRecent = 10;
constexpr auto kShowProgressAfter = std::chrono::milliseconds(400);

QString filter() {
  return QStringLiteral("OVKA documents (*.ovkanote);;All files (*)");
}

QString reasonOf(const DocumentError& error) {
  return QString::fromStdString(error.detail.empty() ? error.reason : error.detail);
}

QString documentsFolder() {
  const QString kept = QSettings().value(QStringLiteral("documents/folder")).toString();
  if (!kept.isEmpty() && QDir(kept).exists()) return kept;
  return QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
}

}  // namespace

/// A piece of work on a document: done on the desk thread, reported here.
struct DocumentFace::Job {
  std::function<bool(DocumentDesk&, DocumentError*)> work;
  std::function<void()> ok;
  std::function<void()> always;
  QString failure;
  bool done = false;
  bool cancelled = false;
  DocumentError error;
  std::string frontPath;
  std::vector<std::string> problems;
};

DocumentFace::DocumentFace(Workbench& bench, QWidget* window)
    : bench_(bench), window_(window), progressTimer_(new QTimer(this)) {
  progressTimer_->setSingleShot(true);
  connect(progressTimer_, &QTimer::timeout, this, &DocumentFace::showProgress);
}

QString DocumentFace::name() const {
  return path_.isEmpty() ? QStringLiteral("Untitled") : QFileInfo(path_).completeBaseName();
}

void DocumentFace::setPath(const QString& path) {
  path_ = path;
  if (!path.isEmpty()) {
    QSettings settings;
    QStringList paths = recent();
    paths.removeAll(path);
    paths.prepend(path);
    while (paths.size() > kMostRecent) paths.removeLast();
    settings.setValue(QStringLiteral("documents/recent"), paths);
    settings.setValue(QStringLiteral("documents/folder"), QFileInfo(path).absolutePath());
  }
  Q_EMIT changed();
}

QStringList DocumentFace::recent() const {
  return QSettings().value(QStringLiteral("documents/recent")).toStringList();
}

void DocumentFace::clearRecent() {
  QSettings().remove(QStringLiteral("documents/recent"));
  Q_EMIT changed();
}

void DocumentFace::run(const std::shared_ptr<Job>& job, const QString& label, bool cancellable) {
  Engine* engine = bench_.engine();
  if (engine == nullptr) {
    if (job->always) job->always();
    Q_EMIT message(QStringLiteral("There is no engine to work with."),
                   QStringLiteral("Start a source, then try again."), true);
    return;
  }
  bench_.recorder().setBusy(true);
  WorkProgress& progress = bench_.progress();
  progress.done = progress.total = 0;
  progress.cancel = false;
  progress.cancellable = cancellable;
  progressLabel_ = label;
  progressTimer_->start(kShowProgressAfter);
  bench_.desk().post(
      [engine, job] {
        DocumentDesk& desk = *engine->documents();
        const std::int32_t pauseBefore = buffer::setPauseX;
        desk.onMainThread([&] {
          try {
            job->done = job->work(desk, &job->error);
          } catch (const Cancelled&) {
            job->cancelled = true;
            buffer::setPauseX = pauseBefore;
          }
          job->frontPath = desk.frontPath();
          job->problems = desk.takeProblems();
        });
      },
      [this, job] { finish(job); });
}

void DocumentFace::finish(const std::shared_ptr<Job>& job) {
  progressTimer_->stop();
  if (progress_ != nullptr) {
    progress_->hide();
    progress_->deleteLater();
    progress_ = nullptr;
  }
  bench_.recorder().setBusy(false);
  if (job->always) job->always();
  // What could not be replaced is still there.
  if (!job->done) bench_.recorder().noteDiscarded(false);
  if (job->cancelled) {
    Q_EMIT message(QStringLiteral("Cancelled."), QStringLiteral("Nothing was changed."), false);
    return;
  }
  if (!job->done) {
    Q_EMIT message(
        job->failure.isEmpty() ? QString::fromStdString(job->error.description) : job->failure,
        reasonOf(job->error), true);
    return;
  }
  setPath(QString::fromStdString(job->frontPath));
  if (!job->problems.empty()) {
    QStringList lines;
    for (const std::string& line : job->problems) lines << QString::fromStdString(line);
    Q_EMIT message(QStringLiteral("Some settings of the document were not taken."),
                   lines.join(QLatin1Char('\n')), false);
  }
  if (job->ok) job->ok();
}

void DocumentFace::showProgress() {
  progress_ = new QProgressDialog(progressLabel_, QStringLiteral("Cancel"), 0, 1000, window_);
  // The dialog's own setValue handles events, among them the end of the work that it shows.
  auto* bar = new QProgressBar;
  progress_->setBar(bar);
  progress_->setWindowModality(Qt::WindowModal);
  progress_->setAutoClose(false);
  progress_->setAutoReset(false);
  progress_->setMinimumDuration(0);
  progress_->setMinimumWidth(420);
  connect(progress_, &QProgressDialog::canceled, this, [this] {
    bench_.progress().cancel = true;
    // Cancelling hides it; the work goes on until it can stop.
    if (progress_ != nullptr) progress_->show();
  });
  auto* look = new QTimer(progress_);
  connect(look, &QTimer::timeout, progress_, [this, bar, dialog = progress_] {
    const WorkProgress& now = bench_.progress();
    const std::uint64_t total = now.total;
    bar->setRange(0, total > 0 ? 1000 : 0);
    if (total > 0)
      bar->setValue(static_cast<int>(1000.0 * static_cast<double>(now.done.load()) /
                                     static_cast<double>(total)));
    if (auto* button = dialog->findChild<QPushButton*>())
      button->setEnabled(now.cancellable && !now.cancel);
  });
  look->start(100);
  progress_->show();
}

void DocumentFace::newDocument() {
  guard(QStringLiteral("a new one is begun"),
        [this] { bench_.recorder().clear([this] { setPath({}); }); });
}

void DocumentFace::openWithDialog() {
  auto* dialog =
      new QFileDialog(window_, QStringLiteral("Open a recording"), documentsFolder(), filter());
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  dialog->setFileMode(QFileDialog::ExistingFile);
  connect(dialog, &QFileDialog::fileSelected, this, &DocumentFace::open);
  // What was to be taken of the next document concerns this dialog alone.
  connect(dialog, &QFileDialog::rejected, this, [] { document::openScopeX = 0; });
  dialog->open();
}

/// Whether the next opening replaces the recording.
bool DocumentFace::openingTakesSamples() const {
  const auto scope = static_cast<OpenScope>(document::openScopeX.get());
  if (scope == OpenScope::PreferencesOnly || scope == OpenScope::PreferencesOnlyAndPort)
    return false;
  return bench_.engine() == nullptr ||
         !bench_.engine()->documents()->switches().open.on(DocumentSwitch::PreferenceOnly);
}

void DocumentFace::open(const QString& path) {
  const bool samples = openingTakesSamples();
  const auto work = [this, path, samples] {
    const auto job = std::make_shared<Job>();
    job->failure = QStringLiteral("%1 could not be opened.").arg(QFileInfo(path).fileName());
    const bool looked = samples && !bench_.recorder().keepsJournal();
    job->work = [file = path.toStdString(), looked](DocumentDesk& desk, DocumentError* error) {
      // What was only looked at is nothing to be recovered.
      if (looked) desk.journal().discard();
      return desk.open(file, error);
    };
    job->ok = [this, samples] {
      if (samples) bench_.recorder().noteOpened(false);
    };
    run(job, QStringLiteral("Opening %1 …").arg(QFileInfo(path).fileName()), true);
  };
  if (samples)
    guard(QStringLiteral("another one is opened"), work);
  else
    work();
}

/// What is only looked at is kept first, so that all of it goes into the document.
bool DocumentFace::keepFirst(const std::function<void()>& then) {
  Recorder& recorder = bench_.recorder();
  if (recorder.state() != RecordState::Live || recorder.keepsJournal()) return false;
  recorder.keep(then);
  return recorder.keepsJournal();
}

void DocumentFace::save(const std::function<void()>& then) {
  if (keepFirst([this, then] { save(then); })) return;
  if (path_.isEmpty()) {
    saveAs(then);
  } else {
    saveTo(path_, then);
  }
}

void DocumentFace::saveAs(const std::function<void()>& then) {
  if (keepFirst([this, then] { saveAs(then); })) return;
  const QString proposal =
      path_.isEmpty()
          ? documentsFolder() + QLatin1Char('/') +
                QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd HH.mm")) +
                QStringLiteral(".ovkanote")
          : path_;
  auto* dialog = new QFileDialog(window_, QStringLiteral("Save the recording"),
                                 QFileInfo(proposal).absolutePath(), filter());
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  dialog->setAcceptMode(QFileDialog::AcceptSave);
  dialog->setDefaultSuffix(QString::fromStdString(std::string(kDocumentEnding.substr(1))));
  dialog->selectFile(QFileInfo(proposal).fileName());
  connect(dialog, &QFileDialog::fileSelected, this,
          [this, then](const QString& path) { saveTo(path, then); });
  dialog->open();
}

void DocumentFace::saveTo(const QString& path, const std::function<void()>& then) {
  bench_.recorder().beforeSave();
  const auto job = std::make_shared<Job>();
  job->failure = QStringLiteral("%1 could not be saved; the recording is still in memory.")
                     .arg(QFileInfo(path).fileName());
  job->work = [file = path.toStdString()](DocumentDesk& desk, DocumentError* error) {
    return desk.save(file, error);
  };
  job->always = [this] { bench_.recorder().afterSave(); };
  job->ok = [this, then] {
    bench_.recorder().noteSaved();
    Q_EMIT changed();
    if (then) then();
  };
  run(job, QStringLiteral("Saving %1 …").arg(QFileInfo(path).fileName()), true);
}

void DocumentFace::guard(const QString& what, const std::function<void()>& then) {
  if (!bench_.recorder().unsaved()) {
    then();
    return;
  }
  auto* box = new QMessageBox(QMessageBox::Warning, QStringLiteral("Unsaved recording"),
                              QStringLiteral("Save the recording before %1?").arg(what),
                              QMessageBox::NoButton, window_);
  box->setObjectName(QStringLiteral("unsaved"));
  box->setTextFormat(Qt::PlainText);
  box->setAttribute(Qt::WA_DeleteOnClose);
  box->setInformativeText(
      QStringLiteral("\"%1\" holds %2 that no document holds. What is discarded cannot be "
                     "brought back.")
          .arg(name(), bench_.recorder().seconds() >= 1
                           ? QStringLiteral("%1 seconds of samples or notes")
                                 .arg(qRound64(bench_.recorder().seconds()))
                           : QStringLiteral("samples or notes")));
  QPushButton* yes = box->addButton(QStringLiteral("Save"), QMessageBox::AcceptRole);
  QPushButton* no = box->addButton(QStringLiteral("Discard"), QMessageBox::DestructiveRole);
  QPushButton* cancel = box->addButton(QStringLiteral("Cancel"), QMessageBox::RejectRole);
  box->setDefaultButton(yes);
  box->setEscapeButton(cancel);
  connect(box, &QMessageBox::finished, this, [this, box, yes, no, then] {
    if (box->clickedButton() == yes) save(then);
    if (box->clickedButton() == no) {
      // Once discarded it does not count as unsaved on the way to what follows.
      bench_.recorder().noteDiscarded();
      then();
    }
  });
  box->open();
}

void DocumentFace::recover(const JournalSession& session) {
  guard(QStringLiteral("another one is recovered"), [this, session] {
    const auto job = std::make_shared<Job>();
    job->failure = QStringLiteral("The recording could not be recovered.");
    const bool looked = !bench_.recorder().keepsJournal();
    job->work = [session, looked](DocumentDesk& desk, DocumentError* error) {
      if (looked) desk.journal().discard();
      const std::string problem = desk.recover(session);
      error->detail = problem;
      return problem.empty();
    };
    job->ok = [this] {
      bench_.recorder().noteOpened(true);
      Q_EMIT message(
          QStringLiteral("The recording is back."),
          QStringLiteral("Save it as a document; its journal goes once that is on disk."), false);
    };
    run(job, QStringLiteral("Recovering …"), false);
  });
}

void DocumentFace::refresh() {
  Engine* engine = bench_.engine();
  if (engine == nullptr || refreshing_) return;
  refreshing_ = true;
  const auto front = std::make_shared<std::string>();
  bench_.desk().post(
      [engine, front] {
        DocumentDesk& desk = *engine->documents();
        desk.onMainThread([&] { *front = desk.frontPath(); });
      },
      [this, front, engine] {
        refreshing_ = false;
        if (bench_.engine() != engine) return;
        const QString path = QString::fromStdString(*front);
        if (path != path_) setPath(path);
      });
}

}  // namespace ovka::desktop
