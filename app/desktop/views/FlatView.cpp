#include "FlatView.h"

#include <algorithm>
#include <cmath>

namespace ovka::desktop {

void FlatView::paint(QPainter& painter) {
  picture_.begin(size(), devicePixelRatioF(), [this](QPainter& background) {
    background.fillRect(rect(), theme().ground);
    paintBackground(background);
  });
  paintCurves(picture_);
  picture_.show(painter);
  paintFigures(painter);
}

void FlatView::prepare() {
  layOut();
  picture_.stale();
}

bool FlatView::followChannels(const Frame& frame) {
  std::vector<std::size_t> now;
  for (std::size_t c = 0; c < kChannels; ++c) {
    if (showsChannel(c) && frame.channels[c].active) now.push_back(c);
  }
  if (now == shown_) return false;
  shown_ = std::move(now);
  return true;
}

std::vector<QRectF> FlatView::lanes(const QRectF& area, double gap) const {
  std::vector<QRectF> rows;
  const auto count = static_cast<double>(std::max<std::size_t>(shown_.size(), 1));
  const double height = (area.height() - gap * (count - 1)) / count;
  for (std::size_t i = 0; i < shown_.size(); ++i) {
    const double top = std::round(area.top() + static_cast<double>(i) * (height + gap));
    rows.emplace_back(area.left(), top, area.width(), std::floor(std::max(height, 4.0)));
  }
  return rows;
}

std::size_t FlatView::columns(const QRectF& area) const {
  return static_cast<std::size_t>(std::max(std::lround(area.width() * devicePixelRatioF()), 1L));
}

}  // namespace ovka::desktop
