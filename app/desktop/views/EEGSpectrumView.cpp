#include "EEGSpectrumView.h"

#include <algorithm>
#include <cmath>

namespace ovka::desktop {
namespace {

constexpr double kLastHz = 60;

}  // namespace

EEGSpectrumView::EEGSpectrumView(Feed& feed, QWidget* parent)
    : FlatView(ViewKind::EEGSpectrum, feed, parent) {}

QStringList EEGSpectrumView::modes() const {
  return {QStringLiteral("Equal bands"), QStringLiteral("By frequency")};
}

bool EEGSpectrumView::uses(std::string_view field) const {
  return field == "gain" || field == "top" || field == "unit" || field == "scale" ||
         field == "freeze";
}

void EEGSpectrumView::forget() {
  for (Channel& channel : channels_) channel = {};
  auto_.reset();
}

EEGSpectrumView::Place EEGSpectrumView::placeOf(std::size_t band, bool equal) {
  if (!equal) return {kBands[band].low / kLastHz, kBands[band].high / kLastHz};
  const auto count = static_cast<double>(kBands.size());
  const auto number = static_cast<double>(band);
  return {number / count, (number + 1) / count};
}

bool EEGSpectrumView::figures() const {
  return !lanes_.empty() && lanes_[0].height() > 3.2 * labelFont(1.15).pixelSize();
}

QRectF EEGSpectrumView::curveRect(std::size_t lane) const {
  QRectF area = lanes_[lane];
  if (figures()) area.setTop(area.top() + std::round(1.45 * labelFont(1.15).pixelSize()));
  return area;
}

QRectF EEGSpectrumView::cell(std::size_t lane, std::size_t band) const {
  const Place place = placeOf(band, choice().mode == 0);
  const QRectF& all = lanes_[lane];
  const double left = std::round(all.left() + place.left * all.width());
  const double right = std::round(all.left() + place.right * all.width());
  return {left, all.top(), std::max(right - left - 2, 1.0), all.height()};
}

bool EEGSpectrumView::take(const Frame& frame) {
  if (!frame.alive) return true;
  const bool changed = followChannels(frame);
  if (!frame.fresh && !changed) return false;
  binWidth_ = frame.binWidth;
  const bool other = logScale_ != frame.logScale;
  logScale_ = frame.logScale;
  // Only what the bands cover is looked at.
  const auto bins = static_cast<std::size_t>(kLastHz / binWidth_) + 2;
  for (const std::size_t c : shown()) {
    const FrameChannel& from = frame.channels[c];
    Channel& to = channels_[c];
    to.levels.assign(
        from.spectrum.begin(),
        from.spectrum.begin() + static_cast<std::ptrdiff_t>(std::min(bins, from.spectrum.size())));
    to.pyramid.build(to.levels);
    to.sums = from.sums;
    to.shares = from.shares;
    to.factor = scale_.factorOf(from);
  }
  if (changed || other) prepare();
  followScale(frame.time);
  makeColumns();
  return true;
}

Axis EEGSpectrumView::valueAxis() const {
  const auto fixed = static_cast<double>(choice().top);
  const double top =
      (fixed > 0 ? fixed : auto_.top()) / std::max(static_cast<double>(choice().gain), 0.01);
  if (!scale_.decibels()) return {0, top, scale_.unit()};
  const double high = 20 * std::log10(top);
  return {high - 50, high, scale_.unit()};
}

void EEGSpectrumView::followScale(double time) {
  double greatest = 0;
  for (const std::size_t c : shown()) {
    const Pyramid& levels = channels_[c].pyramid;
    const Extent all = levels.over(0, static_cast<std::int64_t>(levels.size()));
    greatest = std::max(greatest, static_cast<double>(all.high) * channels_[c].factor);
  }
  auto_.follow(greatest, time);
  if (valueAxis() == axis_) return;
  axis_ = valueAxis();
  staleBackground();
}

void EEGSpectrumView::layOut() {
  scale_ = ValueScale(choice().unit, choice().scale, logScale_);
  for (std::size_t c = 0; c < kChannels; ++c) {
    channels_[c].factor = scale_.factorOf(feed().frame().channels[c]);
  }
  const QFont font = labelFont();
  area_ = plotArea(rect(), font);
  // Names and edges stand above the first lane, the unit of frequency in the same row.
  const double head = QFontMetricsF(font).height() * 1.15;
  area_.setTop(area_.top() + head);
  area_.setBottom(height() - 6.0);
  lanes_ = lanes(area_, 6);
  axis_ = valueAxis();
  makeColumns();
}

void EEGSpectrumView::makeColumns() {
  for (std::size_t lane = 0; lane < std::min(shown().size(), lanes_.size()); ++lane) {
    Channel& channel = channels_[shown()[lane]];
    const Plot plot{curveRect(lane), {}, axis_};
    for (std::size_t b = 0; b < kBands.size(); ++b) {
      const QRectF box = cell(lane, b);
      evenEdges(kBands[b].low / binWidth_, kBands[b].high / binWidth_, columns(box), edges_);
      std::vector<Extent>& out = channel.columns[b];
      out.resize(edges_.size() - 1);
      columnsOf(channel.pyramid, edges_, out);
      for (Extent& extent : out) {
        if (extent.empty()) continue;
        const double high = scale_.shown(static_cast<double>(extent.high), channel.factor);
        const double low = scale_.shown(static_cast<double>(extent.low), channel.factor);
        extent = {static_cast<float>(plot.toY(high)), static_cast<float>(plot.toY(low))};
      }
    }
  }
}

void EEGSpectrumView::paintHead(QPainter& painter, const QRectF& cell, std::size_t band) {
  const double row = QFontMetricsF(labelFont()).height();
  const bool last = band + 1 == kBands.size();
  const std::array<QString, 2> texts{bandName(band),
                                     bandEdges(band) + (last ? QStringLiteral(" Hz") : QString())};
  for (std::size_t i = 0; i < texts.size(); ++i) {
    QString text = texts[i];
    QFont font = fittingFont(labelFont(), text, cell.width());
    if (font.pixelSize() <= 1 && i == 0) {
      text = bandLetter(band);
      font = fittingFont(labelFont(), text, cell.width());
    }
    if (font.pixelSize() <= 1) continue;
    painter.setFont(font);
    painter.setPen(i == 0 ? theme().text : theme().quietText);
    painter.drawText(QRectF(cell.left(), lanes_[0].top() - (2 - static_cast<double>(i)) * row - 4,
                            cell.width(), row),
                     Qt::AlignCenter, text);
  }
}

void EEGSpectrumView::paintBackground(QPainter& painter) {
  const QFont font = labelFont();
  for (std::size_t lane = 0; lane < lanes_.size(); ++lane) {
    for (std::size_t b = 0; b < kBands.size(); ++b) {
      const QRectF box = cell(lane, b);
      painter.fillRect(box, b % 2 == 0 ? theme().band : theme().plot);
      if (lane == 0) paintHead(painter, box, b);
    }
    Axis axis = axis_;
    if (lane > 0) axis.unit.clear();
    paintYAxis(painter, Plot{curveRect(lane), {}, axis}, theme(), font);
  }
}

void EEGSpectrumView::paintCurves(Picture& picture) {
  const double opacity = 0.3 * std::clamp(static_cast<double>(display::alpha2DX.get()), 0.0, 1.0);
  for (std::size_t lane = 0; lane < std::min(shown().size(), lanes_.size()); ++lane) {
    const std::size_t c = shown()[lane];
    for (std::size_t b = 0; b < kBands.size(); ++b) {
      QRectF box = cell(lane, b);
      const std::vector<Extent>& columns = channels_[c].columns[b];
      box.setTop(curveRect(lane).top());
      picture.fill(box, columns, box.bottom(), theme().channels[c], opacity);
      picture.curve(box, columns, theme().channels[c], 2);
    }
  }
}

/// Power and share in one line above the curve; the share gives way first.
void EEGSpectrumView::paintValue(QPainter& painter, const QRectF& room, const Channel& channel,
                                 std::size_t band) {
  const QString value = figureText(channel.sums.bands[band] * channel.factor);
  const QString share = numberText(100 * channel.shares.bands[band], 0) + QStringLiteral(" %");
  const QFont large = labelFont(1.15), small = labelFont(0.9);
  const double valueWidth = QFontMetricsF(large).horizontalAdvance(value);
  const double both = valueWidth + 8 + QFontMetricsF(small).horizontalAdvance(share);
  const bool showsBoth = both <= room.width();
  if (valueWidth > room.width()) return;
  const double left = room.center().x() - (showsBoth ? both : valueWidth) / 2;
  const double baseline = room.top() + QFontMetricsF(large).ascent();
  painter.setFont(large);
  painter.setPen(theme().text);
  painter.drawText(QPointF(left, baseline), value);
  if (!showsBoth) return;
  painter.setFont(small);
  painter.setPen(theme().quietText);
  painter.drawText(QPointF(left + valueWidth + 8, baseline), share);
}

void EEGSpectrumView::paintFigures(QPainter& painter) {
  QFont bold = labelFont(1.15);
  bold.setBold(true);
  for (std::size_t lane = 0; lane < std::min(shown().size(), lanes_.size()); ++lane) {
    const std::size_t c = shown()[lane];
    const QRectF letter = paintLabel(painter, theme(), bold, lanes_[lane].topLeft() + QPointF(2, 0),
                                     QString::fromUtf8(kChannelNames[c]), theme().channels[c]);
    if (!figures()) continue;
    for (std::size_t b = 0; b < kBands.size(); ++b) {
      QRectF room = cell(lane, b).adjusted(2, 2, -2, 0);
      if (b == 0) room.setLeft(letter.right());
      paintValue(painter, room, channels_[c], b);
    }
  }
}

QStringList EEGSpectrumView::readOut(QPointF at) const {
  for (std::size_t lane = 0; lane < std::min(shown().size(), lanes_.size()); ++lane) {
    for (std::size_t b = 0; b < kBands.size(); ++b) {
      const QRectF box = cell(lane, b);
      if (!box.contains(at)) continue;
      const Channel& channel = channels_[shown()[lane]];
      const double frequency =
          kBands[b].low + (at.x() - box.left()) / box.width() * (kBands[b].high - kBands[b].low);
      const auto bin = static_cast<std::size_t>(std::lround(frequency / binWidth_));
      if (bin >= channel.pyramid.size()) return {};
      const double level = static_cast<double>(channel.pyramid.at(bin));
      return {QStringLiteral("%1, %2, %3 Hz")
                  .arg(kChannelNames[shown()[lane]])
                  .arg(bandName(b))
                  .arg(numberText(static_cast<double>(bin) * binWidth_, 2)),
              QStringLiteral("%1 %2").arg(figureText(scale_.shown(level, channel.factor)),
                                          scale_.unit()),
              QStringLiteral("band %1 (%2 %)")
                  .arg(figureText(channel.sums.bands[b] * channel.factor))
                  .arg(numberText(100 * channel.shares.bands[b], 1))};
    }
  }
  return {};
}

}  // namespace ovka::desktop
