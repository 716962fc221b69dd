#pragma once

#include <QColor>
#include <QImage>
#include <QPainter>
#include <QRectF>
#include <QSize>
#include <functional>
#include <span>
#include <vector>

#include "Decimation.h"

namespace ovka::desktop {

/// The picture of a flat view: a background (grid, labels) that is painted only when it changes,
/// and curves drawn over it a pixel column at a time. What a curve costs depends on the width of
/// the picture alone. Sizes are logical, images have the screen's pixels.
class Picture {
 public:
  /// Begins a picture: paints the background with `background` when the size or `stale()` says so.
  void begin(const QSizeF& size, double pixelRatio,
             const std::function<void(QPainter&)>& background);
  /// The background is painted anew next time.
  void stale() { stale_ = true; }

  /// Device pixel columns of a logical stretch.
  [[nodiscard]] std::size_t columns(const QRectF& area) const;
  /// Draws a curve over `area`: a column an entry, each from bottom to top of its extent in logical
  /// y (low above high is nothing), as a line of `width` logical pixels that stays within the area.
  void curve(const QRectF& area, std::span<const Extent> columns, const QColor& color,
             double width);
  /// Tints from the curve's upper edge down to a logical y, with an opacity from 0 to 1.
  void fill(const QRectF& area, std::span<const Extent> columns, double base, const QColor& color,
            double opacity);
  /// A rectangle of one colour.
  void box(const QRectF& area, const QColor& color);

  void show(QPainter& painter) const { painter.drawImage(QPointF(0, 0), work_); }

 private:
  void span(int column, double top, double bottom, int clipTop, int clipBottom, QRgb color,
            double opacity);

  QImage background_;
  QImage work_;
  double ratio_ = 1;
  bool stale_ = true;
  std::vector<Extent> thick_;  ///< scratch
};

}  // namespace ovka::desktop
