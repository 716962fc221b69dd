#include "SpectrumView.h"

#include <algorithm>
#include <cmath>

namespace ovka::desktop {

SpectrumView::SpectrumView(Feed& feed, QWidget* parent)
    : FlatView(ViewKind::Spectrum, feed, parent) {}

QStringList SpectrumView::modes() const {
  return {QStringLiteral("Filled"), QStringLiteral("Lines")};
}

bool SpectrumView::uses(std::string_view field) const {
  return field != "seconds" && field != "palette";
}

void SpectrumView::forget() {
  for (Channel& channel : channels_) channel = {};
  auto_.reset();
}

void SpectrumView::resetHolds() {
  for (Channel& channel : channels_) {
    channel.levels[Average] = channel.levels[Live];
    channel.levels[Hold] = channel.levels[Live];
    channel.pyramids[Average].build(channel.levels[Average]);
    channel.pyramids[Hold].build(channel.levels[Hold]);
  }
}

bool SpectrumView::on(std::size_t curve) const {
  return curve == Live || (curve == Average ? choice().average : choice().hold) != 0;
}

void SpectrumView::takeChannel(const Frame& frame, std::size_t channel, double part) {
  const FrameChannel& from = frame.channels[channel];
  Channel& to = channels_[channel];
  const bool anew = to.levels[Average].size() != from.spectrum.size() ||
                    binWidth_ != frame.binWidth || logScale_ != frame.logScale;
  to.levels[Live] = from.spectrum;
  if (anew) to.levels[Average] = to.levels[Hold] = from.spectrum;
  for (std::size_t bin = 0; bin < from.spectrum.size(); ++bin) {
    to.levels[Average][bin] += part * (from.spectrum[bin] - to.levels[Average][bin]);
    to.levels[Hold][bin] = std::max(to.levels[Hold][bin], from.spectrum[bin]);
  }
  for (std::size_t curve = 0; curve < kCurves; ++curve) {
    if (on(curve)) to.pyramids[curve].build(to.levels[curve]);
  }
}

bool SpectrumView::take(const Frame& frame) {
  if (!frame.alive) return true;
  const bool changed = followChannels(frame);
  for (std::size_t c = 0; c < kChannels; ++c) {
    channels_[c].peaks = frame.channels[c].peaks;
    channels_[c].displayGain = frame.channels[c].displayGain;
    channels_[c].factor = scale_.factorOf(frame.channels[c]);
  }
  if (!frame.fresh && !changed) return false;
  const double part = std::clamp((frame.time - taken_) / kAverageSeconds, 0.0, 1.0);
  taken_ = frame.time;
  for (const std::size_t c : shown()) takeChannel(frame, c, part);
  const double nyquist = frame.sampleSpeed / 2.0;
  const bool other = nyquist != nyquist_ || logScale_ != frame.logScale;
  binWidth_ = frame.binWidth;
  nyquist_ = nyquist;
  logScale_ = frame.logScale;
  if (changed || other) prepare();
  followScale(frame.time);
  makeColumns();
  return true;
}

Axis SpectrumView::valueAxis() const {
  const auto fixed = static_cast<double>(choice().top);
  const double top =
      (fixed > 0 ? fixed : auto_.top()) / std::max(static_cast<double>(choice().gain), 0.01);
  if (!scale_.decibels()) return {0, top, scale_.unit()};
  const double high = 20 * std::log10(top);
  return {high - 50, high, scale_.unit()};
}

void SpectrumView::followScale(double time) {
  double greatest = 0;
  for (const std::size_t c : shown()) {
    const Channel& channel = channels_[c];
    const auto first = static_cast<std::int64_t>(plot_.x.low / binWidth_);
    const auto end = static_cast<std::int64_t>(plot_.x.high / binWidth_) + 1;
    for (std::size_t curve = 0; curve < kCurves; ++curve) {
      if (!on(curve)) continue;
      const Extent all = channel.pyramids[curve].over(first, end);
      greatest = std::max(greatest, static_cast<double>(all.high) * channel.factor);
    }
  }
  auto_.follow(greatest, time);
  if (valueAxis() != plot_.y) {
    plot_.y = valueAxis();
    staleBackground();
  }
}

void SpectrumView::layOut() {
  scale_ = ValueScale(choice().unit, choice().scale, logScale_);
  for (std::size_t c = 0; c < kChannels; ++c) {
    channels_[c].factor = scale_.factorOf(feed().frame().channels[c]);
    for (std::size_t curve = 1; curve < kCurves; ++curve) {
      if (on(curve)) channels_[c].pyramids[curve].build(channels_[c].levels[curve]);
    }
  }
  plot_.area = plotArea(rect(), labelFont());
  if (choice().bands != 0) {
    plot_.area.setTop(plot_.area.top() + std::round(QFontMetricsF(labelFont()).height()));
  }
  const double high = std::min(static_cast<double>(choice().highF), nyquist_);
  plot_.x = {std::min(static_cast<double>(choice().lowF), high - 0.5), high, QStringLiteral("Hz")};
  plot_.y = valueAxis();
  makeColumns();
}

void SpectrumView::makeColumns() {
  evenEdges(plot_.x.low / binWidth_, plot_.x.high / binWidth_, columns(plot_.area), edges_);
  for (const std::size_t c : shown()) {
    Channel& channel = channels_[c];
    for (std::size_t curve = 0; curve < kCurves; ++curve) {
      std::vector<Extent>& out = channel.columns[curve];
      out.assign(edges_.size() - 1, Extent{});
      if (!on(curve)) continue;
      columnsOf(channel.pyramids[curve], edges_, out);
      for (Extent& extent : out) {
        if (extent.empty()) continue;
        const double high = scale_.shown(static_cast<double>(extent.high), channel.factor);
        const double low = scale_.shown(static_cast<double>(extent.low), channel.factor);
        extent = {static_cast<float>(plot_.toY(high)), static_cast<float>(plot_.toY(low))};
      }
    }
  }
}

void SpectrumView::paintBackground(QPainter& painter) {
  const QFont font = labelFont();
  painter.fillRect(plot_.area, theme().plot);
  if (choice().bands != 0) {
    paintBands(painter, plot_, theme());
    paintBandHeads(painter, plot_, theme(), font, true);
  }
  paintYAxis(painter, plot_, theme(), font);
  paintXAxis(painter, plot_, theme(), font);
}

void SpectrumView::paintCurves(Picture& picture) {
  const bool filled = choice().mode == 0;
  const double opacity = 0.22 * std::clamp(static_cast<double>(display::alpha2DX.get()), 0.0, 1.0);
  for (const std::size_t c : shown()) {
    const Channel& channel = channels_[c];
    QColor color = theme().channels[c];
    if (filled) {
      picture.fill(plot_.area, channel.columns[Live], plot_.area.bottom(), color, opacity);
    }
    picture.curve(plot_.area, channel.columns[Live], color, 2);
    color.setAlphaF(0.75F);
    if (on(Average)) picture.curve(plot_.area, channel.columns[Average], color, 1);
    color.setAlphaF(0.45F);
    if (on(Hold)) picture.curve(plot_.area, channel.columns[Hold], color, 1);
  }
}

void SpectrumView::paintFigures(QPainter& painter) {
  const QFont font = labelFont(1.2);
  const QFontMetricsF metrics(font);
  double y = plot_.area.top() + 4;
  painter.setRenderHint(QPainter::Antialiasing);
  for (const std::size_t c : shown()) {
    const Channel& channel = channels_[c];
    const FramePeak& peak = channel.peaks[0];
    QString text = QString::fromUtf8(kChannelNames[c]);
    if (channel.displayGain != 1) text += QStringLiteral(" ×%1").arg(channel.displayGain);
    if (choice().peaks != 0 && peak.value > 0) {
      text += QStringLiteral("  %1 Hz  %2 %3")
                  .arg(numberText(peak.frequency, 1))
                  .arg(figureText(scale_.shown(peak.value, channel.factor)))
                  .arg(scale_.unit());
      const QPointF at(plot_.toX(peak.frequency),
                       plot_.toY(scale_.shown(peak.value, channel.factor)));
      if (plot_.area.contains(at)) {
        painter.setPen(QPen(theme().plot, 1.5));
        painter.setBrush(theme().channels[c]);
        painter.drawEllipse(at, 5, 5);
      }
    }
    const double width = metrics.horizontalAdvance(text) + 12;
    const QPointF place(plot_.area.right() - width - 6, y);
    y = paintLabel(painter, theme(), font, place, text, theme().channels[c]).bottom();
  }
  if (!on(Average) && !on(Hold)) return;
  QStringList parts;
  if (on(Average)) parts << QStringLiteral("thin: average of 4 s");
  if (on(Hold)) parts << QStringLiteral("faint: peak hold");
  const double width = QFontMetricsF(labelFont()).horizontalAdvance(parts.join(", ")) + 12;
  paintLabel(painter, theme(), labelFont(), QPointF(plot_.area.right() - width - 6, y),
             parts.join(", "), theme().quietText);
}

QStringList SpectrumView::readOut(QPointF at) const {
  QStringList lines;
  const double bin = std::round(plot_.fromX(at.x()) / binWidth_);
  lines << QStringLiteral("%1 Hz").arg(numberText(bin * binWidth_, binWidth_ < 0.05 ? 3 : 2));
  for (const std::size_t c : shown()) {
    const Pyramid& live = channels_[c].pyramids[Live];
    if (bin < 0 || bin >= static_cast<double>(live.size())) continue;
    const auto level = static_cast<double>(live.at(static_cast<std::size_t>(bin)));
    QString line = QStringLiteral("%1  %2 %3")
                       .arg(kChannelNames[c])
                       .arg(figureText(scale_.shown(level, channels_[c].factor)))
                       .arg(scale_.unit());
    if (choice().unit == 0 && !logScale_) {
      line += QStringLiteral("  (level %1)").arg(figureText(level));
    }
    lines << line;
  }
  return lines;
}

}  // namespace ovka::desktop
