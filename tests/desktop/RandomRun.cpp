#include "RandomRun.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QContextMenuEvent>
#include <QDockWidget>
#include <QDoubleSpinBox>
#include <QFileDialog>
#include <QLineEdit>
#include <QListWidget>
#include <QMenuBar>
#include <QPointer>
#include <QProgressDialog>
#include <QTimer>
#include <array>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <malloc.h>
#include <random>
#include <unistd.h>

#include "AmplifierVariables.h"
#include "BufferVariables.h"
#include "HelpWindow.h"
#include "LossCounters.h"
#include "ShellFixture.h"
#include "ViewDocks.h"

namespace ovka::testing {
namespace {

/// Everything that the virtual amplifier and the chain must agree on.
std::array<std::int64_t, 6> lineSettings() {
  return {buffer::SelectDevice,     buffer::DeviceConfig,
          amplifier::HighSpeedX,    amplifier::oldBluetooth,
          amplifier::FixedFramingX, static_cast<std::int64_t>(buffer::SampleSpeed)};
}

}  // namespace

RandomRun::RandomRun(unsigned seed) : random_(seed) {
  agreed_ = lineSettings();
  QObject::connect(&shell_.bench, &Workbench::engineChanged, &shell_.window,
                   [this] { agreed_ = lineSettings(); });
  QObject::connect(&housekeeper_, &QTimer::timeout, &shell_.window, [this] { tidy(); });
  housekeeper_.start(70);
  shell_.window.show();
  shell_.bench.feed().start();
}

void RandomRun::press(double seconds) {
  struct Move {
    const char* name;
    void (RandomRun::*make)();
    int weight;
  };
  static constexpr std::array<Move, 12> kMoves{{{"arranging views", &RandomRun::arrangeViews, 10},
                                                {"dragging a view", &RandomRun::dragView, 4},
                                                {"full screen", &RandomRun::fullScreen, 4},
                                                {"resizing", &RandomRun::resizeSomething, 6},
                                                {"handling a view", &RandomRun::handleView, 14},
                                                {"the set-up window", &RandomRun::setUp, 5},
                                                {"a control", &RandomRun::pressControl, 25},
                                                {"a menu", &RandomRun::chooseFromMenu, 8},
                                                {"the row of buttons", &RandomRun::pressRow, 14},
                                                {"another source", &RandomRun::changeSource, 1},
                                                {"a document", &RandomRun::handleDocument, 4},
                                                {"going somewhere", &RandomRun::goSomewhere, 6}}};
  std::vector<int> weights;
  for (const Move& move : kMoves) weights.push_back(move.weight);
  std::discrete_distribution<std::size_t> chance(weights.begin(), weights.end());
  QElapsedTimer time;
  time.start();
  while (static_cast<double>(time.elapsed()) < seconds * 1000) {
    const Move& move = kMoves[chance(random_)];
    // Nobody reaches past a question.
    if (QApplication::activeModalWidget() == nullptr) {
      (this->*move.make)();
      ++presses_;
    }
    QTest::qWait(oneIn(12) ? 250 : upTo(25));
    countLosses(move.name);
  }
}

void RandomRun::arrangeViews() {
  QDockWidget& dock = views().dock(anyView());
  switch (upTo(8)) {
    case 0:
      dock.setFloating(!dock.isFloating());
      return;
    case 1: {
      QDockWidget& other = views().dock(anyView());
      if (&other != &dock && !other.isFloating() && !dock.isFloating())
        views().tabifyDockWidget(&other, &dock);
      return;
    }
    case 2: {
      QDockWidget& other = views().dock(anyView());
      const auto way = oneIn(2) ? Qt::Horizontal : Qt::Vertical;
      if (&other != &dock && !other.isFloating() && !dock.isFloating())
        views().splitDockWidget(&other, &dock, way);
      return;
    }
    case 3:
      static_cast<void>(views().restoreLayout(views().layout()));
      return;
    case 4:
      if (oneIn(3)) views().arrangeDefault();
      return;
    default:
      dock.setVisible(dock.isHidden());
  }
}

void RandomRun::fullScreen() {
  if (oneIn(2))
    views().showFullScreen(anyView(), upTo(3) - 1);
  else
    views().leaveFullScreen();
}

void RandomRun::resizeSomething() {
  QDockWidget& dock = views().dock(anyView());
  if (dock.isFloating()) {
    dock.resize(40 + upTo(900), 30 + upTo(700));
    return;
  }
  switch (upTo(4)) {
    case 0:
      shell_.window.showMinimized();
      QTest::qWait(30);
      shell_.window.showNormal();
      return;
    case 1:
      views().resizeDocks({&dock}, {50 + upTo(600)}, oneIn(2) ? Qt::Horizontal : Qt::Vertical);
      return;
    default:
      shell_.window.resize(500 + upTo(1100), 400 + upTo(800));
  }
}

/// A view by its title: pulled about, perhaps detached or docked on the way.
void RandomRun::dragView() {
  QDockWidget& dock = views().dock(anyView());
  QWidget* title = dock.titleBarWidget();
  // Nobody presses what does not show; the toolkit does not bear it either.
  if (!title->isVisible()) return;
  QPoint place(upTo(title->width() / 3 + 1), upTo(title->height() + 1));
  QTest::mousePress(title, Qt::LeftButton, {}, place);
  for (int i = upTo(5); i >= 0; --i) {
    place += QPoint(upTo(400) - 200, upTo(400) - 200);
    QTest::mouseMove(title, place);
    if (oneIn(2)) QTest::qWait(upTo(60));
  }
  QTest::mouseRelease(title, Qt::LeftButton, {}, place);
}

void RandomRun::handleView() {
  View& view = views().view(anyView());
  if (!view.isVisible()) return;
  const QPoint place(upTo(view.width() + 1), upTo(view.height() + 1));
  if (oneIn(4)) {
    constexpr std::array<Qt::Key, 9> kKeys{Qt::Key_F,     Qt::Key_R, Qt::Key_Plus,
                                           Qt::Key_Minus, Qt::Key_1, Qt::Key_2,
                                           Qt::Key_3,     Qt::Key_4, Qt::Key_M};
    QTest::keyClick(&view, kKeys[static_cast<std::size_t>(upTo(9))]);
  } else if (oneIn(2)) {
    QWheelEvent wheel(place, view.mapToGlobal(place), {}, {0, 120 * (upTo(9) - 4)}, Qt::NoButton,
                      oneIn(2) ? Qt::ControlModifier : Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(&view, &wheel);
  } else if (oneIn(3)) {
    // Its menu blocks until the housekeeper closes it.
    QContextMenuEvent menu(QContextMenuEvent::Mouse, place, view.mapToGlobal(place));
    QApplication::sendEvent(&view, &menu);
  } else {
    QTest::mousePress(&view, Qt::LeftButton, {}, place);
    QTest::mouseMove(&view, place + QPoint(upTo(80) - 40, upTo(80) - 40));
    QTest::mouseRelease(&view, Qt::LeftButton, {}, place);
  }
}

/// Any page of any window that has pages.
void RandomRun::setUp() {
  QDialog* const dialog = anyOf(setUps());
  if (oneIn(4)) {
    dialog->hide();
    return;
  }
  auto* pages = dialog->findChild<QListWidget*>("pages");
  pages->setCurrentRow(upTo(pages->count()));
  dialog->show();
}

QList<QDialog*> RandomRun::setUps() {
  QList<QDialog*> found;
  for (QDialog* each :
       shell_.window.findChildren<QDialog*>(QString(), Qt::FindDirectChildrenOnly)) {
    if (each->findChild<QListWidget*>("pages") != nullptr) found << each;
  }
  return found;
}

/// Any control of the page that is in front; also those of the views' titles.
void RandomRun::pressControl() {
  QDialog* const dialog = anyOf(setUps());
  const bool inSetup = dialog->isVisible() && !oneIn(4);
  QWidget& place = inSetup ? static_cast<QWidget&>(*dialog) : views();
  QList<QWidget*> controls;
  for (QWidget* each : place.findChildren<QWidget*>()) {
    // Hours of samples are memory that would have to be told from a leak.
    const bool hours =
        each->objectName().startsWith("setMaxTime") && each->objectName().contains("hAction");
    if (each->isVisible() && each->isEnabled() && !hours) controls << each;
  }
  QWidget* const chosen = anyOf(controls);
  if (auto* button = qobject_cast<QAbstractButton*>(chosen)) {
    button->click();
  } else if (auto* list = qobject_cast<QComboBox*>(chosen); list != nullptr && list->count() > 0) {
    list->setCurrentIndex(upTo(list->count()));
    Q_EMIT list->activated(list->currentIndex());
  } else if (auto* number = qobject_cast<QDoubleSpinBox*>(chosen)) {
    const double wide = std::min(number->maximum(), number->minimum() + 1000);
    number->setValue(oneIn(4) ? number->maximum()
                              : number->minimum() + (wide - number->minimum()) * upTo(1000) / 1000);
  } else if (auto* text = qobject_cast<QLineEdit*>(chosen);
             text != nullptr && !text->isReadOnly()) {
    text->insert(oneIn(2) ? QStringLiteral("x1") : QStringLiteral("αβ/.."));
    QTest::keyClick(text, Qt::Key_Return);
  }
}

void RandomRun::chooseFromMenu() {
  QList<QAction*> actions;
  for (QMenu* menu : shell_.window.menuBar()->findChildren<QMenu*>()) actions << menu->actions();
  QAction* const chosen = anyOf(actions);
  if (chosen == nullptr || !chosen->isEnabled() || chosen->objectName() == "quit") return;
  chosen->trigger();
}

void RandomRun::pressRow() {
  const auto buttons = shell_.window.findChildren<QPushButton*>();
  for (const char* name : {"record", "pause", "live", "loop", "panic"}) {
    if (!oneIn(4)) continue;
    auto* button = shell_.window.findChild<QPushButton*>(name);
    if (button == nullptr || !button->isEnabled()) continue;
    button->click();
    return;
  }
}

void RandomRun::changeSource() {
  SourceChoice choice;
  choice.kind = std::array{SourceChoice::Kind::Demo, SourceChoice::Kind::Demo,
                           SourceChoice::Kind::None, SourceChoice::Kind::Serial,
                           SourceChoice::Kind::Capture}[static_cast<std::size_t>(upTo(5))];
  // Neither is there: the reason must be told, and the window go on without an input.
  if (choice.kind == SourceChoice::Kind::Serial) choice.paths = {shell_.folder.at("no line")};
  if (choice.kind == SourceChoice::Kind::Capture) choice.paths = {shell_.folder.at("none.cap")};
  shell_.window.useSource(choice);
}

void RandomRun::handleDocument() {
  const QString path = document();
  switch (upTo(4)) {
    case 0:
      shell_.window.documents().newDocument();
      return;
    case 1:
      if (QFileInfo::exists(path)) shell_.window.openFile(path);
      return;
    default:
      shell_.window.documents().saveTo(path);
  }
}

void RandomRun::goSomewhere() {
  Recorder& recorder = shell_.bench.recorder();
  const RecordState state = recorder.state();
  const std::int64_t length = recorder.end() - recorder.start();
  if ((state == RecordState::Review || state == RecordState::Playing) && length > 0) {
    const std::int64_t point =
        recorder.start() +
        static_cast<std::int64_t>(random_() % static_cast<std::uint64_t>(length));
    recorder.seek(point);
    if (oneIn(3)) recorder.setStretch(point - upTo(200), point + upTo(200));
  } else if (auto* note = shell_.window.findChild<QLineEdit*>("note");
             note != nullptr && note->isVisible())
    QTest::keyClick(note, Qt::Key_Return);
}

/// What stands in the way: menus that block, questions, file dialogs, helps.
void RandomRun::tidy() {
  if (QWidget* menu = QApplication::activePopupWidget()) {
    menu->close();
    return;
  }
  for (QWidget* widget : QApplication::topLevelWidgets()) {
    if (!widget->isVisible()) continue;
    if (auto* files = qobject_cast<QFileDialog*>(widget)) {
      files->reject();
    } else if (auto* box = qobject_cast<QMessageBox*>(widget)) {
      answer(*box);
    } else if (auto* progress = qobject_cast<QProgressDialog*>(widget)) {
      if (oneIn(20)) Q_EMIT progress->canceled();
    } else if (dynamic_cast<HelpWindow*>(widget) != nullptr && oneIn(10)) {
      widget->close();
    } else {
      continue;
    }
    return;
  }
}

void RandomRun::answer(QMessageBox& box) {
  const QList<QAbstractButton*> buttons = box.buttons();
  if (buttons.isEmpty()) return;
  anyOf(buttons)->click();
}

/// The line is slow enough that a busy machine loses nothing of it.
void RandomRun::countLosses(const char* after) {
  Engine* engine = shell_.bench.engine();
  if (engine == nullptr || shell_.bench.opening() || !lost_.empty()) return;
  if (shell_.bench.source().kind != SourceChoice::Kind::Demo || lineSettings() != agreed_) {
    agreed_ = {};  // until another engine: what stands on the line is no longer what is read
    return;
  }
  if (amplifier::FixedFramingX != 1) lost_ = std::string("the demo's framing after ") + after;
  for (const LossCause& cause : kLossCauses) {
    // A thread that stood still for a moment is no loss.
    if (cause.count == &LossCounters::gapPoints || buffer::SampleSpeed > 240) continue;
    const auto count = (engine->losses().*cause.count).get();
    if (count != 0) lost_ = std::to_string(count) + " " + cause.text + " after " + after;
  }
}

bool RandomRun::putInOrder() {
  bool done = false;
  // Whatever is still asked is answered first.
  if (!shell_.waitFor([] { return QApplication::activeModalWidget() == nullptr; })) return false;
  if (!shell_.settle()) return false;
  for (QWidget* widget : QApplication::topLevelWidgets()) {
    if (dynamic_cast<HelpWindow*>(widget) != nullptr) widget->close();
  }
  for (QDialog* dialog : setUps()) dialog->hide();
  views().arrangeDefault();
  shell_.window.showNormal();
  shell_.window.resize(1200, 700);
  shell_.bench.recorder().noteDiscarded();
  SourceChoice demo;
  demo.kind = SourceChoice::Kind::Demo;
  demo.settings = {"SelectDevice=6", "DeviceConfig=3",  "HighSpeedX=0",
                   "oldBluetooth=0", "FixedFramingX=1", "SampleSpeed=120",
                   "fftp=1024",      "maxploop=72000",  "samplingModeX=4"};
  shell_.bench.openSource(demo, [&done](const QString&) { done = true; });
  if (!shell_.waitFor([&done] { return done; }) || !shell_.settle()) return false;
  QTest::qWait(1500);
  return shell_.bench.engine() != nullptr;
}

}  // namespace ovka::testing
