#include <QActionGroup>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QToolButton>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>
#include <limits>

#include "Plot.h"
#include "Spectrum3DView.h"
#include "ViewChoices.h"

// What the pointer reads in the landscape, and how the eye moves around it.

namespace ovka::desktop {
namespace {

constexpr double kNearPixels = 14;  ///< as close as the pointer must come to the landscape
constexpr double kLeastDistance = 0.5, kMostDistance = 3;
constexpr std::array<OfferedValue, 6> kDistances{{{0.5, "× 0.5 (near)"},
                                                  {0.75, "× 0.75"},
                                                  {1, "× 1"},
                                                  {1.5, "× 1.5"},
                                                  {2, "× 2"},
                                                  {3, "× 3 (far)"}}};

QToolButton* menuButton(QWidget* parent, const QString& text, const QString& tip) {
  auto* button = new QToolButton(parent);
  button->setText(text);
  button->setAccessibleName(text);
  button->setToolTip(tip);
  button->setPopupMode(QToolButton::InstantPopup);
  button->setAutoRaise(true);
  button->setMenu(new QMenu(button));
  return button;
}

}  // namespace

/// The place of the landscape under the pointer: of those close to it the one that is nearest to
/// the eye, for it hides the others; else the closest one.
std::optional<Spectrum3DView::Place> Spectrum3DView::placeAt(const Panel& panel, QPointF at) const {
  const Landscape& land = panel.landscape;
  const QMatrix4x4 matrix = camera().matrix(panel.area.width(), panel.area.height());
  std::optional<Place> found;
  double closest = 2 * kNearPixels;
  float nearest = std::numeric_limits<float>::max();
  for (std::size_t row = 0; row < land.rows; ++row) {
    for (std::size_t column = 0; column < land.columns; ++column) {
      const QVector3D point = land.point(row, column);
      const std::optional<QPointF> place = projected(matrix, panel.area, point);
      if (!place) continue;
      const double away = std::hypot(place->x() - at.x(), place->y() - at.y());
      const float depth = (matrix * QVector4D(point, 1)).w();
      const bool close = away <= kNearPixels / 3;
      if (close ? closest > kNearPixels / 3 || depth < nearest - 0.05F ||
                      (depth < nearest + 0.05F && away < closest)
                : away < closest && closest > kNearPixels / 3) {
        found = Place{row, column};
        closest = away;
        nearest = depth;
      }
    }
  }
  return closest <= kNearPixels ? found : std::nullopt;
}

/// The greatest value of the history that the place stands for.
QStringList Spectrum3DView::readPlace(const Panel& panel, const Place& place) const {
  const SpectrumRows& rows = feed().rows();
  const double high = (panel.front - static_cast<double>(place.row)) * panel.each;
  const auto last = static_cast<std::int64_t>(std::floor(high));
  const auto from = std::min(static_cast<std::int64_t>(std::floor(high - panel.each)) + 1, last);
  const double lowF = std::min(static_cast<double>(choice().lowF), highF() - 0.5);
  const double wide = (highF() - lowF) / static_cast<double>(panel.landscape.columns);
  const double left = lowF + static_cast<double>(place.column) * wide;
  double value = -1;
  double frequency = 0;
  for (std::int64_t row = std::max<std::int64_t>(from, 0); row <= last; ++row) {
    const auto number = static_cast<std::uint64_t>(row);
    if (number >= rows.taken() || number + SpectrumRows::kRows <= rows.taken()) continue;
    const std::span<const float> values = rows.row(panel.source, number);
    const auto first = static_cast<std::size_t>(std::lround(left / rows.valueWidth()));
    const auto end = static_cast<std::size_t>(std::lround((left + wide) / rows.valueWidth()));
    for (std::size_t i = first; i <= std::max(first, end - 1) && i < values.size(); ++i) {
      if (static_cast<double>(values[i]) <= value) continue;
      value = static_cast<double>(values[i]);
      frequency = static_cast<double>(i) * rows.valueWidth();
    }
  }
  if (value < 0) return {};
  const double ago = static_cast<double>(place.row) * panel.each * SpectrumRows::kInterval;
  const char* name =
      panel.source < kChannels ? kChannelNames[panel.source] : kPairNames[panel.source - kChannels];
  return {QStringLiteral("%1  −%2 s").arg(QString::fromUtf8(name), numberText(ago, 1)),
          QStringLiteral("%1 Hz").arg(numberText(frequency, 2)),
          coherence() ? QStringLiteral("coherence %1 %").arg(numberText(value, 0))
                      : QStringLiteral("%1 %2").arg(figureText(scale_.shown(value, panel.factor)),
                                                    scale_.unit())};
}

QStringList Spectrum3DView::readOut(QPointF at) const {
  for (const Panel& panel : panels_) {
    if (!panel.area.contains(at)) continue;
    const std::optional<Place> place = placeAt(panel, at);
    return place ? readPlace(panel, *place) : QStringList();
  }
  return {};
}

void Spectrum3DView::turnBy(double turn, double tilt) {
  display::turnX = std::clamp(display::turnX + static_cast<float>(turn), -80.0F, 80.0F);
  display::tiltX = std::clamp(display::tiltX + static_cast<float>(tilt), 5.0F, 85.0F);
  stalePicture();
  update();
}

void Spectrum3DView::setDistance(double distance) {
  display::distanceX = static_cast<float>(std::clamp(distance, kLeastDistance, kMostDistance));
  stalePicture();
  update();
}

void Spectrum3DView::mousePressEvent(QMouseEvent* event) {
  dragged_ = event->position();
  SceneView::mousePressEvent(event);
}

void Spectrum3DView::mouseMoveEvent(QMouseEvent* event) {
  if ((event->buttons() & Qt::LeftButton) != 0) {
    const QPointF moved = event->position() - dragged_;
    dragged_ = event->position();
    turnBy(moved.x() * 0.4, moved.y() * 0.3);
  }
  SceneView::mouseMoveEvent(event);
}

/// With Shift the eye comes nearer; some systems turn the wheel sideways then.
void Spectrum3DView::wheelEvent(QWheelEvent* event) {
  const QPoint turned = event->angleDelta();
  const double turns = (turned.y() != 0 ? turned.y() : turned.x()) / 120.0;
  if ((event->modifiers() & Qt::ShiftModifier) == 0) {
    SceneView::wheelEvent(event);
    return;
  }
  event->accept();
  setDistance(static_cast<double>(display::distanceX.get()) / std::pow(1.1, turns));
}

void Spectrum3DView::keyPressEvent(QKeyEvent* event) {
  const auto distance = static_cast<double>(display::distanceX.get());
  switch (event->key()) {
    case Qt::Key_Left:
      turnBy(-4, 0);
      return;
    case Qt::Key_Right:
      turnBy(4, 0);
      return;
    case Qt::Key_Up:
      turnBy(0, -3);
      return;
    case Qt::Key_Down:
      turnBy(0, 3);
      return;
    case Qt::Key_PageUp:
      setDistance(distance / 1.1);
      return;
    case Qt::Key_PageDown:
      setDistance(distance * 1.1);
      return;
    default:
      SceneView::keyPressEvent(event);
  }
}

void Spectrum3DView::fillCamera(QMenu& menu) {
  auto* group = new QActionGroup(&menu);
  for (const OfferedValue& offer : kDistances) {
    QAction* action = menu.addAction(QString::fromUtf8(offer.text), this,
                                     [this, value = offer.value] { setDistance(value); });
    action->setCheckable(true);
    action->setChecked(std::abs(offer.value - static_cast<double>(display::distanceX.get())) <
                       0.01);
    group->addAction(action);
  }
  menu.addSeparator();
  menu.addAction(QStringLiteral("From the front"), this, [this] {
    display::turnX = 0.0F;
    turnBy(0, 0);
  });
  menu.addAction(QStringLiteral("As it was at first"), this, [this] {
    const Camera first;
    display::turnX = first.turn;
    display::tiltX = first.tilt;
    setDistance(static_cast<double>(first.distance));
  });
}

void Spectrum3DView::fillPairs(QMenu& menu) {
  for (std::size_t pair = 0; pair < kPairs; ++pair) {
    QAction* action = menu.addAction(QString::fromUtf8(kPairNames[pair]));
    action->setCheckable(true);
    action->setChecked((display::pairsX >> pair & 1) != 0);
    connect(action, &QAction::toggled, this, [pair](bool on) {
      const std::int32_t bit = 1 << pair;
      display::pairsX = on ? display::pairsX | bit : display::pairsX & ~bit;
    });
  }
}

void Spectrum3DView::addOwnMenu(QMenu& menu) {
  menu.addSeparator();
  fillCamera(*menu.addMenu(QStringLiteral("Distance")));
  fillPairs(*menu.addMenu(QStringLiteral("Coherence pairs")));
}

void Spectrum3DView::addOwnControls(QHBoxLayout& row, QWidget* parent) {
  QToolButton* camera =
      menuButton(parent, QStringLiteral("Distance"),
                 QStringLiteral("How near the eye is: Shift and wheel, Page Up and Page Down. "
                                "Dragging and the arrow keys turn."));
  QToolButton* pairs = menuButton(parent, QStringLiteral("Pairs"),
                                  QStringLiteral("The channel pairs whose coherence is shown."));
  for (QToolButton* button : {camera, pairs}) {
    row.addWidget(button);
    connect(button->menu(), &QMenu::aboutToShow, this, [this, button, camera] {
      qDeleteAll(button->menu()->findChildren<QActionGroup*>());
      button->menu()->clear();
      if (button == camera)
        fillCamera(*button->menu());
      else
        fillPairs(*button->menu());
    });
  }
  const auto follow = [this, pairs] { pairs->setVisible(coherence()); };
  connect(this, &View::choiceChanged, pairs, follow);
  follow();
}

}  // namespace ovka::desktop
