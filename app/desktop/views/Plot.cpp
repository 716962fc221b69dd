#include "Plot.h"

#include <QFontMetricsF>
#include <algorithm>
#include <array>
#include <cmath>

#include "BandPowers.h"

namespace ovka::desktop {
namespace {

constexpr std::array<const char*, 8> kBandNames{"eye",   "delta", "theta",  "alpha",
                                                "low β", "mid β", "high β", "ac"};
constexpr std::array<const char*, 8> kBandLetters{"e", "δ", "θ", "α", "lβ", "mβ", "hβ", "ac"};
constexpr double kGap = 6;  ///< between a plot and its labels

}  // namespace

QString bandName(std::size_t band) {
  return QString::fromUtf8(kBandNames[band]);
}

QString bandLetter(std::size_t band) {
  return QString::fromUtf8(kBandLetters[band]);
}

QString bandEdges(std::size_t band) {
  return QStringLiteral("%1–%2").arg(kBands[band].low).arg(kBands[band].high);
}

double labelBaseline(double y, const QRectF& area, const QFontMetricsF& metrics) {
  const double least = area.top() + metrics.capHeight() + 1;
  return std::clamp(y + metrics.capHeight() / 2, least, std::max(area.bottom(), least));
}

QFont fittingFont(const QFont& font, const QString& text, double width) {
  QFont smaller = font;
  for (const double part : {1.0, 0.85, 0.7}) {
    smaller.setPixelSize(std::max(static_cast<int>(font.pixelSize() * part), 10));
    if (QFontMetricsF(smaller).horizontalAdvance(text) <= width) return smaller;
  }
  smaller.setPixelSize(1);
  return smaller;
}

QRectF plotArea(const QRectF& outer, const QFont& font, bool yLabels, bool xLabels) {
  const QFontMetricsF metrics(font);
  const double left = yLabels ? metrics.horizontalAdvance(QStringLiteral("−0000")) + kGap : kGap;
  const double top = metrics.height() + kGap;
  const double right = metrics.horizontalAdvance('0') + kGap;
  const double bottom = xLabels ? metrics.height() + kGap : kGap;
  return QRectF(std::round(outer.left() + left), std::round(outer.top() + top),
                std::max(std::round(outer.width() - left - right), 10.0),
                std::max(std::round(outer.height() - top - bottom), 10.0));
}

void paintYAxis(QPainter& painter, const Plot& plot, const Theme& theme, const QFont& font) {
  const QFontMetricsF metrics(font);
  const Ticks ticks = ticksOf(plot.y.low, plot.y.high,
                              std::max(plot.area.height() / (2.2 * metrics.height()), 1.0));
  painter.setFont(font);
  for (int i = 0; i < ticks.count; ++i) {
    const double y = std::round(plot.toY(ticks.at(i))) + 0.5;
    painter.setPen(ticks.at(i) == 0 ? theme.axis : theme.grid);
    painter.drawLine(QPointF(plot.area.left(), y), QPointF(plot.area.right(), y));
    painter.setPen(theme.quietText);
    const QString label = numberText(ticks.at(i), ticks.decimals);
    painter.drawText(QPointF(plot.area.left() - kGap - metrics.horizontalAdvance(label),
                             labelBaseline(y, plot.area, metrics)),
                     label);
  }
  if (plot.y.unit.isEmpty()) return;
  painter.setPen(theme.text);
  const double width = metrics.horizontalAdvance(plot.y.unit);
  painter.drawText(QPointF(std::max(plot.area.left() - kGap - width, 2.0),
                           plot.area.top() - kGap - metrics.descent() / 2),
                   plot.y.unit);
}

void paintXAxis(QPainter& painter, const Plot& plot, const Theme& theme, const QFont& font,
                const std::function<QString(double, const Ticks&)>& text) {
  const QFontMetricsF metrics(font);
  const double least = metrics.horizontalAdvance(text ? QStringLiteral("00:00:00") : "0000") + 10;
  const Ticks ticks = ticksOf(plot.x.low, plot.x.high, std::max(plot.area.width() / least, 1.0));
  const double baseline = plot.area.bottom() + kGap + metrics.ascent();
  const double unitWidth =
      plot.x.unit.isEmpty() ? 0
                            : metrics.horizontalAdvance(plot.x.unit) + metrics.averageCharWidth();
  const double end = plot.area.right() + metrics.averageCharWidth();
  painter.setFont(font);
  for (int i = 0; i < ticks.count; ++i) {
    const double x = std::round(plot.toX(ticks.at(i))) + 0.5;
    painter.setPen(theme.grid);
    painter.drawLine(QPointF(x, plot.area.top()), QPointF(x, plot.area.bottom()));
    const QString label = text ? text(ticks.at(i), ticks) : numberText(ticks.at(i), ticks.decimals);
    const double width = metrics.horizontalAdvance(label);
    if (x + width / 2 > end - unitWidth) continue;
    painter.setPen(theme.quietText);
    painter.drawText(QPointF(std::max(x - width / 2, 2.0), baseline), label);
  }
  if (plot.x.unit.isEmpty()) return;
  painter.setPen(theme.text);
  painter.drawText(QPointF(end - metrics.horizontalAdvance(plot.x.unit), baseline), plot.x.unit);
}

namespace {

/// Calls `paint` for every band that is in sight, with its left and right end.
template <typename Paint>
void forBands(const Plot& plot, const Paint& paint) {
  for (std::size_t b = 0; b < kBands.size(); ++b) {
    const double left = std::max(plot.toX(kBands[b].low), plot.area.left());
    const double right = std::min(plot.toX(kBands[b].high), plot.area.right());
    if (right - left >= 2) paint(b, left, right);
  }
}

}  // namespace

void paintBands(QPainter& painter, const Plot& plot, const Theme& theme) {
  forBands(plot, [&](std::size_t b, double left, double right) {
    if (b % 2 != 0) return;
    painter.fillRect(QRectF(left, plot.area.top(), right - left, plot.area.height()), theme.band);
  });
}

void paintBandHeads(QPainter& painter, const Plot& plot, const Theme& theme, const QFont& font,
                    bool edges) {
  const double row = QFontMetricsF(font).height();
  const auto write = [&](double left, double right, double line, const QString& text,
                         const QColor& color) {
    const QFont fitting = fittingFont(font, text, right - left - 2);
    if (fitting.pixelSize() <= 1) return false;
    painter.setFont(fitting);
    painter.setPen(color);
    // Centred on the band, whatever room the glyphs claim.
    painter.drawText(QRectF(left - 20, plot.area.top() - line * row - 3, right - left + 40, row),
                     Qt::AlignCenter, text);
    return true;
  };
  forBands(plot, [&](std::size_t b, double left, double right) {
    const double names = edges ? 2 : 1;
    if (!write(left, right, names, bandName(b), theme.text)) {
      write(left, right, names, bandLetter(b), theme.text);
    }
    if (edges) write(left, right, 1, bandEdges(b), theme.quietText);
  });
}

QRectF paintLabel(QPainter& painter, const Theme& theme, const QFont& font, QPointF topLeft,
                  const QString& text, const QColor& color) {
  const QFontMetricsF metrics(font);
  const QStringList lines = text.split('\n');
  double width = 0;
  for (const QString& line : lines) width = std::max(width, metrics.horizontalAdvance(line));
  const QRectF box(topLeft, QSizeF(width + 2 * kGap,
                                   static_cast<double>(lines.size()) * metrics.height() + kGap));
  QColor ground = theme.ground;
  ground.setAlpha(225);
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  painter.setBrush(ground);
  painter.drawRoundedRect(box, 4, 4);
  painter.restore();
  painter.setFont(font);
  painter.setPen(color);
  double y = box.top() + kGap / 2 + metrics.ascent();
  for (const QString& line : lines) {
    painter.drawText(QPointF(box.left() + kGap, y), line);
    y += metrics.height();
  }
  return box;
}

}  // namespace ovka::desktop
