#pragma once

#include <QFont>
#include <QFontMetricsF>
#include <QPainter>
#include <QRectF>
#include <QString>
#include <functional>

#include "Scale.h"
#include "Theme.h"

namespace ovka::desktop {

/// An axis: what lies at its ends, and the unit printed once beside it.
struct Axis {
  double low = 0;
  double high = 1;
  QString unit;
  bool operator==(const Axis&) const = default;
};

/// A rectangle with two axes: places, grid and labels. y grows upward.
struct Plot {
  QRectF area;
  Axis x, y;

  [[nodiscard]] double toX(double value) const {
    return area.left() + (value - x.low) / (x.high - x.low) * area.width();
  }
  [[nodiscard]] double toY(double value) const {
    return area.bottom() - (value - y.low) / (y.high - y.low) * area.height();
  }
  [[nodiscard]] double fromX(double at) const {
    return x.low + (at - area.left()) / area.width() * (x.high - x.low);
  }
  [[nodiscard]] double fromY(double at) const {
    return y.low + (area.bottom() - at) / area.height() * (y.high - y.low);
  }
  bool operator==(const Plot&) const = default;
};

/// Where the figure of a tick at y stands: beside it, but within the axis' own ends, so that the
/// figures of two lanes never meet.
[[nodiscard]] double labelBaseline(double y, const QRectF& area, const QFontMetricsF& metrics);
/// The font, made smaller until a text fits a width; of size 1 when even 70 % of it is too large.
[[nodiscard]] QFont fittingFont(const QFont& font, const QString& text, double width);

/// The room that labels take around a plot in a view of this size.
[[nodiscard]] QRectF plotArea(const QRectF& outer, const QFont& font, bool yLabels = true,
                              bool xLabels = true);

/// Horizontal grid lines with figures left of the plot and the unit above them.
void paintYAxis(QPainter& painter, const Plot& plot, const Theme& theme, const QFont& font);
/// Vertical grid lines with figures below; `text` turns a value and the step into its label.
void paintXAxis(QPainter& painter, const Plot& plot, const Theme& theme, const QFont& font,
                const std::function<QString(double value, const Ticks& ticks)>& text = {});
/// Tinted bands.
void paintBands(QPainter& painter, const Plot& plot, const Theme& theme);
/// The names of the bands in a row of their own above the plot, and their edges (Hz) above those
/// when `edges`; what does not fit its band is written smaller, as a letter, or not at all.
void paintBandHeads(QPainter& painter, const Plot& plot, const Theme& theme, const QFont& font,
                    bool edges);
/// "α" for "alpha"; for narrow places.
[[nodiscard]] QString bandLetter(std::size_t band);

/// A text on ground of its own, so that curves behind it do not disturb; returns its box.
QRectF paintLabel(QPainter& painter, const Theme& theme, const QFont& font, QPointF topLeft,
                  const QString& text, const QColor& color);

/// The eight bands for a person ("low β"), by their index in kBands.
[[nodiscard]] QString bandName(std::size_t band);
/// "7–12"
[[nodiscard]] QString bandEdges(std::size_t band);

}  // namespace ovka::desktop
