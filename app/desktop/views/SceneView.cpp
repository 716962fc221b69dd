#include "SceneView.h"

#include <QPainter>
#include <cmath>

#include "GlStage.h"

namespace ovka::desktop {

SceneView::SceneView(ViewKind kind, Feed& feed, QWidget* parent) : View(kind, feed, parent) {}

SceneView::~SceneView() = default;

void SceneView::chooseStage() {
  const bool wanted = !failed_ && display::useOpenGLX != 0;
  if (wanted == (stage_ != nullptr)) return;
  if (!wanted) {
    leaveStage();
    return;
  }
  stage_ = GlStage::take();
  if (stage_ == nullptr || !stage_->enter()) {
    stage_.reset();
    failed_ = true;
    return;
  }
  const bool begun = beginGl();
  if (!begun) endGl();
  stage_->leave();
  if (begun) return;
  stage_.reset();
  failed_ = true;
}

void SceneView::leaveStage() {
  if (stage_ == nullptr) return;
  const bool entered = stage_->enter();
  endGl();
  if (entered) stage_->leave();
  stage_.reset();
}

void SceneView::prepare() {
  layOut();
  stale_ = true;
}

void SceneView::paint(QPainter& painter) {
  if (stale_) {
    chooseStage();
    const double ratio = devicePixelRatioF();
    const QSize pixels(static_cast<int>(std::ceil(width() * ratio)),
                       static_cast<int>(std::ceil(height() * ratio)));
    if (stage_ != nullptr &&
        !stage_->render(
            pixels, theme().ground, [this, &pixels] { drawGl(pixels); }, picture_)) {
      leaveStage();
      failed_ = true;
    }
    picture_.setDevicePixelRatio(ratio);
    stale_ = false;
  }
  if (stage_ != nullptr) {
    painter.drawImage(QPointF(0, 0), picture_);
  } else {
    painter.fillRect(rect(), theme().ground);
    paintImage(painter);
  }
  paintFigures(painter);
}

}  // namespace ovka::desktop
