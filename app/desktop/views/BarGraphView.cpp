#include "BarGraphView.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace ovka::desktop {

BarGraphView::BarGraphView(Feed& feed, QWidget* parent)
    : FlatView(ViewKind::BarGraph, feed, parent) {}

QStringList BarGraphView::modes() const {
  return {QStringLiteral("Power"),
          QStringLiteral("Share"),
          QStringLiteral("Peak"),
          QStringLiteral("Power, a panel a channel"),
          QStringLiteral("Share, a panel a channel"),
          QStringLiteral("Peak, a panel a channel")};
}

bool BarGraphView::uses(std::string_view field) const {
  return field == "gain" || field == "top" || field == "unit" || field == "scale" ||
         field == "hold" || field == "freeze";
}

void BarGraphView::forget() {
  channels_ = {};
  auto_.reset();
}

void BarGraphView::resetHolds() {
  for (Channel& channel : channels_) channel.holds = channel.values;
}

bool BarGraphView::take(const Frame& frame) {
  if (!frame.alive) return true;
  const bool changed = followChannels(frame);
  const bool other = logScale_ != frame.logScale;
  logScale_ = frame.logScale;
  const double corner = static_cast<double>(display::barFrequencyX.get());
  const double elapsed = std::clamp(frame.time - taken_, 0.0, 1.0);
  const double part = corner > 0 ? 1 - std::exp(-2 * std::numbers::pi * corner * elapsed) : 1;
  taken_ = frame.time;
  for (std::size_t c = 0; c < kChannels; ++c) {
    const FrameChannel& from = frame.channels[c];
    const std::array<const BandValues*, kMeasures> values{&from.sums, &from.shares,
                                                          &from.strongest};
    Channel& to = channels_[c];
    to.factor = scale_.factorOf(from);
    for (std::size_t b = 0; b < to.values.size(); ++b) {
      to.values[b] += part * (values[measure()]->bands[b] - to.values[b]);
      // A peak hold sinks slowly, so that it tells of the last seconds and not of a blink long ago.
      to.holds[b] = std::max(to.values[b], to.holds[b] * (1 - 0.06 * elapsed));
    }
  }
  if (changed || other) prepare();
  followScale(frame.time);
  return frame.fresh || changed || part < 1;
}

double BarGraphView::heightOf(double value, double factor) const {
  return measure() == Shares ? 100 * value : scale_.shown(value, factor);
}

QString BarGraphView::textOf(double value, double factor) const {
  return measure() == Shares ? numberText(100 * value, 0) : figureText(scale_.shown(value, factor));
}

Axis BarGraphView::valueAxis() const {
  const double gain = std::max(static_cast<double>(choice().gain), 0.01);
  if (measure() == Shares) {
    return {0, std::min(auto_.top(), 100.0) / gain, QStringLiteral("%")};
  }
  const auto fixed = static_cast<double>(choice().top);
  const double top = (fixed > 0 ? fixed : auto_.top()) / gain;
  if (!scale_.decibels()) return {0, top, scale_.unit()};
  const double high = 20 * std::log10(top);
  return {high - 50, high, scale_.unit()};
}

void BarGraphView::followScale(double time) {
  double greatest = 0;
  for (const std::size_t c : shown()) {
    const Channel& channel = channels_[c];
    const double value =
        *std::ranges::max_element(choice().hold != 0 ? channel.holds : channel.values);
    greatest = std::max(greatest, value * (measure() == Shares ? 100 : channel.factor));
  }
  auto_.follow(greatest, time);
  if (valueAxis() == axis_) return;
  axis_ = valueAxis();
  staleBackground();
}

void BarGraphView::layOut() {
  scale_ = ValueScale(choice().unit, choice().scale, logScale_);
  for (std::size_t c = 0; c < kChannels; ++c) {
    channels_[c].factor = scale_.factorOf(feed().frame().channels[c]);
  }
  const QFont font = labelFont();
  area_ = plotArea(rect(), font);
  area_.setBottom(area_.bottom() - QFontMetricsF(font).height());
  axis_ = valueAxis();
  panels_.clear();
  if (!panels()) {
    panels_.push_back(area_);
  } else {
    const auto count = static_cast<double>(std::max<std::size_t>(shown().size(), 1));
    const double gap = 10;
    const double width = (area_.width() - gap * (count - 1)) / count;
    for (std::size_t i = 0; i < shown().size(); ++i) {
      panels_.emplace_back(std::round(area_.left() + static_cast<double>(i) * (width + gap)),
                           area_.top(), std::floor(width), area_.height());
    }
  }
  layOutBars();
}

void BarGraphView::layOutBars() {
  bars_.clear();
  const auto bands = static_cast<double>(kBands.size());
  for (std::size_t i = 0; i < shown().size(); ++i) {
    const QRectF& panel = panels_[panels() ? i : 0];
    const double slot = panel.width() / bands;
    const double count = panels() ? 1 : static_cast<double>(shown().size());
    const double each = slot * (panels() ? 0.7 : 0.84) / count;
    for (std::size_t b = 0; b < kBands.size(); ++b) {
      const double left = panel.left() + slot * static_cast<double>(b) + (slot - each * count) / 2 +
                          (panels() ? 0 : each * static_cast<double>(i));
      bars_.push_back({shown()[i], b,
                       QRectF(std::round(left), panel.top(), std::max(std::round(each) - 2, 2.0),
                              panel.height())});
    }
  }
}

void BarGraphView::paintBackground(QPainter& painter) {
  const QFont font = labelFont();
  for (std::size_t p = 0; p < panels_.size(); ++p) {
    const QRectF& panel = panels_[p];
    painter.fillRect(panel, theme().plot);
    const double slot = panel.width() / static_cast<double>(kBands.size());
    for (std::size_t b = 0; b < kBands.size(); ++b) {
      const QRectF room(panel.left() + slot * static_cast<double>(b), panel.top(), slot,
                        panel.height());
      if (b % 2 == 0) painter.fillRect(room, theme().band);
    }
    if (p == 0) {
      paintYAxis(painter, Plot{panel, {}, axis_}, theme(), font);
    }
    paintNames(painter, panel);
  }
}

void BarGraphView::paintNames(QPainter& painter, const QRectF& panel) {
  const double row = QFontMetricsF(labelFont()).height();
  const double slot = panel.width() / static_cast<double>(kBands.size());
  for (std::size_t b = 0; b < kBands.size(); ++b) {
    const QRectF label(panel.left() + slot * static_cast<double>(b), panel.bottom() + 4, slot, row);
    QString name = bandName(b);
    QFont font = fittingFont(labelFont(), QStringLiteral("high β"), slot - 2);
    if (font.pixelSize() <= 1) {
      name = bandLetter(b);
      font = fittingFont(labelFont(), QStringLiteral("mβ"), slot - 2);
    }
    painter.setFont(font);
    painter.setPen(theme().text);
    painter.drawText(label, Qt::AlignCenter, name);
    font = fittingFont(labelFont(), QStringLiteral("13–25"), slot - 2);
    if (font.pixelSize() <= 1) continue;
    painter.setFont(font);
    painter.setPen(theme().quietText);
    painter.drawText(label.translated(0, row), Qt::AlignCenter, bandEdges(b));
  }
}

void BarGraphView::paintCurves(Picture& picture) {
  for (const Bar& bar : bars_) {
    const Channel& channel = channels_[bar.channel];
    const Plot plot{bar.room, {}, axis_};
    const QColor& color = theme().channels[bar.channel];
    const double top = std::clamp(plot.toY(heightOf(channel.values[bar.band], channel.factor)),
                                  bar.room.top(), bar.room.bottom());
    picture.box(QRectF(QPointF(bar.room.left(), top), bar.room.bottomRight()), color);
    if (choice().hold == 0) continue;
    const double hold = plot.toY(heightOf(channel.holds[bar.band], channel.factor));
    if (hold >= bar.room.top() && hold < top - 2) {
      picture.box(QRectF(bar.room.left(), hold, bar.room.width(), 2), theme().text);
    }
  }
}

void BarGraphView::paintFigures(QPainter& painter) {
  const QFont font = labelFont();
  const QFontMetricsF metrics(font);
  painter.setFont(font);
  painter.setPen(theme().text);
  for (const Bar& bar : bars_) {
    const Channel& channel = channels_[bar.channel];
    const QString text = textOf(channel.values[bar.band], channel.factor);
    if (metrics.horizontalAdvance(QStringLiteral("00.0")) > bar.room.width() + 6) continue;
    const Plot plot{bar.room, {}, axis_};
    double y = plot.toY(heightOf(channel.values[bar.band], channel.factor)) - 4;
    if (choice().hold != 0) {
      const double hold = plot.toY(heightOf(channel.holds[bar.band], channel.factor));
      if (hold > y - metrics.height() && hold < y + 4) y = hold - 4;
    }
    y = std::clamp(y, bar.room.top() + metrics.ascent(), bar.room.bottom() - 4);
    const double x = bar.room.center().x() - metrics.horizontalAdvance(text) / 2;
    painter.drawText(QPointF(x, y), text);
  }
  QFont large = labelFont(1.35);
  large.setBold(true);
  double x = area_.right();
  for (std::size_t i = shown().size(); i-- > 0;) {
    const QString name = QString::fromUtf8(kChannelNames[shown()[i]]);
    const double width = QFontMetricsF(large).horizontalAdvance(name) + 12;
    x = panels() ? panels_[i].right() - width - 2 : x - width - 2;
    paintLabel(painter, theme(), large, QPointF(x, area_.top() + 3), name,
               theme().channels[shown()[i]]);
  }
}

QStringList BarGraphView::readOut(QPointF at) const {
  for (const Bar& bar : bars_) {
    if (!bar.room.adjusted(-1, 0, 1, 0).contains(at)) continue;
    const Channel& channel = channels_[bar.channel];
    const FrameChannel& frame = feed().frame().channels[bar.channel];
    QStringList lines{
        QStringLiteral("%1, %2 (%3 Hz)")
            .arg(kChannelNames[bar.channel])
            .arg(bandName(bar.band), bandEdges(bar.band)),
        QStringLiteral("%1 %2").arg(textOf(channel.values[bar.band], channel.factor), axis_.unit)};
    if (!frozen() && measure() == Sums && !logScale_) {
      lines << QStringLiteral("level %1, share %2 %")
                   .arg(figureText(frame.sums.bands[bar.band]))
                   .arg(numberText(100 * frame.shares.bands[bar.band], 1));
    }
    return lines;
  }
  return {};
}

}  // namespace ovka::desktop
