#include "View.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QFontMetricsF>
#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>
#include <algorithm>
#include <array>
#include <cmath>

#include "Plot.h"
#include "ViewChoices.h"

namespace ovka::desktop {
namespace {

struct KindText {
  const char* title;
  const char* description;
};
constexpr std::array<KindText, display::kViewKinds> kKinds{{
    {"Raw wave", "The samples of each channel over the last seconds, in microvolts."},
    {"2D spectrum", "Strength over frequency, live, with average and peak hold."},
    {"EEG spectrum", "Every channel's spectrum laid out over the eight brain-wave bands."},
    {"Bar graph", "The power of the eight brain-wave bands as bars."},
    {"Waterfall", "Spectra over time as colours."},
    {"3D spectrum", "Spectra or coherence over time as a landscape, with the brain switch."},
    {"Newave", "Waves and bands over minutes."},
}};

}  // namespace

QString viewTitle(ViewKind kind) {
  return QString::fromUtf8(kKinds[static_cast<std::size_t>(kind)].title);
}

View::View(ViewKind kind, Feed& feed, QWidget* parent)
    : QWidget(parent), kind_(kind), feed_(feed), choice_(display::keptChoice(kind)) {
  theme_ = Theme::current(palette());
  setObjectName(QStringLiteral("view") + viewTitle(kind).remove(' '));
  setAccessibleName(title());
  setAccessibleDescription(QString::fromUtf8(kKinds[static_cast<std::size_t>(kind)].description));
  setAttribute(Qt::WA_OpaquePaintEvent);
  setFocusPolicy(Qt::StrongFocus);
  setMouseTracking(true);
  connect(&feed_, &Feed::pulled, this, &View::onPulled);
  connect(&feed_, &Feed::settingsBrought, this, &View::restoreSettings);
  connect(&feed_, &Feed::engineChanged, this, [this] {
    // A new engine puts the variables back to their defaults; what the user sees stays, unless
    // somebody brought other settings along with it.
    if (display::broughtX == brought_)
      saveSettings();
    else
      restoreSettings();
    forget();
    refresh();
  });
}

View::~View() = default;

QString View::title() const {
  return viewTitle(kind_);
}

void View::setChoice(const ViewChoice& choice) {
  if (choice == choice_) return;
  choice_ = choice;
  saveSettings();
  refresh();
  Q_EMIT choiceChanged();
}

void View::setFrozen(bool frozen) {
  ViewChoice changed = choice_;
  changed.freeze = frozen ? 1 : 0;
  setChoice(changed);
}

void View::setChannels(int mask) {
  ViewChoice changed = choice_;
  changed.channels = mask & 0xF;
  setChoice(changed);
}

void View::setGain(double gain) {
  ViewChoice changed = choice_;
  if (display::assign(changed, viewField("gain"), gain)) setChoice(changed);
}

void View::setRange(double lowF, double highF) {
  ViewChoice changed = choice_;
  if (highF > lowF && display::assign(changed, viewField("lowF"), lowF) &&
      display::assign(changed, viewField("highF"), highF)) {
    setChoice(changed);
  }
}

void View::setSeconds(double seconds) {
  ViewChoice changed = choice_;
  if (display::assign(changed, viewField("seconds"), seconds)) setChoice(changed);
}

void View::setMode(int mode) {
  if (mode < 0 || mode >= modes().size()) return;
  ViewChoice changed = choice_;
  changed.mode = mode;
  setChoice(changed);
}

void View::startHoldsAnew() {
  resetHolds();
  refresh();
}

void View::saveSettings() const {
  display::keepChoice(kind_, choice_);
}

void View::restoreSettings() {
  brought_ = display::broughtX;
  choice_ = display::keptChoice(kind_);
  // Documents bring numbers; what fits no axis or list is not drawn by.
  if (!(choice_.highF > choice_.lowF)) choice_.lowF = 0;
  if (choice_.mode >= std::max<qsizetype>(modes().size(), 1)) choice_.mode = 0;
  theme_ = Theme::current(palette());
  refresh();
  Q_EMIT choiceChanged();
}

QStringList View::readOut(QPointF /*at*/) const {
  return {};
}

QFont View::labelFont(double times) const {
  const double fitting = std::min(width() / 46.0, height() / 19.0);
  const double size = std::clamp(fitting, 11.0, 22.0) *
                      std::clamp(static_cast<double>(display::textScaleX.get()), 0.5, 3.0);
  QFont font = this->font();
  font.setPixelSize(std::max(static_cast<int>(std::lround(size * times)), 8));
  return font;
}

QString View::notice() const {
  if (!feed_.frame().alive) return QStringLiteral("No source");
  if ((choice_.channels & 0xF) == 0) return QStringLiteral("No channel chosen");
  return {};
}

void View::onPulled() {
  if (!isVisible()) return;
  if (frozen()) return;
  ask(feed_);
  if (take(feed_.frame())) update();
}

void View::refresh() {
  feed_.lookAgain();
  prepare();
  update();
}

void View::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  if (const QString text = notice(); !text.isEmpty()) {
    painter.fillRect(rect(), theme_.ground);
    painter.setFont(labelFont(1.2));
    painter.setPen(theme_.quietText);
    painter.drawText(rect(), Qt::AlignCenter, text);
    return;
  }
  paint(painter);
  paintOver(painter);
}

void View::paintOver(QPainter& painter) {
  if (cursor_) paintCursor(painter);
  if (!frozen()) return;
  const QString text = QStringLiteral("Frozen");
  const QFont font = labelFont();
  const double width = QFontMetricsF(font).horizontalAdvance(text) + 18;
  paintLabel(painter, theme_, font, QPointF(this->width() - width, 3), text, theme_.warning);
}

void View::paintCursor(QPainter& painter) {
  const QRectF area = readable();
  if (!area.contains(*cursor_)) return;
  const QStringList lines = readOut(*cursor_);
  if (lines.isEmpty()) return;
  QColor line = theme_.text;
  line.setAlpha(120);
  painter.setPen(line);
  painter.drawLine(QPointF(std::round(cursor_->x()) + 0.5, area.top()),
                   QPointF(std::round(cursor_->x()) + 0.5, area.bottom()));
  const QFont font = labelFont();
  const QFontMetricsF metrics(font);
  double width = 0;
  for (const QString& text : lines) width = std::max(width, metrics.horizontalAdvance(text));
  const double height = static_cast<double>(lines.size()) * metrics.height() + 8;
  const bool left = cursor_->x() + width + 30 > area.right();
  const QPointF place(left ? cursor_->x() - width - 22 : cursor_->x() + 10,
                      std::clamp(cursor_->y() - height / 2, area.top(),
                                 std::max(area.bottom() - height, area.top())));
  paintLabel(painter, theme_, font, place, lines.join('\n'), theme_.text);
}

void View::mouseMoveEvent(QMouseEvent* event) {
  cursor_ = event->position();
  update();
  QWidget::mouseMoveEvent(event);
}

void View::leaveEvent(QEvent* event) {
  cursor_.reset();
  update();
  QWidget::leaveEvent(event);
}

/// Up and down magnify; with Ctrl the axis grows or shrinks instead.
void View::wheelEvent(QWheelEvent* event) {
  const double turns = event->angleDelta().y() / 120.0;
  event->accept();
  if (turns == 0) return;
  const double factor = std::pow(1.25, turns);
  if ((event->modifiers() & Qt::ControlModifier) == 0) {
    setGain(std::clamp(static_cast<double>(choice_.gain) * factor, 0.01, 1000.0));
  } else if (uses("seconds")) {
    setSeconds(std::clamp(static_cast<double>(choice_.seconds) / factor, 0.5, 14400.0));
  } else if (uses("highF")) {
    const auto low = static_cast<double>(choice_.lowF);
    setRange(low, std::clamp(static_cast<double>(choice_.highF) / factor, low + 1, 1000.0));
  }
}

void View::keyPressEvent(QKeyEvent* event) {
  const int channel = event->key() - Qt::Key_1;
  switch (event->key()) {
    case Qt::Key_F:
      setFrozen(!frozen());
      return;
    case Qt::Key_R:
      startHoldsAnew();
      return;
    case Qt::Key_Plus:
    case Qt::Key_Equal:
      setGain(static_cast<double>(choice_.gain) * 1.25);
      return;
    case Qt::Key_Minus:
      setGain(static_cast<double>(choice_.gain) / 1.25);
      return;
    case Qt::Key_1:
    case Qt::Key_2:
    case Qt::Key_3:
    case Qt::Key_4:
      setChannels(choice_.channels ^ (1 << channel));
      return;
    case Qt::Key_M:
      setMode(modes().isEmpty() ? 0 : (choice_.mode + 1) % static_cast<int>(modes().size()));
      return;
    default:
      QWidget::keyPressEvent(event);
  }
}

void View::contextMenuEvent(QContextMenuEvent* event) {
  QMenu menu(this);
  fillMenu(menu);
  if (event->reason() == QContextMenuEvent::Keyboard) menu.setActiveAction(menu.actions().front());
  menu.exec(event->globalPos());
}

void View::changeEvent(QEvent* event) {
  if (event->type() == QEvent::PaletteChange || event->type() == QEvent::FontChange) {
    theme_ = Theme::current(palette());
    refresh();
  }
  QWidget::changeEvent(event);
}

void View::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  feed_.lookAgain();
  prepare();
}

void View::showEvent(QShowEvent* event) {
  QWidget::showEvent(event);
  theme_ = Theme::current(palette());
  refresh();
}

}  // namespace ovka::desktop
