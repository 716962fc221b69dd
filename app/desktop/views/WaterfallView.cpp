#include "WaterfallView.h"

#include <QFontMetricsF>
#include <QPainter>
#include <algorithm>
#include <cmath>

#include "WaterfallGl.h"

namespace ovka::desktop {
namespace {

constexpr double kDecibels = 40;  ///< range of the palette
/// The newest row is drawn a row late: it is still being made.
constexpr double kLead = 1;

}  // namespace

WaterfallView::WaterfallView(Feed& feed, QWidget* parent)
    : SceneView(ViewKind::Waterfall, feed, parent) {}

WaterfallView::~WaterfallView() {
  leaveStage();
}

QStringList WaterfallView::modes() const {
  return {QStringLiteral("Flowing down"), QStringLiteral("Flowing left")};
}

bool WaterfallView::uses(std::string_view field) const {
  return field != "average" && field != "hold" && field != "peaks";
}

void WaterfallView::forget() {
  for (HeightRows& rows : rows_) rows.forget();
  auto_.reset();
}

double WaterfallView::rowsShown() const {
  const double rows = static_cast<double>(choice().seconds) / SpectrumRows::kInterval;
  return std::clamp(rows, 10.0, static_cast<double>(SpectrumRows::kRows) - 4);
}

double WaterfallView::heightOf(double level, double factor) const {
  const double value = scale_.shown(level, factor);
  if (!scale_.decibels()) return value / top_;
  return (value - 20 * std::log10(top_)) / kDecibels + 1;
}

void WaterfallView::followScale(const Frame& frame) {
  const double high = std::min(static_cast<double>(choice().highF), nyquist_);
  double greatest = 0;
  for (const Panel& panel : panels_) {
    const FrameChannel& channel = frame.channels[panel.channel];
    factors_[panel.channel] = scale_.factorOf(channel);
    const auto from = static_cast<std::size_t>(static_cast<double>(choice().lowF) / frame.binWidth);
    const auto to =
        std::min(static_cast<std::size_t>(high / frame.binWidth) + 1, channel.spectrum.size());
    for (std::size_t bin = from; bin < to; ++bin) {
      greatest = std::max(greatest, channel.spectrum[bin] * factors_[panel.channel]);
    }
  }
  const auto fixed = static_cast<double>(choice().top);
  const double top =
      (fixed > 0 ? fixed : auto_.follow(greatest, frame.time)) / static_cast<double>(choice().gain);
  if (top == top_) return;
  top_ = top;
  ++stamp_;
}

bool WaterfallView::take(const Frame& frame) {
  if (!frame.alive) return true;
  std::vector<std::size_t> wanted;
  for (std::size_t c = 0; c < kChannels; ++c) {
    if (showsChannel(c) && frame.channels[c].active) wanted.push_back(c);
  }
  const double nyquist = frame.sampleSpeed / 2.0;
  const bool same = std::ranges::equal(wanted, panels_, {}, {}, &Panel::channel) &&
                    nyquist == nyquist_ && frame.logScale == logScale_;
  nyquist_ = nyquist;
  logScale_ = frame.logScale;
  if (!same) {
    panels_.clear();
    for (const std::size_t c : wanted) panels_.push_back({c, {}});
    prepare();
  }
  followScale(frame);
  followRows();
  stalePicture();
  const SpectrumRows& rows = feed().rows();
  now_ = frame.smoothPoint / frame.sampleSpeed;
  if (rows.taken() == 0) return false;
  const double age = (frame.smoothPoint - static_cast<double>(rows.pointOf(rows.taken() - 1))) /
                     (SpectrumRows::kInterval * frame.sampleSpeed);
  newest_ = static_cast<double>(rows.taken() - 1) - kLead + std::clamp(age, -1.0, 1.0);
  return true;
}

void WaterfallView::followRows() {
  const double high = std::min(static_cast<double>(choice().highF), nyquist_);
  for (std::size_t i = 0; i < panels_.size(); ++i) {
    const std::size_t c = panels_[i].channel;
    const double pixels = sideways() ? panels_[i].area.height() : panels_[i].area.width();
    HeightLayout layout;
    layout.track = c;
    layout.lowF = std::min(static_cast<double>(choice().lowF), high - 0.5);
    layout.highF = std::min(high, SpectrumRows::kTopHz);
    layout.columns = static_cast<std::size_t>(std::max(pixels * devicePixelRatioF(), 1.0));
    layout.stamp = stamp_;
    const double factor = factors_[c];
    const std::uint64_t from = rows_[i].follow(
        feed().rows(), layout, [this, factor](double level) { return heightOf(level, factor); });
    changed_[i] = std::min(changed_[i], from);
  }
}

void WaterfallView::layOut() {
  scale_ = ValueScale(choice().unit, choice().scale, logScale_);
  ++stamp_;
  const QFont font = labelFont();
  area_ = plotArea(rect(), font);
  const double keyWidth = QFontMetricsF(font).horizontalAdvance(QStringLiteral("0000")) + 16;
  const bool key = area_.width() > 6 * keyWidth;
  if (key) area_.setRight(area_.right() - keyWidth);
  key_ = key ? QRectF(area_.right() + 10, area_.top(), 10, area_.height()) : QRectF();
  const auto count = static_cast<double>(std::max<std::size_t>(panels_.size(), 1));
  const double gap = 10;
  for (std::size_t i = 0; i < panels_.size(); ++i) {
    const auto number = static_cast<double>(i);
    if (sideways()) {
      const double height = std::floor((area_.height() - gap * (count - 1)) / count);
      panels_[i].area = QRectF(area_.left(), std::round(area_.top() + number * (height + gap)),
                               area_.width(), std::max(height, 4.0));
    } else {
      const double width = std::floor((area_.width() - gap * (count - 1)) / count);
      panels_[i].area = QRectF(std::round(area_.left() + number * (width + gap)), area_.top(),
                               std::max(width, 4.0), area_.height());
    }
  }
  followRows();
}

Plot WaterfallView::plotOf(const Panel& panel) const {
  const double high = std::min(static_cast<double>(choice().highF), nyquist_);
  const Axis frequency{std::min(static_cast<double>(choice().lowF), high - 0.5), high,
                       QStringLiteral("Hz")};
  const double seconds = rowsShown() * SpectrumRows::kInterval;
  const Axis time{now_ - seconds, now_, {}};
  return sideways() ? Plot{panel.area, time, frequency} : Plot{panel.area, frequency, time};
}

bool WaterfallView::beginGl() {
  gl_ = std::make_unique<WaterfallGl>();
  changed_.fill(0);
  return gl_->ready();
}

void WaterfallView::endGl() {
  gl_.reset();
}

void WaterfallView::drawGl(const QSize& pixels) {
  const double ratio = devicePixelRatioF();
  for (std::size_t i = 0; i < panels_.size(); ++i) {
    const QRectF& area = panels_[i].area;
    gl_->upload(i, rows_[i], changed_[i]);
    changed_[i] = rows_[i].taken();
    gl_->draw(i, rows_[i],
              {QRectF(area.topLeft() * ratio, area.size() * ratio), pixels, newest_, rowsShown(),
               sideways(), choice().palette});
  }
}

/// Row by row of pixels; each the greatest of the history rows that it covers.
void WaterfallView::paintPanel(const Panel& panel, std::size_t index) {
  const double ratio = devicePixelRatioF();
  const HeightRows& rows = rows_[index];
  QImage& image = images_[index];
  const QSize size(static_cast<int>(panel.area.width() * ratio),
                   static_cast<int>(panel.area.height() * ratio));
  if (image.size() != size) image = QImage(size, QImage::Format_RGB32);
  image.fill(theme().ground);  // as OpenGL leaves it
  const int lines = sideways() ? size.width() : size.height();
  const double each = rowsShown() / std::max(lines, 1);
  const std::array<QRgb, 256>& colors = heatPalette(choice().palette).colors;
  const std::size_t columns = rows.columns();
  for (int line = 0; line < lines; ++line) {
    const double high = newest_ - each * line;
    const auto last = static_cast<std::int64_t>(std::floor(high));
    const auto from = std::min(static_cast<std::int64_t>(std::floor(high - each)) + 1, last);
    if (from < static_cast<std::int64_t>(rows.first()) ||
        last >= static_cast<std::int64_t>(rows.taken())) {
      continue;
    }
    for (std::size_t c = 0; c < columns; ++c) {
      std::uint16_t greatest = 0;
      for (std::int64_t row = from; row <= last; ++row) {
        greatest = std::max(greatest, rows.row(static_cast<std::uint64_t>(row))[c]);
      }
      const QRgb color = colors[greatest >> 8];
      const int along = static_cast<int>(c);
      if (sideways()) {
        if (along < size.height()) {
          image.setPixel(lines - 1 - line, size.height() - 1 - along, color);
        }
      } else if (along < size.width()) {
        reinterpret_cast<QRgb*>(image.scanLine(line))[along] = color;
      }
    }
  }
  image.setDevicePixelRatio(ratio);
}

void WaterfallView::paintImage(QPainter& painter) {
  images_.resize(panels_.size());
  for (std::size_t i = 0; i < panels_.size(); ++i) {
    paintPanel(panels_[i], i);
    painter.drawImage(panels_[i].area.topLeft(), images_[i]);
  }
}

void WaterfallView::paintTime(QPainter& painter, const Plot& plot) {
  const QFont font = labelFont();
  const QFontMetricsF metrics(font);
  const Axis& time = sideways() ? plot.x : plot.y;
  const double room = sideways() ? plot.area.width() / (7 * font.pixelSize())
                                 : plot.area.height() / (3 * metrics.height());
  const Ticks ticks = ticksOf(time.low, time.high, std::max(room, 1.0));
  painter.setFont(font);
  for (int i = 0; i < ticks.count; ++i) {
    const double at = ticks.at(i);
    if (at < 0) continue;
    const QString text = clockText(at, ticks.step);
    painter.setPen(theme().quietText);
    if (sideways()) {
      const double x = plot.toX(at);
      painter.drawText(
          QPointF(x - metrics.horizontalAdvance(text) / 2, area_.bottom() + 6 + metrics.ascent()),
          text);
    } else {
      const double y = plot.toY(at);
      if (y < plot.area.top() + metrics.capHeight() / 2) continue;
      painter.drawText(
          QPointF(area_.left() - 6 - metrics.horizontalAdvance(text), y + metrics.capHeight() / 2),
          text);
    }
  }
}

/// The scale of colours at the right, with its ends.
void WaterfallView::paintKey(QPainter& painter) {
  if (key_.isEmpty()) return;
  const std::array<QRgb, 256>& colors = heatPalette(choice().palette).colors;
  for (int y = 0; y < static_cast<int>(key_.height()); ++y) {
    const auto at = static_cast<std::size_t>(255 * (1 - y / key_.height()));
    painter.fillRect(QRectF(key_.left(), key_.top() + y, key_.width(), 1), QColor(colors[at]));
  }
  Plot plot;
  plot.area = key_;
  const double high = scale_.decibels() ? 20 * std::log10(top_) : top_;
  plot.y = {scale_.decibels() ? high - kDecibels : 0, high, {}};
  const QFont font = labelFont();
  const QFontMetricsF metrics(font);
  const Ticks ticks = ticksOf(plot.y.low, plot.y.high, key_.height() / (3 * metrics.height()));
  painter.setFont(font);
  painter.setPen(theme().quietText);
  for (int i = 0; i < ticks.count; ++i) {
    painter.drawText(QPointF(key_.right() + 4, labelBaseline(plot.toY(ticks.at(i)), key_, metrics)),
                     numberText(ticks.at(i), ticks.decimals));
  }
  painter.setPen(theme().text);
  const double width = metrics.horizontalAdvance(scale_.unit());
  painter.drawText(QPointF(std::min(key_.left(), this->width() - width - 2.0), key_.top() - 8),
                   scale_.unit());
}

void WaterfallView::paintFigures(QPainter& painter) {
  const QFont font = labelFont();
  QFont large = labelFont(1.35);
  large.setBold(true);
  for (std::size_t i = 0; i < panels_.size(); ++i) {
    const Plot plot = plotOf(panels_[i]);
    QColor line = theme().text;
    line.setAlpha(70);
    Theme thin = theme();
    thin.grid = thin.axis = line;
    if (sideways()) {
      paintYAxis(painter, plot, thin, font);
    } else {
      paintXAxis(painter, plot, thin, font);
    }
    if (i == 0) paintTime(painter, plot);
    paintLabel(painter, theme(), large, panels_[i].area.topLeft() + QPointF(6, 4),
               QString::fromUtf8(kChannelNames[panels_[i].channel]),
               theme().channels[panels_[i].channel]);
    if (choice().bands != 0 && !sideways()) {
      paintBandHeads(painter, plot, theme(), font, false);
    }
  }
  paintKey(painter);
}

QStringList WaterfallView::readOut(QPointF at) const {
  const SpectrumRows& rows = feed().rows();
  for (const Panel& panel : panels_) {
    if (!panel.area.contains(at)) continue;
    const Plot plot = plotOf(panel);
    const double frequency = sideways() ? plot.fromY(at.y()) : plot.fromX(at.x());
    const double time = sideways() ? plot.fromX(at.x()) : plot.fromY(at.y());
    const double row = newest_ - (now_ - time) / SpectrumRows::kInterval;
    if (row < 0) return {};
    const std::span<const float> values =
        rows.row(panel.channel, static_cast<std::uint64_t>(std::floor(row)));
    const auto value = static_cast<std::size_t>(std::lround(frequency / rows.valueWidth()));
    if (value >= values.size()) return {};
    const double level = static_cast<double>(values[value]);
    return {
        QStringLiteral("%1  %2").arg(kChannelNames[panel.channel]).arg(clockText(time, 0.1)),
        QStringLiteral("%1 Hz").arg(numberText(static_cast<double>(value) * rows.valueWidth(), 2)),
        QStringLiteral("%1 %2").arg(figureText(scale_.shown(level, factors_[panel.channel])),
                                    scale_.unit())};
  }
  return {};
}

}  // namespace ovka::desktop
