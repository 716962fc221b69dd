#include "NewaveView.h"

#include <algorithm>
#include <cmath>

#include "BandPowers.h"
#include "Histories.h"
#include "WavePyramid.h"

namespace ovka::desktop {
namespace {

/// A share that fills the colour scale: half of the power in one band is a strong rhythm.
constexpr float kFullShare = 0.5F;

}  // namespace

NewaveView::NewaveView(Feed& feed, QWidget* parent) : FlatView(ViewKind::Newave, feed, parent) {}

QStringList NewaveView::modes() const {
  return {QStringLiteral("Waves and bands"), QStringLiteral("Waves"), QStringLiteral("Bands")};
}

bool NewaveView::uses(std::string_view field) const {
  return field == "gain" || field == "top" || field == "seconds" || field == "palette" ||
         field == "freeze";
}

void NewaveView::forget() {
  channels_ = {};
  auto_.reset();
}

double NewaveView::pointsShown() const {
  return std::max(static_cast<double>(choice().seconds), 2.0) * speed_;
}

bool NewaveView::take(const Frame& frame) {
  if (!frame.alive) return true;
  speed_ = static_cast<double>(frame.sampleSpeed);
  const bool changed = followChannels(frame);
  if (changed) prepare();
  const std::size_t count = columns(area_);
  const double each = pointsShown() / static_cast<double>(count);
  const double end = std::floor(static_cast<double>(frame.point) / each) * each;
  // Within a column nothing moves that could be seen.
  if (end == end_ && !changed && edges_.size() == count + 1 && frame.number % 16 != 0) return false;
  end_ = end;
  evenEdges(end_ - pointsShown(), end_, count, edges_);
  for (const std::size_t c : shown()) {
    Channel& channel = channels_[c];
    channel.offset = frame.channels[c].offset;
    channel.envelope.resize(count);
    feed().wave().columns(c, edges_, channel.envelope);
    takeBands(c);
  }
  followScale(frame.time);
  return true;
}

void NewaveView::takeBands(std::size_t channel) {
  std::vector<std::array<float, 8>>& shares = channels_[channel].shares;
  shares.resize(edges_.size() - 1);
  const BandHistory& history = feed().bands();
  const auto step = static_cast<double>(BandHistory::step(feed().frame().sampleSpeed));
  for (std::size_t c = 0; c + 1 < edges_.size(); ++c) {
    const double middle = (edges_[c] + edges_[c + 1]) / 2;
    const BandHistory::Entry entry =
        history.at(channel, middle < 0 ? -1 : static_cast<std::int64_t>(middle / step));
    shares[c].fill(-1);
    if (entry.total < 0) continue;
    for (std::size_t b = 0; b < shares[c].size(); ++b) {
      shares[c][b] = entry.total > 0 ? entry.bands[b] / entry.total : 0;
    }
  }
}

double NewaveView::middleOf(std::size_t channel) const {
  if (choice().top > 0) return 0;
  Extent all;
  for (const Extent& column : channels_[channel].envelope) all.take(column);
  return all.empty() ? 0 : (static_cast<double>(all.low) + static_cast<double>(all.high)) / 2;
}

void NewaveView::followScale(double time) {
  double greatest = 0;
  for (const std::size_t c : shown()) {
    Extent all;
    for (const Extent& column : channels_[c].envelope) all.take(column);
    if (!all.empty()) greatest = std::max(greatest, static_cast<double>(all.high - all.low) / 2);
  }
  const double automatic = auto_.follow(greatest, time);
  const double half = static_cast<double>(choice().top > 0 ? choice().top : automatic) /
                      static_cast<double>(choice().gain);
  if (half == half_) return;
  half_ = half;
  staleBackground();
}

void NewaveView::layOut() {
  area_ = plotArea(rect(), labelFont());
  lanes_ = lanes(area_, 8);
  half_ = static_cast<double>(choice().top > 0 ? choice().top : auto_.top()) /
          static_cast<double>(choice().gain);
  edges_.clear();
}

QRectF NewaveView::waveRect(std::size_t lane) const {
  QRectF box = lanes_[lane];
  if (choice().mode == Both) box.setHeight(std::floor(box.height() * 0.5));
  return box;
}

QRectF NewaveView::bandRect(std::size_t lane) const {
  QRectF box = lanes_[lane];
  if (choice().mode == Both) box.setTop(box.top() + std::floor(box.height() * 0.5) + 2);
  return box;
}

void NewaveView::paintBackground(QPainter& painter) {
  const QFont font = labelFont();
  for (std::size_t lane = 0; lane < lanes_.size(); ++lane) {
    painter.fillRect(lanes_[lane], theme().plot);
    if (choice().mode != Bands) {
      Plot plot;
      plot.area = waveRect(lane);
      plot.y = {-half_, half_, lane == 0 ? QStringLiteral("µV") : QString()};
      paintYAxis(painter, plot, theme(), font);
    }
    if (choice().mode == Waves) continue;
    const QRectF rows = bandRect(lane);
    const double each = rows.height() / static_cast<double>(kBands.size());
    // As many names as can be read, alpha among them; low bands below, as in every other view.
    const auto every = static_cast<std::size_t>(std::clamp(std::ceil(12 / each), 1.0, 8.0));
    QFont small = font;
    small.setPixelSize(std::clamp(static_cast<int>(each * static_cast<double>(every)), 8,
                                  static_cast<int>(0.8 * font.pixelSize())));
    painter.setFont(small);
    painter.setPen(theme().quietText);
    for (std::size_t b = 3 % every; b < kBands.size(); b += every) {
      const double middle = rows.bottom() - each * (static_cast<double>(b) + 0.5);
      painter.drawText(QRectF(0, middle - 20, rows.left() - 5, 40),
                       Qt::AlignRight | Qt::AlignVCenter, bandName(b));
    }
  }
}

void NewaveView::paintBandRows(Picture& picture, std::size_t lane) {
  const QRectF rows = bandRect(lane);
  const double each = rows.height() / static_cast<double>(kBands.size());
  const double pixel = 1 / devicePixelRatioF();
  const HeatPalette& palette = heatPalette(choice().palette);
  const std::vector<std::array<float, 8>>& shares = channels_[shown()[lane]].shares;
  for (std::size_t c = 0; c < shares.size(); ++c) {
    if (shares[c][0] < 0) continue;
    const double x = rows.left() + static_cast<double>(c) * pixel;
    for (std::size_t b = 0; b < kBands.size(); ++b) {
      const float part = std::clamp(shares[c][b] / kFullShare, 0.0F, 1.0F);
      const double bottom = rows.bottom() - each * static_cast<double>(b);
      picture.box(QRectF(x, bottom - each, pixel, each),
                  QColor(palette.colors[static_cast<std::size_t>(std::lround(part * 255))]));
    }
  }
}

void NewaveView::paintCurves(Picture& picture) {
  for (std::size_t lane = 0; lane < std::min(shown().size(), lanes_.size()); ++lane) {
    const std::size_t c = shown()[lane];
    if (choice().mode != Waves) paintBandRows(picture, lane);
    if (choice().mode == Bands) continue;
    Plot plot;
    plot.area = waveRect(lane);
    plot.y = {-half_, half_, {}};
    const double middle = middleOf(c) - (choice().top > 0 ? channels_[c].offset : 0);
    std::vector<Extent> columns = channels_[c].envelope;
    for (Extent& extent : columns) {
      if (extent.empty()) continue;
      const double high = plot.toY(static_cast<double>(extent.high) - middle);
      const double low = plot.toY(static_cast<double>(extent.low) - middle);
      extent = {static_cast<float>(high), static_cast<float>(low)};
    }
    picture.curve(plot.area, columns, theme().channels[c], 1);
  }
}

void NewaveView::paintFigures(QPainter& painter) {
  const QFont font = labelFont();
  const QFontMetricsF metrics(font);
  painter.setFont(font);
  const double from = (end_ - pointsShown()) / speed_;
  const Ticks ticks = ticksOf(from, end_ / speed_, area_.width() / (7 * font.pixelSize()));
  // Round times of day-long recordings are quarters of minutes and of hours.
  double step = ticks.step;
  for (const double round : {1.0, 2.0, 5.0, 10.0, 15.0, 30.0, 60.0, 120.0, 300.0, 600.0, 900.0,
                             1800.0, 3600.0, 7200.0}) {
    if (round >= ticks.step * 0.99) {
      step = round;
      break;
    }
  }
  for (double at = std::ceil(from / step) * step; at <= end_ / speed_; at += step) {
    if (at < 0) continue;
    const double x = area_.left() + (at - from) / (end_ / speed_ - from) * area_.width();
    const QString text = clockText(at, step);
    const double width = metrics.horizontalAdvance(text);
    painter.setPen(theme().axis);
    painter.drawLine(QPointF(x, area_.bottom()), QPointF(x, area_.bottom() + 4));
    if (x - width / 2 < 0 || x + width / 2 > this->width()) continue;
    painter.setPen(theme().quietText);
    painter.drawText(QPointF(x - width / 2, area_.bottom() + 6 + metrics.ascent()), text);
  }
  QFont large = labelFont(1.35);
  large.setBold(true);
  for (std::size_t lane = 0; lane < std::min(shown().size(), lanes_.size()); ++lane) {
    paintLabel(painter, theme(), large, lanes_[lane].topLeft() + QPointF(6, 4),
               QString::fromUtf8(kChannelNames[shown()[lane]]), theme().channels[shown()[lane]]);
  }
}

QStringList NewaveView::readOut(QPointF at) const {
  const auto column =
      static_cast<std::size_t>(std::max((at.x() - area_.left()) * devicePixelRatioF(), 0.0));
  if (column + 1 >= edges_.size() || edges_[column] < 0) return {};
  QStringList lines{clockText(edges_[column] / speed_, 0.1)};
  for (std::size_t lane = 0; lane < std::min(shown().size(), lanes_.size()); ++lane) {
    if (!lanes_[lane].contains(at)) continue;
    const Channel& channel = channels_[shown()[lane]];
    const QString name = QString::fromUtf8(kChannelNames[shown()[lane]]);
    if (const Extent& extent = channel.envelope[column]; !extent.empty()) {
      lines << QStringLiteral("%1  %2 … %3 µV")
                   .arg(name, numberText(static_cast<double>(extent.low) + channel.offset, 0),
                        numberText(static_cast<double>(extent.high) + channel.offset, 0));
    }
    const QRectF rows = bandRect(lane);
    if (choice().mode == Waves || !rows.contains(at) || channel.shares[column][0] < 0) continue;
    const auto band =
        std::min(static_cast<std::size_t>((rows.bottom() - at.y()) / rows.height() * kBands.size()),
                 kBands.size() - 1);
    lines << QStringLiteral("%1  %2 %")
                 .arg(bandName(band),
                      numberText(100 * static_cast<double>(channel.shares[column][band]), 1));
  }
  return lines;
}

}  // namespace ovka::desktop
