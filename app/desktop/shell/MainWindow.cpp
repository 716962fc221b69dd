#include "MainWindow.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCloseEvent>
#include <QComboBox>
#include <QDragEnterEvent>
#include <QFileInfo>
#include <QLineEdit>
#include <QMimeData>
#include <QScreen>
#include <QSettings>
#include <QTimer>
#include <QVBoxLayout>
#include <algorithm>
#include <cstdio>

#include "Banner.h"
#include "BufferVariables.h"
#include "DisplayMemory.h"
#include "Look.h"
#include "MusicWindow.h"
#include "ScrubBar.h"
#include "SetupWindow.h"
#include "StatusStrip.h"
#include "TransportRow.h"
#include "ViewDocks.h"

namespace ovka::desktop {
namespace {

constexpr int kTick = 33;  // ms
constexpr unsigned kRestingTicks = 3;

bool isCapture(const QString& path) {
  return path.endsWith(QStringLiteral(".cap"), Qt::CaseInsensitive);
}

}  // namespace

MainWindow::MainWindow(Workbench& bench, QWidget* parent)
    : QMainWindow(parent), bench_(bench), documents_(bench, this), music_(bench, this) {
  setObjectName(QStringLiteral("main"));
  setWindowIcon(look::appIcon());
  setAcceptDrops(true);
  build();
  connectParts();
  makeMenus();
  restoreWindow();
  refreshTitle();
  timer_ = new QTimer(this);
  connect(timer_, &QTimer::timeout, this, &MainWindow::tick);
  timer_->start(kTick);
}

MainWindow::~MainWindow() = default;

void MainWindow::build() {
  auto* central = new QWidget;
  auto* column = new QVBoxLayout(central);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(0);
  auto* header = new QFrame;
  header->setObjectName(QStringLiteral("header"));
  auto* inHeader = new QVBoxLayout(header);
  inHeader->setContentsMargins(0, 0, 0, 0);
  inHeader->setSpacing(0);
  transport_ = new TransportRow(bench_);
  strip_ = new StatusStrip(bench_);
  inHeader->addWidget(transport_);
  inHeader->addWidget(strip_);
  banner_ = new Banner;
  views_ = new ViewDocks(bench_);
  scrub_ = new ScrubBar(bench_);
  note_ = new QLineEdit;
  note_->setObjectName(QStringLiteral("note"));
  note_->setPlaceholderText(QStringLiteral("Note at this moment, then Return"));
  note_->setAccessibleName(note_->placeholderText());
  note_->hide();
  column->addWidget(header);
  column->addWidget(banner_);
  column->addWidget(note_);
  column->addWidget(views_, 1);
  column->addWidget(scrub_);
  setCentralWidget(central);
  setup_ = new SetupWindow(bench_, documents_, this);
  musicWindow_ = new MusicWindow(bench_, music_, this);
}

void MainWindow::connectParts() {
  connectSource();
  connect(transport_, &TransportRow::recordPressed, this, &MainWindow::toggleRecord);
  connect(transport_, &TransportRow::pausePressed, this, &MainWindow::togglePause);
  connect(transport_, &TransportRow::livePressed, this, &MainWindow::goLive);
  connect(transport_, &TransportRow::panicPressed, this, &MainWindow::panic);
  connect(setup_, &SetupWindow::perform, this, &MainWindow::performAction);
  connect(setup_, &SetupWindow::useSource, this, &MainWindow::useSource);
  connect(&documents_, &DocumentFace::message, this, &MainWindow::tell);
  connect(&documents_, &DocumentFace::changed, this, [this] {
    strip_->setPlace(documents_.path());
    refreshTitle();
  });
  connect(&bench_, &Workbench::problem, this,
          [this](const QString& text, const QString& detail) { tell(text, detail, true); });
  connect(&bench_, &Workbench::changed, this, [this](const QString& name) {
    if (name == QLatin1String("themeX")) applyLook();
    const bool line = name == QLatin1String("SelectDevice") ||
                      name == QLatin1String("DeviceConfig") ||
                      name == QLatin1String("HighSpeedX") || name == QLatin1String("oldBluetooth");
    if (!line || !bench_.recorder().acquires()) return;
    banner_->show({Banner::Level::Note,
                   QStringLiteral("The amplifier's settings take effect with the next start."),
                   {},
                   {{QStringLiteral("Start again"), [this] { useSource(bench_.source()); }}},
                   QStringLiteral("restart")});
  });
  connectMusic();
  connect(&bench_.feed(), &Feed::settingsBrought, this, &MainWindow::applyLook);
  connect(note_, &QLineEdit::returnPressed, this, [this] {
    if (bench_.engine() != nullptr) bench_.engine()->annotations().add(note_->text().toStdString());
    note_->clear();
    note_->hide();
  });
}

void MainWindow::openFile(const QString& path) {
  if (!isCapture(path)) {
    documents_.open(path);
    return;
  }
  SourceChoice choice;
  choice.kind = SourceChoice::Kind::Capture;
  choice.paths = {path.toStdString()};
  useSource(choice);
}

void MainWindow::performAction(const QString& selector, int sender) {
  const bool portOn = selector == QLatin1String("setPortONandLoadPrefAction:") ||
                      (selector == QLatin1String("setPortONAction:") && sender != 0);
  if (portOn) {
    switchPort(selector);
    return;
  }
  const auto perform = [this, selector, sender](const std::function<void()>& done) {
    bench_.perform(selector.toStdString(), sender, done);
  };
  if (selector == QLatin1String("setselectOpenAction:")) {
    documents_.guard(QStringLiteral("the backup is loaded"), [this, perform] {
      perform([this] {
        bench_.recorder().noteOpened(true);
        documents_.refresh();
      });
    });
    return;
  }
  const bool saves = selector == QLatin1String("saveDocumentwithDate:") ||
                     selector == QLatin1String("savePreSetPreference:");
  if (saves) bench_.recorder().beforeSave();
  perform([this, saves] {
    if (saves) {
      bench_.recorder().afterSave();
      documents_.refresh();
    }
  });
}

void MainWindow::toggleRecord() {
  Recorder& recorder = bench_.recorder();
  const RecordState state = recorder.state();
  if (state == RecordState::Recording || state == RecordState::Paused) {
    recorder.stop();
    return;
  }
  documents_.guard(QStringLiteral("a new one is made"),
                   [this] { bench_.recorder().record([this] { documents_.refresh(); }); });
}

void MainWindow::togglePause() {
  Recorder& recorder = bench_.recorder();
  switch (recorder.state()) {
    case RecordState::Recording:
      recorder.pause(true);
      break;
    case RecordState::Paused:
      recorder.pause(false);
      break;
    case RecordState::Review:
      recorder.play();
      break;
    case RecordState::Playing:
      recorder.pausePlaying();
      break;
    case RecordState::Live:
    case RecordState::NoInput:
      break;
  }
}

void MainWindow::goLive() {
  documents_.guard(QStringLiteral("the living signal takes its place"),
                   [this] { bench_.recorder().goLive([this] { documents_.refresh(); }); });
}

void MainWindow::keepSeen() {
  bench_.recorder().keep([this] {
    documents_.refresh();
    banner_->show({Banner::Level::Note,
                   QStringLiteral("The last %1 are a recording now.")
                       .arg(clockText(bench_.recorder().seconds())),
                   QStringLiteral("Live goes back to the living signal."),
                   {{QStringLiteral("Save"), [this] { documents_.save(); }}},
                   QStringLiteral("kept")});
  });
}

void MainWindow::panic() {
  Engine* engine = bench_.engine();
  if (engine != nullptr) engine->midi().panic();
  const bool on = engine != nullptr && engine->midi().on();
  banner_->show({Banner::Level::Note,
                 on ? QStringLiteral("Every note was silenced, at every receiver.")
                    : QStringLiteral("Nothing sounds: no MIDI output is open."),
                 {},
                 {},
                 QStringLiteral("panic")});
}

void MainWindow::addNote() {
  if (bench_.engine() == nullptr) return;
  note_->show();
  note_->setFocus();
}

void MainWindow::tell(const QString& text, const QString& detail, bool problem) {
  banner_->show({problem ? Banner::Level::Problem : Banner::Level::Note, text, detail, {}, {}});
}

void MainWindow::applyLook() {
  look::apply();
  transport_->applyLook();
  strip_->applyLook();
  views_->applyLook();
}

void MainWindow::refreshTitle() {
  const bool unsaved = bench_.recorder().unsaved();
  setWindowTitle(QStringLiteral("%1[*] – OVKA").arg(documents_.name()));
  if (isWindowModified() != unsaved) setWindowModified(unsaved);
}

void MainWindow::tick() {
  bench_.deliver();
  showRequests();
  if (bench_.recorder().tick()) {
    banner_->show({Banner::Level::Care,
                   QStringLiteral("The recording reached its maximum time and stands."),
                   QStringLiteral("It is complete; the maximum time is chosen in Set-up."),
                   {{QStringLiteral("Save"), [this] { documents_.save(); }}},
                   QStringLiteral("end")});
    documents_.refresh();
  }
  // While everything stands the program looks less often, as if that many ticks had passed.
  const unsigned ticks = bench_.feed().rests() ? kRestingTicks : 1;
  if (const int interval = static_cast<int>(ticks) * kTick; timer_->interval() != interval)
    timer_->setInterval(interval);
  const unsigned before = ticks_;
  ticks_ += ticks;
  if (ticks_ / 3 != before / 3) {
    transport_->refresh();
    strip_->refresh();
    refreshTitle();
    refreshMusic();
  }
  scrub_->refresh();
  if (ticks_ / 30 != before / 30) watch();
}

/// Who reached a button by the keyboard presses it with the space bar; it pauses everywhere else.
bool MainWindow::event(QEvent* event) {
  if (event->type() == QEvent::ShortcutOverride &&
      static_cast<QKeyEvent*>(event)->key() == Qt::Key_Space &&
      (qobject_cast<QAbstractButton*>(focusWidget()) != nullptr ||
       qobject_cast<QComboBox*>(focusWidget()) != nullptr)) {
    event->accept();
    return true;
  }
  return QMainWindow::event(event);
}

void MainWindow::closeUnasked() {
  if (bench_.recorder().unsaved())
    std::fputs("ovka-desktop: the recording is kept; the next start offers it\n", stderr);
  closing_ = true;
  close();
}

void MainWindow::closeEvent(QCloseEvent* event) {
  if (closing_ || !bench_.recorder().unsaved()) {
    keepWindow();
    views_->leaveFullScreen();
    event->accept();
    QApplication::quit();
    return;
  }
  event->ignore();
  documents_.guard(QStringLiteral("the program ends"), [this] {
    closing_ = true;
    close();
  });
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event) {
  const QList<QUrl> urls = event->mimeData()->urls();
  if (urls.size() == 1 && urls.front().isLocalFile()) event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent* event) {
  event->acceptProposedAction();
  openFile(event->mimeData()->urls().front().toLocalFile());
}

void MainWindow::restoreWindow() {
  const QSettings settings;
  if (!restoreGeometry(settings.value(QStringLiteral("window/geometry")).toByteArray())) {
    const QSize room = screen()->availableSize();
    resize(std::min(1440, room.width()), std::min(900, room.height()));
  }
  const QByteArray layout = settings.value(QStringLiteral("window/views")).toByteArray();
  if (!layout.isEmpty() && !views_->restoreLayout(layout)) views_->arrangeDefault();
  bench_.recorder().setLoop(settings.value(QStringLiteral("record/loop")).toBool());
}

void MainWindow::keepWindow() const {
  QSettings settings;
  settings.setValue(QStringLiteral("window/geometry"), saveGeometry());
  settings.setValue(QStringLiteral("window/views"), views_->layout());
  settings.setValue(QStringLiteral("record/loop"), bench_.recorder().loop());
  storeDisplay();
}

}  // namespace ovka::desktop
