#include "ScrubBar.h"

#include <QHelpEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>
#include <algorithm>
#include <cmath>

#include "BufferVariables.h"
#include "Look.h"

namespace ovka::desktop {
namespace {

constexpr double kSide = 16;  // left and right of the line

}  // namespace

ScrubBar::ScrubBar(Workbench& bench, QWidget* parent) : QWidget(parent), bench_(bench) {
  setObjectName(QStringLiteral("scrub"));
  setAccessibleName(QStringLiteral("Position in the recording"));
  setFocusPolicy(Qt::StrongFocus);
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  setCursor(Qt::PointingHandCursor);
  hide();
}

void ScrubBar::refresh() {
  const Recorder& recorder = bench_.recorder();
  const RecordState state = recorder.state();
  const bool standing = state == RecordState::Review || state == RecordState::Playing;
  setVisible(standing && recorder.end() > recorder.start());
  if (!isVisible()) return;
  TypeTextHere& annotations = bench_.engine()->annotations();
  const std::int64_t now = buffer::ploop;
  const std::uint64_t revision = annotations.revision();
  if (start_ == recorder.start() && end_ == recorder.end() && now_ == now &&
      revision_ == revision && first_ == recorder.stretchFirst() && last_ == recorder.stretchEnd())
    return;
  first_ = recorder.stretchFirst();
  last_ = recorder.stretchEnd();
  start_ = recorder.start();
  end_ = recorder.end();
  now_ = now;
  if (revision_ != revision) {
    marks_.clear();
    for (const TimedText& text : annotations.list())
      marks_.push_back({text.point, QString::fromStdString(text.text)});
    revision_ = revision;
  }
  const auto speed = static_cast<double>(buffer::SampleSpeed.get());
  setAccessibleDescription(clockText(static_cast<double>(now_ - start_) / speed) +
                           QStringLiteral(" of ") +
                           clockText(static_cast<double>(end_ - start_) / speed));
  update();
}

double ScrubBar::xOf(std::int64_t point) const {
  const auto length = static_cast<double>(std::max<std::int64_t>(end_ - start_, 1));
  const double part = static_cast<double>(point - start_) / length;
  return kSide + std::clamp(part, 0.0, 1.0) * (width() - 2 * kSide);
}

std::int64_t ScrubBar::pointAt(double x) const {
  const double part = std::clamp((x - kSide) / std::max(width() - 2 * kSide, 1.0), 0.0, 1.0);
  return start_ + std::llround(part * static_cast<double>(end_ - start_));
}

void ScrubBar::paintEvent(QPaintEvent* /*event*/) {
  const Theme theme = look::theme();
  const look::Colors colors = look::colors(theme);
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.fillRect(rect(), colors.raised);
  const double y = 15;
  painter.setPen(Qt::NoPen);
  painter.setBrush(theme.grid);
  painter.drawRoundedRect(QRectF(kSide, y - 3, width() - 2 * kSide, 6), 3, 3);
  painter.setBrush(colors.accent);
  painter.drawRoundedRect(QRectF(kSide, y - 3, xOf(now_) - kSide, 6), 3, 3);
  if (first_ < last_) {
    QColor stretch = colors.accent;
    stretch.setAlphaF(0.25F);
    painter.setBrush(stretch);
    painter.drawRect(QRectF(QPointF(xOf(first_), y - 10), QPointF(xOf(last_), y + 10)));
    painter.setBrush(colors.accent);
    for (const std::int64_t side : {first_, last_})
      painter.drawRect(QRectF(xOf(side) - 1.5, y - 12, 3, 24));
  }
  painter.setBrush(theme.warning);
  for (const Mark& mark : marks_) painter.drawRect(QRectF(xOf(mark.point) - 1, y - 8, 2, 16));
  painter.setBrush(theme.text);
  painter.setPen(QPen(colors.raised, 2));
  painter.drawEllipse(QPointF(xOf(now_), y), 8, 8);
  if (hasFocus()) {
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(colors.accent, 1.5));
    painter.drawEllipse(QPointF(xOf(now_), y), 10, 10);
  }
  painter.setFont(look::font(look::Type::Small));
  painter.setPen(theme.quietText);
  const auto speed = static_cast<double>(buffer::SampleSpeed.get());
  const QRectF below(kSide, y + 9, width() - 2 * kSide, height() - y - 9);
  painter.drawText(below, Qt::AlignLeft | Qt::AlignVCenter,
                   clockText(static_cast<double>(now_ - start_) / speed));
  painter.drawText(below, Qt::AlignRight | Qt::AlignVCenter,
                   clockText(static_cast<double>(end_ - start_) / speed));
  // The note that stands at this moment, or the last one before it.
  const auto after = std::upper_bound(marks_.begin(), marks_.end(), now_,
                                      [](std::int64_t at, const Mark& m) { return at < m.point; });
  if (after == marks_.begin()) return;
  painter.setPen(theme.text);
  const QString text = painter.fontMetrics().elidedText(std::prev(after)->text, Qt::ElideRight,
                                                        std::max(width() - 200, 40));
  painter.drawText(below, Qt::AlignHCenter | Qt::AlignVCenter, text);
}

const ScrubBar::Mark* ScrubBar::markNear(double x) const {
  const Mark* nearest = nullptr;
  double distance = 6;
  for (const Mark& mark : marks_) {
    if (std::abs(xOf(mark.point) - x) >= distance) continue;
    distance = std::abs(xOf(mark.point) - x);
    nearest = &mark;
  }
  return nearest;
}

void ScrubBar::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return;
  pulled_ = pointAt(event->position().x());
  if (event->modifiers() & Qt::ShiftModifier) return;
  const Mark* mark = markNear(event->position().x());
  bench_.recorder().seek(mark != nullptr ? mark->point : pointAt(event->position().x()));
  refresh();
}

void ScrubBar::mouseMoveEvent(QMouseEvent* event) {
  if (!(event->buttons() & Qt::LeftButton)) return;
  if (event->modifiers() & Qt::ShiftModifier) return pullStretch(event->position().x());
  bench_.recorder().seek(pointAt(event->position().x()));
  refresh();
}

void ScrubBar::pullStretch(double x) {
  const std::int64_t here = pointAt(x);
  bench_.recorder().setStretch(std::min(pulled_, here), std::max(pulled_, here));
  refresh();
}

void ScrubBar::keyPressEvent(QKeyEvent* event) {
  const auto second = static_cast<std::int64_t>(buffer::SampleSpeed.get());
  const std::int64_t step = event->modifiers() & Qt::ShiftModifier ? 10 * second : second;
  switch (event->key()) {
    case Qt::Key_Left:
      bench_.recorder().seek(buffer::ploop - step);
      break;
    case Qt::Key_Right:
      bench_.recorder().seek(buffer::ploop + step);
      break;
    case Qt::Key_BracketLeft:
      bench_.recorder().setStretch(now_, last_ > now_ ? last_ : end_);
      break;
    case Qt::Key_BracketRight:
      bench_.recorder().setStretch(first_ < now_ ? first_ : start_, now_);
      break;
    case Qt::Key_Escape:
      bench_.recorder().setStretch(0, 0);
      break;
    case Qt::Key_Home:
      bench_.recorder().seek(start_);
      break;
    case Qt::Key_End:
      bench_.recorder().seek(end_);
      break;
    default:
      QWidget::keyPressEvent(event);
      return;
  }
  refresh();
}

bool ScrubBar::event(QEvent* event) {
  if (event->type() == QEvent::ToolTip) {
    auto* help = static_cast<QHelpEvent*>(event);
    const Mark* mark = markNear(help->pos().x());
    const auto speed = static_cast<double>(buffer::SampleSpeed.get());
    QString text = mark != nullptr
                       ? mark->text
                       : clockText(static_cast<double>(pointAt(help->pos().x()) - start_) / speed);
    text += first_ < last_ ? QStringLiteral("\nThe stretch is repeated; Escape lets it go.")
                           : QStringLiteral("\nPull with Shift for a stretch to repeat.");
    QToolTip::showText(help->globalPos(), text, this);
    return true;
  }
  return QWidget::event(event);
}

}  // namespace ovka::desktop
