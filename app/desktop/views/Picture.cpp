#include "Picture.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace ovka::desktop {
namespace {

QRgb mixed(QRgb under, QRgb over, int coverage) {
  const int rest = 256 - coverage;
  return qRgb((qRed(under) * rest + qRed(over) * coverage) >> 8,
              (qGreen(under) * rest + qGreen(over) * coverage) >> 8,
              (qBlue(under) * rest + qBlue(over) * coverage) >> 8);
}

int coverageOf(double part, double opacity) {
  return std::clamp(static_cast<int>(std::lround(part * opacity * 256)), 0, 256);
}

}  // namespace

void Picture::begin(const QSizeF& size, double pixelRatio,
                    const std::function<void(QPainter&)>& background) {
  const QSize pixels(std::max(static_cast<int>(std::ceil(size.width() * pixelRatio)), 1),
                     std::max(static_cast<int>(std::ceil(size.height() * pixelRatio)), 1));
  if (stale_ || background_.size() != pixels || ratio_ != pixelRatio) {
    ratio_ = pixelRatio;
    background_ = QImage(pixels, QImage::Format_RGB32);
    background_.setDevicePixelRatio(pixelRatio);
    QPainter painter(&background_);
    background(painter);
    stale_ = false;
  }
  if (work_.size() != pixels || work_.devicePixelRatio() != pixelRatio) {
    work_ = QImage(pixels, QImage::Format_RGB32);
    work_.setDevicePixelRatio(pixelRatio);
  }
  std::memcpy(work_.bits(), background_.constBits(),
              static_cast<std::size_t>(background_.sizeInBytes()));
}

std::size_t Picture::columns(const QRectF& area) const {
  return static_cast<std::size_t>(std::max(std::lround(area.width() * ratio_), 1L));
}

void Picture::span(int column, double top, double bottom, int clipTop, int clipBottom, QRgb color,
                   double opacity) {
  if (column < 0 || column >= work_.width()) return;
  top = std::max(top, static_cast<double>(clipTop));
  bottom = std::min(bottom, static_cast<double>(clipBottom));
  if (!(bottom > top)) return;
  const auto stride = work_.bytesPerLine() / 4;
  auto* pixel = reinterpret_cast<QRgb*>(work_.bits()) + column;
  const int first = static_cast<int>(top);
  const int last = std::min(static_cast<int>(std::ceil(bottom)), clipBottom) - 1;
  for (int y = first; y <= last; ++y) {
    const double part = std::min(bottom, y + 1.0) - std::max(top, static_cast<double>(y));
    QRgb& at = pixel[y * stride];
    at = mixed(at, color, coverageOf(part, opacity));
  }
}

void Picture::curve(const QRectF& area, std::span<const Extent> columns, const QColor& color,
                    double width) {
  const double thickness = std::max(width * ratio_, 1.0);
  const auto extra = static_cast<std::ptrdiff_t>(std::lround(thickness)) - 1;
  const std::ptrdiff_t before = extra / 2, after = extra - before;
  const auto count = std::ssize(columns);
  // A square brush: as thick where the curve is steep as where it is flat.
  thick_.assign(columns.begin(), columns.end());
  for (std::ptrdiff_t c = 0; c < count; ++c) {
    for (std::ptrdiff_t n = std::max<std::ptrdiff_t>(c - before, 0);
         n <= std::min(c + after, count - 1); ++n) {
      if (!columns[static_cast<std::size_t>(c)].empty()) {
        thick_[static_cast<std::size_t>(c)].take(columns[static_cast<std::size_t>(n)]);
      }
    }
  }
  const int left = static_cast<int>(std::lround(area.left() * ratio_));
  const int clipTop = std::clamp(static_cast<int>(area.top() * ratio_), 0, work_.height());
  const int clipBottom =
      std::clamp(static_cast<int>(std::ceil(area.bottom() * ratio_)), 0, work_.height());
  for (std::ptrdiff_t c = 0; c < count; ++c) {
    const Extent& extent = thick_[static_cast<std::size_t>(c)];
    if (extent.empty()) continue;
    span(left + static_cast<int>(c), static_cast<double>(extent.low) * ratio_ - thickness / 2,
         static_cast<double>(extent.high) * ratio_ + thickness / 2, clipTop, clipBottom,
         color.rgb(), color.alphaF());
  }
}

void Picture::fill(const QRectF& area, std::span<const Extent> columns, double base,
                   const QColor& color, double opacity) {
  if (opacity <= 0) return;
  const int left = static_cast<int>(std::lround(area.left() * ratio_));
  const int clipTop = std::clamp(static_cast<int>(area.top() * ratio_), 0, work_.height());
  const int clipBottom =
      std::clamp(static_cast<int>(std::ceil(area.bottom() * ratio_)), 0, work_.height());
  for (std::size_t c = 0; c < columns.size(); ++c) {
    if (columns[c].empty()) continue;
    span(left + static_cast<int>(c), static_cast<double>(columns[c].low) * ratio_, base * ratio_,
         clipTop, clipBottom, color.rgb(), opacity);
  }
}

void Picture::box(const QRectF& area, const QColor& color) {
  const int left = static_cast<int>(std::lround(area.left() * ratio_));
  const int right = static_cast<int>(std::lround(area.right() * ratio_));
  for (int x = left; x < std::max(right, left + 1); ++x) {
    span(x, area.top() * ratio_, area.bottom() * ratio_, 0, work_.height(), color.rgb(),
         color.alphaF());
  }
}

}  // namespace ovka::desktop
