#include "RawWaveView.h"

#include <algorithm>
#include <cmath>

namespace ovka::desktop {
namespace {

constexpr double kMostSeconds = 120;  ///< longer stretches are for newave
constexpr double kSweepGap = 0.02;    ///< of the width, between new and old

}  // namespace

RawWaveView::RawWaveView(Feed& feed, QWidget* parent) : FlatView(ViewKind::RawWave, feed, parent) {}

QStringList RawWaveView::modes() const {
  return {QStringLiteral("Scrolling"), QStringLiteral("Sweeping"), QStringLiteral("Together")};
}

bool RawWaveView::uses(std::string_view field) const {
  return field == "gain" || field == "top" || field == "seconds" || field == "freeze";
}

void RawWaveView::forget() {
  for (Pyramid& samples : samples_) samples.clear();
  auto_.reset();
}

double RawWaveView::samplesShown() const {
  return std::max(std::min(static_cast<double>(choice().seconds), kMostSeconds) * speed_, 2.0);
}

void RawWaveView::copySamples(const Frame& frame) {
  const auto count = static_cast<std::int64_t>(std::ceil(samplesShown())) + 2;
  first_ = static_cast<std::int64_t>(std::floor(end_)) - count + 1;
  const std::int64_t start = frame.wrapped ? frame.pointStart : 0;
  const std::int64_t last = std::min(first_ + count + 1, frame.point);
  // In loop mode the older part lies at the end of the buffer.
  const std::int64_t wrapped = frame.wrapped ? frame.capacity - frame.pointStart : 0;
  if (wrapped == 0) first_ = std::max<std::int64_t>(first_, 0);
  scratch_.resize(static_cast<std::size_t>(std::max<std::int64_t>(last - first_, 0)));
  const auto older =
      static_cast<std::size_t>(std::clamp<std::int64_t>(start - first_, 0, std::ssize(scratch_)));
  for (const std::size_t c : shown()) {
    const std::span<double> all(scratch_);
    if (older > 0) feed().readWave(c, first_ + wrapped, all.first(older));
    feed().readWave(c, first_ + static_cast<std::int64_t>(older), all.subspan(older));
    const bool left = c % 2 == 0;
    const bool reversed = (left ? display::rawLeftReverseX : display::rawRightReverseX) == 1;
    for (double& value : scratch_) {
      value += frame.channels[c].offset;
      if (reversed) value = -value;
    }
    samples_[c].build(scratch_);
  }
}

void RawWaveView::followScale(double time) {
  const auto gain = static_cast<double>(choice().gain);
  double greatest = 0;
  for (const std::size_t c : shown()) {
    const Extent all = samples_[c].over(0, static_cast<std::int64_t>(samples_[c].size()));
    if (all.empty()) continue;
    const double middle = (static_cast<double>(all.low) + static_cast<double>(all.high)) / 2;
    // The middle follows slowly: a lane that jumps cannot be read.
    const bool far = std::abs(middle - centre_[c]) > 2 * auto_.top();
    centre_[c] += (far ? 1.0 : 0.03) * (middle - centre_[c]);
    greatest = std::max({greatest, static_cast<double>(all.high) - centre_[c],
                         centre_[c] - static_cast<double>(all.low)});
  }
  const double automatic = auto_.follow(greatest, time);
  const double before = half_;
  if (choice().top > 0) {
    centre_ = {};
    half_ = static_cast<double>(choice().top) / gain;
  } else {
    half_ = automatic / gain;
  }
  if (half_ != before) staleBackground();
}

bool RawWaveView::take(const Frame& frame) {
  if (!frame.alive) return true;
  speed_ = static_cast<double>(frame.sampleSpeed);
  end_ = frame.smoothPoint;
  const bool changed = followChannels(frame);
  copySamples(frame);
  if (changed) prepare();
  followScale(frame.time);
  makeColumns();
  return true;
}

void RawWaveView::layOut() {
  area_ = plotArea(rect(), labelFont());
  lanes_ = choice().mode == Together ? std::vector<QRectF>(shown().size(), area_)
                                     : lanes(area_, std::max(area_.height() * 0.02, 3.0));
  if (choice().top > 0) {
    centre_ = {};
    half_ = static_cast<double>(choice().top / choice().gain);
  } else {
    half_ = auto_.top() / static_cast<double>(choice().gain);
  }
  makeColumns();
}

Plot RawWaveView::plotOf(std::size_t lane) const {
  Plot plot;
  plot.area = lanes_[lane];
  plot.y = {-half_, half_, lane == 0 ? QStringLiteral("µV") : QString()};
  return plot;
}

void RawWaveView::makeColumns() {
  const double shownPoints = samplesShown();
  const std::size_t count = columns(area_);
  const double each = shownPoints / static_cast<double>(count);
  // Columns of several samples begin at fixed samples, or their envelope would shimmer.
  const double end = each >= 2 ? std::floor(end_ / each) * each : end_;
  edges_.resize(count + 1);
  std::size_t gapFrom = count, gapTo = count;
  if (sweeping()) {
    const double begin = std::floor(end / shownPoints) * shownPoints;
    gapFrom = std::min(static_cast<std::size_t>((end - begin) / each), count);
    gapTo = std::min(
        gapFrom + std::max(static_cast<std::size_t>(kSweepGap * static_cast<double>(count)),
                           std::size_t{4}),
        count);
    for (std::size_t c = 0; c <= count; ++c) {
      const double at = begin + static_cast<double>(c) * each;
      edges_[c] = c <= gapFrom ? at : at - shownPoints;
    }
  } else {
    evenEdges(end - shownPoints, end, count, edges_);
  }
  for (double& edge : edges_) edge -= static_cast<double>(first_);
  const std::span<const double> edges(edges_);
  for (std::size_t lane = 0; lane < std::min(shown().size(), lanes_.size()); ++lane) {
    const std::size_t c = shown()[lane];
    std::vector<Extent>& out = columns_[c];
    out.assign(count, Extent{});
    const std::span<Extent> all(out);
    if (gapFrom > 0) {
      columnsOf(samples_[c], edges.first(gapFrom + 1), all.first(gapFrom));
    }
    if (gapTo < count) columnsOf(samples_[c], edges.subspan(gapTo), all.subspan(gapTo));
    const Plot plot = plotOf(lane);
    for (Extent& extent : out) {
      if (extent.empty()) continue;
      const double high = plot.toY(static_cast<double>(extent.high) - centre_[c]);
      const double low = plot.toY(static_cast<double>(extent.low) - centre_[c]);
      extent = {static_cast<float>(high), static_cast<float>(low)};
    }
  }
}

void RawWaveView::paintBackground(QPainter& painter) {
  const QFont font = labelFont();
  for (std::size_t lane = 0; lane < lanes_.size(); ++lane) {
    if (choice().mode == Together && lane > 0) break;
    painter.fillRect(lanes_[lane], theme().plot);
    paintYAxis(painter, plotOf(lane), theme(), font);
  }
}

void RawWaveView::paintCurves(Picture& picture) {
  // The seconds move with the wave.
  if (!sweeping() && !lanes_.empty()) {
    const Ticks ticks = ticksOf((end_ - samplesShown()) / speed_, end_ / speed_,
                                area_.width() / (8 * labelFont().pixelSize()));
    for (int i = 0; i < ticks.count; ++i) {
      const double x =
          area_.right() - (end_ / speed_ - ticks.at(i)) * speed_ / samplesShown() * area_.width();
      if (ticks.at(i) >= 0 && x >= area_.left() && x < area_.right()) {
        picture.box(QRectF(x, area_.top(), 1 / devicePixelRatioF(), area_.height()), theme().grid);
      }
    }
  }
  for (std::size_t lane = 0; lane < std::min(shown().size(), lanes_.size()); ++lane) {
    picture.curve(lanes_[lane], columns_[shown()[lane]], theme().channels[shown()[lane]], 2);
  }
}

void RawWaveView::paintFigures(QPainter& painter) {
  const QFont font = labelFont();
  const QFontMetricsF metrics(font);
  Plot plot;
  plot.area = area_;
  painter.setFont(font);
  painter.setPen(theme().quietText);
  const double baseline = area_.bottom() + 6 + metrics.ascent();
  const double from = sweeping() ? 0 : (end_ - samplesShown()) / speed_;
  const Ticks ticks =
      ticksOf(from, from + samplesShown() / speed_, area_.width() / (8 * font.pixelSize()));
  for (int i = 0; i < ticks.count; ++i) {
    if (ticks.at(i) < 0) continue;
    const QString text =
        sweeping() ? QStringLiteral("%1 s").arg(ticks.at(i)) : clockText(ticks.at(i), ticks.step);
    const double x = area_.left() + (ticks.at(i) - from) * speed_ / samplesShown() * area_.width();
    const double width = metrics.horizontalAdvance(text);
    if (x - width / 2 < 0 || x + width / 2 > this->width()) continue;
    painter.drawText(QPointF(x - width / 2, baseline), text);
  }
  QFont large = labelFont(1.35);
  large.setBold(true);
  double x = area_.left() + 6;
  for (std::size_t lane = 0; lane < std::min(shown().size(), lanes_.size()); ++lane) {
    const std::size_t c = shown()[lane];
    const bool together = choice().mode == Together;
    const QRectF box = paintLabel(painter, theme(), large, QPointF(x, lanes_[lane].top() + 4),
                                  QString::fromUtf8(kChannelNames[c]), theme().channels[c]);
    if (together) x = box.right() + 4;
  }
}

double RawWaveView::positionAt(double x) const {
  const double part = (x - area_.left()) / std::max(area_.width(), 1.0);
  const double shownPoints = samplesShown();
  if (!sweeping()) return end_ - shownPoints + part * shownPoints;
  const double at = std::floor(end_ / shownPoints) * shownPoints + part * shownPoints;
  return at <= end_ ? at : at - shownPoints;
}

QStringList RawWaveView::readOut(QPointF at) const {
  const double position = positionAt(at.x());
  QStringList lines;
  if (position < 0 && first_ >= 0) return lines;
  lines << QStringLiteral("%1").arg(clockText(position / speed_, 0.01));
  // What is read is a sample, not a place between two.
  const double index = std::round(position) - static_cast<double>(first_);
  for (const std::size_t c : shown()) {
    if (index < 0 || index >= static_cast<double>(samples_[c].size())) continue;
    lines << QStringLiteral("%1  %2 µV")
                 .arg(kChannelNames[c])
                 .arg(numberText(
                     static_cast<double>(samples_[c].at(static_cast<std::size_t>(index))), 1));
  }
  return lines;
}

}  // namespace ovka::desktop
