#include "ViewDocks.h"

#include <QAction>
#include <QActionGroup>
#include <QApplication>
#include <QComboBox>
#include <QCursor>
#include <QDockWidget>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QMouseEvent>
#include <QScreen>
#include <QTimer>
#include <QToolButton>
#include <QVBoxLayout>
#include <QWindow>
#include <algorithm>
#include <utility>

#include "Look.h"

namespace ovka::desktop {
namespace {

ViewKind kindOf(std::size_t index) {
  return static_cast<ViewKind>(index);
}

QToolButton* titleButton(const char* sign, const QString& name) {
  auto* button = new QToolButton;
  button->setProperty("sign", QLatin1String(sign));
  button->setToolTip(name);
  button->setAccessibleName(name);
  button->setAutoRaise(true);
  button->setFocusPolicy(Qt::TabFocus);
  return button;
}

/// A view's title: its name and buttons always, its controls where there is room; the view's menu
/// has them all.
class Title final : public QWidget {
 public:
  Title(View& view, const QList<QToolButton*>& buttons) {
    setObjectName(QStringLiteral("dockTitle"));
    setAttribute(Qt::WA_StyledBackground);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(12, 4, 6, 4);
    row->setSpacing(4);
    name_ = new QLabel(view.title());
    name_->setFont(look::font(look::Type::Strong));
    row->addWidget(name_);
    row->addStretch(1);
    controls_ = view.makeControls(this);
    row->addWidget(controls_);
    row->addSpacing(look::kGrid);
    for (QToolButton* button : buttons) row->addWidget(button);
    buttons_ = static_cast<int>(buttons.size()) * 36;
  }

  [[nodiscard]] QSize minimumSizeHint() const override {
    return {name_->sizeHint().width() + buttons_ + 2 * look::kGrid,
            QWidget::minimumSizeHint().height()};
  }

 protected:
  /// What does not fit goes, lists from the last one on, then everything. Only another width asks
  /// for that: hiding something lays out anew, which would go on for ever.
  void resizeEvent(QResizeEvent* event) override {
    QWidget::resizeEvent(event);
    if (fitted_ == width()) return;
    fitted_ = width();
    QList<QComboBox*> lists = controls_->findChildren<QComboBox*>();
    for (QComboBox* list : lists) list->show();
    const int room = width() - minimumSizeHint().width() - 2 * look::kGrid;
    while (!lists.isEmpty() && controls_->sizeHint().width() > room) {
      lists.takeLast()->hide();
      controls_->layout()->invalidate();
    }
    controls_->setVisible(controls_->sizeHint().width() <= room);
  }

 private:
  QLabel* name_;
  QWidget* controls_;
  int buttons_ = 0;
  int fitted_ = -1;  ///< width that the controls were chosen for
};

}  // namespace

ViewDocks::ViewDocks(Workbench& bench, QWidget* parent) : QMainWindow(parent), bench_(bench) {
  // As part of the window, not as a window of its own.
  setWindowFlags(Qt::Widget);
  setObjectName(QStringLiteral("views"));
  setDockNestingEnabled(true);
  setDockOptions(AllowNestedDocks | AllowTabbedDocks);
  setTabPosition(Qt::AllDockWidgetAreas, QTabWidget::North);
  note_ = new QTimer(this);
  note_->setSingleShot(true);
  note_->setInterval(100);
  connect(note_, &QTimer::timeout, this, &ViewDocks::noteArrangement);
  for (std::size_t i = 0; i < display::kViewKinds; ++i) {
    View* view = makeView(kindOf(i), bench_.feed());
    auto* dock = new QDockWidget(viewTitle(kindOf(i)));
    dock->setObjectName(QStringLiteral("view%1").arg(i));
    view->setAccessibleName(viewTitle(kindOf(i)));
    view->setFocusPolicy(Qt::StrongFocus);
    views_[i] = view;
    docks_[i] = dock;
    dock->setTitleBarWidget(makeTitle(kindOf(i)));
    dock->setWidget(view);
    dock->installEventFilter(this);
    connect(dock, &QDockWidget::visibilityChanged, note_, qOverload<>(&QTimer::start));
  }
  connect(&bench_.feed(), &Feed::settingsBrought, this, &ViewDocks::takeBrought);
  connect(&bench_, &Workbench::changed, &bench_.feed(), &Feed::lookAgain);
  arrangeDefault();
  applyLook();
}

ViewDocks::~ViewDocks() {
  endDrag();
  leaveFullScreen();
}

QWidget* ViewDocks::makeTitle(ViewKind kind) {
  QToolButton* full = titleButton("full", QStringLiteral("Full screen"));
  QToolButton* detach = titleButton("detach", QStringLiteral("Detach or dock"));
  QToolButton* close = titleButton("close", QStringLiteral("Close the view"));
  connect(full, &QToolButton::clicked, this, [this, kind] { showFullScreen(kind); });
  connect(detach, &QToolButton::clicked, this,
          [this, kind] { dock(kind).setFloating(!dock(kind).isFloating()); });
  connect(close, &QToolButton::clicked, this, [this, kind] { dock(kind).close(); });
  return new Title(view(kind), {full, detach, close});
}

/// The view that is pulled about by its title at the moment; nullptr: none.
QDockWidget* ViewDocks::dragged() const {
  auto* dock = qobject_cast<QDockWidget*>(QWidget::mouseGrabber());
  return std::ranges::find(docks_, dock) != docks_.end() ? dock : nullptr;
}

/// A view that is dragged lands where it is, and a border between views stays where it was pulled
/// to: the toolkit does not bear that views are arranged meanwhile.
void ViewDocks::endDrag() {
  const QPoint place = QCursor::pos();
  const auto release = [place](QWidget& held) {
    QMouseEvent event(QEvent::MouseButtonRelease, held.mapFromGlobal(place), place, Qt::LeftButton,
                      Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&held, &event);
  };
  if (QDockWidget* dock = dragged()) release(*dock);
  // Which border is held cannot be asked; the release means nothing while none is.
  release(*this);
}

bool ViewDocks::restoreLayout(const QByteArray& layout) {
  endDrag();
  return restoreState(layout, kLayoutVersion);
}

void ViewDocks::arrangeDefault() {
  endDrag();
  leaveFullScreen();
  for (QDockWidget* each : docks_) {
    each->setFloating(false);
    removeDockWidget(each);
  }
  using K = ViewKind;
  addDockWidget(Qt::LeftDockWidgetArea, &dock(K::RawWave));
  splitDockWidget(&dock(K::RawWave), &dock(K::Spectrum), Qt::Horizontal);
  splitDockWidget(&dock(K::RawWave), &dock(K::Waterfall), Qt::Vertical);
  splitDockWidget(&dock(K::Spectrum), &dock(K::BarGraph), Qt::Vertical);
  // The others wait behind the one that they resemble.
  tabifyDockWidget(&dock(K::Spectrum), &dock(K::EEGSpectrum));
  tabifyDockWidget(&dock(K::Waterfall), &dock(K::Spectrum3D));
  tabifyDockWidget(&dock(K::RawWave), &dock(K::Newave));
  for (const K kind : {K::RawWave, K::Spectrum, K::Waterfall, K::BarGraph}) dock(kind).show();
  for (const K kind : {K::EEGSpectrum, K::Spectrum3D, K::Newave}) dock(kind).hide();
  resizeDocks({&dock(K::RawWave), &dock(K::Spectrum)}, {10, 10}, Qt::Horizontal);
  resizeDocks({&dock(K::RawWave), &dock(K::Waterfall)}, {11, 9}, Qt::Vertical);
}

void ViewDocks::noteArrangement() {
  note_->stop();
  // What a document brought is not arranged yet; on full screen a view is away from its dock.
  if (display::broughtX != brought_ || stage_ != nullptr) return;
  // A view in somebody's hand leaves a gap that is no arrangement.
  if (bench_.desk().busy() || dragged() != nullptr) {
    note_->start();
    return;
  }
  for (std::size_t i = 0; i < display::kViewKinds; ++i) {
    const QDockWidget& dock = *docks_[i];
    display::ViewWindow& window = display::window(kindOf(i));
    window.open = dock.isHidden() ? 0 : 1;
    // Behind the tab of another one.
    window.front = dock.isVisible() && dock.visibleRegion().isEmpty() ? 1 : 0;
    window.width = dock.width();
    window.height = dock.height();
    window.x = dock.x();
    window.y = dock.y();
  }
  display::keepLayout(layout().toBase64().toStdString());
  remember();
}

void ViewDocks::remember() {
  noted_ = display::keptLayout();
  for (std::size_t i = 0; i < open_.size(); ++i) open_[i] = display::window(kindOf(i)).open != 0;
}

/// A document or preset says which windows were open; one that says nothing changes nothing.
void ViewDocks::takeBrought() {
  // A document at work brings group after group; a view in somebody's hand is put down first.
  if (bench_.desk().busy() || dragged() != nullptr) {
    QTimer::singleShot(note_->interval(), this, &ViewDocks::takeBrought);
    return;
  }
  brought_ = display::broughtX;
  const std::string kept = display::keptLayout();
  bool any = false;
  bool same = true;
  for (std::size_t i = 0; i < open_.size(); ++i) {
    const bool open = display::window(kindOf(i)).open != 0;
    any = any || open;
    same = same && open == open_[i];
  }
  if (kept == noted_ && same) return;
  const QByteArray layout = QByteArray::fromBase64(QByteArray::fromStdString(kept));
  if (any || !layout.isEmpty()) {
    leaveFullScreen();
    if (kept == noted_ || layout.isEmpty() || !restoreLayout(layout)) restoreWindows();
  }
  remember();
  note_->start();
}

/// Without a layout of this program: what is open, what is in front, and where detached ones lie.
void ViewDocks::restoreWindows() {
  for (std::size_t i = 0; i < display::kViewKinds; ++i) {
    const display::ViewWindow& window = display::window(kindOf(i));
    QDockWidget& dock = *docks_[i];
    const bool open = window.open != 0;
    if (dock.isHidden() == open) dock.setVisible(open);
    if (!open) continue;
    if (window.front == 0) dock.raise();
    if (dock.isFloating() && window.width > 0 && window.height > 0)
      dock.setGeometry(window.x, window.y, window.width, window.height);
  }
}

ViewKind ViewDocks::chosen() const {
  for (std::size_t i = 0; i < views_.size(); ++i) {
    if (views_[i]->hasFocus()) return kindOf(i);
  }
  for (std::size_t i = 0; i < views_.size(); ++i) {
    if (docks_[i]->isVisible()) return kindOf(i);
  }
  return ViewKind::RawWave;
}

void ViewDocks::showFullScreen(ViewKind kind, int screen) {
  endDrag();
  leaveFullScreen();
  const QList<QScreen*> screens = QGuiApplication::screens();
  stage_ = new QWidget(nullptr, Qt::Window);
  stage_->setObjectName(QStringLiteral("stage"));
  stage_->setWindowTitle(viewTitle(kind));
  stage_->setWindowIcon(look::appIcon());
  auto* column = new QVBoxLayout(stage_);
  column->setContentsMargins(0, 0, 0, 0);
  staged_ = kind;
  // The dock keeps its place while its view is away.
  auto* absent = new QLabel(QStringLiteral("On full screen; Escape brings it back."));
  absent->setAlignment(Qt::AlignCenter);
  dock(kind).setWidget(absent);
  column->addWidget(&view(kind));
  view(kind).show();
  stage_->installEventFilter(this);
  view(kind).installEventFilter(this);
  if (screen >= 0 && screen < screens.size())
    stage_->setGeometry(screens[screen]->geometry());
  else
    stage_->setGeometry(this->screen()->geometry());
  stage_->showFullScreen();
  view(kind).setFocus();
}

void ViewDocks::leaveFullScreen() {
  if (stage_ == nullptr) return;
  QWidget* stage = std::exchange(stage_, nullptr);
  view(staged_).removeEventFilter(this);
  QWidget* absent = dock(staged_).widget();
  dock(staged_).setWidget(&view(staged_));
  view(staged_).show();
  if (absent != &view(staged_)) absent->deleteLater();
  stage->removeEventFilter(this);
  stage->hide();
  stage->deleteLater();
}

bool ViewDocks::eventFilter(QObject* watched, QEvent* event) {
  const bool arranged = event->type() == QEvent::Resize || event->type() == QEvent::Move ||
                        event->type() == QEvent::ShowToParent ||
                        event->type() == QEvent::HideToParent;
  if (event->type() == QEvent::HideToParent && watched == dragged()) endDrag();
  if (arranged && qobject_cast<QDockWidget*>(watched) != nullptr) note_->start();
  if (stage_ != nullptr && event->type() == QEvent::KeyPress) {
    const int key = static_cast<QKeyEvent*>(event)->key();
    if (key == Qt::Key_Escape || key == Qt::Key_F11) {
      leaveFullScreen();
      return true;
    }
  }
  if (watched == stage_ && event->type() == QEvent::Close) {
    leaveFullScreen();
    return true;
  }
  return QMainWindow::eventFilter(watched, event);
}

void ViewDocks::fillMenu(QMenu& menu) {
  for (std::size_t i = 0; i < display::kViewKinds; ++i) {
    QAction* action = docks_[i]->toggleViewAction();
    action->setShortcut(QKeySequence(QStringLiteral("Ctrl+%1").arg(i + 1)));
    action->setShortcutContext(Qt::ApplicationShortcut);
    menu.addAction(action);
  }
  menu.addSeparator();
  for (std::size_t i = 0; i < display::kViewKinds; ++i) {
    QMenu* choices = menu.addMenu(QStringLiteral("%1: choices").arg(viewTitle(kindOf(i))));
    choices->setObjectName(QStringLiteral("choices%1").arg(i));
    connect(choices, &QMenu::aboutToShow, this,
            [this, choices, kind = kindOf(i)] { fillChoices(*choices, kind); });
  }
  menu.addSeparator();
  QAction* full = menu.addAction(QStringLiteral("Full screen"));
  full->setShortcut(QKeySequence(Qt::Key_F11));
  connect(full, &QAction::triggered, this, [this] {
    if (stage_ != nullptr)
      leaveFullScreen();
    else
      showFullScreen(chosen());
  });
  QMenu* screens = menu.addMenu(QStringLiteral("Full screen on"));
  connect(screens, &QMenu::aboutToShow, this, [this, screens] {
    screens->clear();
    const QList<QScreen*> all = QGuiApplication::screens();
    for (int i = 0; i < all.size(); ++i) {
      screens->addAction(QStringLiteral("%1: %2").arg(i + 1).arg(all[i]->name()), this,
                         [this, i] { showFullScreen(chosen(), i); });
    }
  });
  menu.addAction(QStringLiteral("Detach or dock the view"), this,
                 [this] { dock(chosen()).setFloating(!dock(chosen()).isFloating()); });
  menu.addAction(QStringLiteral("Standard arrangement"), this, &ViewDocks::arrangeDefault);
}

/// Everything of a view without a pointer.
void ViewDocks::fillChoices(QMenu& menu, ViewKind kind) {
  const auto own = Qt::FindDirectChildrenOnly;
  qDeleteAll(menu.findChildren<QMenu*>(QString(), own));
  qDeleteAll(menu.findChildren<QActionGroup*>(QString(), own));
  menu.clear();
  menu.addAction(QStringLiteral("To the front"), this, [this, kind] {
    dock(kind).show();
    dock(kind).raise();
    view(kind).setFocus();
  });
  menu.addAction(QStringLiteral("To the back"), this, [this, kind] {
    const QList<QDockWidget*> others = tabifiedDockWidgets(&dock(kind));
    if (!others.isEmpty()) others.front()->raise();
    if (dock(kind).isFloating()) dock(kind).lower();
  });
  menu.addSeparator();
  view(kind).fillMenu(menu);
}

void ViewDocks::applyLook() {
  const QColor color = look::theme().quietText;
  for (QToolButton* button : findChildren<QToolButton*>()) {
    const QString sign = button->property("sign").toString();
    if (!sign.isEmpty()) button->setIcon(look::icon(sign, color));
  }
  // Their controls wear the colours of the theme.
  for (View* each : views_) Q_EMIT each->choiceChanged();
}

}  // namespace ovka::desktop
