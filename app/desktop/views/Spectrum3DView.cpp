#include "Spectrum3DView.h"

#include <QFontMetricsF>
#include <QMouseEvent>
#include <QPainter>
#include <algorithm>
#include <cmath>

#include "FFTVariables.h"
#include "Plot.h"

namespace ovka::desktop {
namespace {

constexpr double kDecibels = 50;
constexpr double kLead = 1;           ///< rows; the newest is still being made
constexpr float kCountDepth = 0.16F;  ///< how far full counts hang below the floor

}  // namespace

Spectrum3DView::Spectrum3DView(Feed& feed, QWidget* parent)
    : SceneView(ViewKind::Spectrum3D, feed, parent) {}

Spectrum3DView::~Spectrum3DView() {
  leaveStage();
}

QStringList Spectrum3DView::modes() const {
  return {QStringLiteral("Spectrum"), QStringLiteral("Coherence of pairs")};
}

bool Spectrum3DView::uses(std::string_view field) const {
  return field != "average" && field != "hold" && field != "peaks" && field != "bands";
}

void Spectrum3DView::forget() {
  panels_.clear();
  auto_.reset();
}

void Spectrum3DView::ask(Feed& feed) {
  if (coherence()) feed.wantPairs(std::min(highF(), SpectrumRows::kTopHz));
}

double Spectrum3DView::highF() const {
  return std::min({static_cast<double>(choice().highF), nyquist_, SpectrumRows::kTopHz});
}

QColor Spectrum3DView::colorOf(std::size_t source) const {
  return source < kChannels ? theme().channels[source] : theme().pairs[source - kChannels];
}

Camera Spectrum3DView::camera() const {
  return {display::turnX, display::tiltX, display::distanceX};
}

double Spectrum3DView::heightOf(double value, const Panel& panel) const {
  if (coherence()) return value / 100;
  const double shown = scale_.shown(value, panel.factor);
  if (!scale_.decibels()) return shown / top_;
  return (shown - 20 * std::log10(top_)) / kDecibels + 1;
}

void Spectrum3DView::choosePanels(const Frame& frame) {
  std::vector<std::size_t> wanted;
  for (std::size_t c = 0; c < kChannels && !coherence(); ++c) {
    if (showsChannel(c) && frame.channels[c].active) wanted.push_back(c);
  }
  // Of the pairs chosen, those whose channels are both there and shown.
  static constexpr std::array<std::array<std::size_t, 2>, kPairs> kMembers{
      {{0, 1}, {2, 3}, {0, 2}, {1, 3}, {0, 3}, {1, 2}, {0, 1}, {2, 3}}};
  for (std::size_t p = 0; p < kPairs && coherence(); ++p) {
    const auto [first, second] = kMembers[p];
    if ((display::pairsX >> p & 1) != 0 && frame.channels[first].active &&
        frame.channels[second].active) {
      wanted.push_back(kChannels + p);
    }
  }
  const double nyquist = frame.sampleSpeed / 2.0;
  if (std::ranges::equal(wanted, panels_, {}, {}, &Panel::source) && nyquist == nyquist_ &&
      logScale_ == frame.logScale) {
    return;
  }
  nyquist_ = nyquist;
  logScale_ = frame.logScale;
  panels_.clear();
  for (const std::size_t source : wanted) panels_.emplace_back().source = source;
  layOut();
}

void Spectrum3DView::followScale(const Frame& frame) {
  if (coherence()) return;
  double greatest = 0;
  for (Panel& panel : panels_) {
    const FrameChannel& channel = frame.channels[panel.source];
    panel.factor = scale_.factorOf(channel);
    const auto from = static_cast<std::size_t>(static_cast<double>(choice().lowF) / frame.binWidth);
    const auto to =
        std::min(static_cast<std::size_t>(highF() / frame.binWidth) + 1, channel.spectrum.size());
    for (std::size_t bin = from; bin < to; ++bin) {
      greatest = std::max(greatest, channel.spectrum[bin] * panel.factor);
    }
  }
  const auto fixed = static_cast<double>(choice().top);
  const double top =
      (fixed > 0 ? fixed : auto_.follow(greatest, frame.time)) / static_cast<double>(choice().gain);
  if (top == top_) return;
  top_ = top;
  ++stamp_;
}

void Spectrum3DView::makeLandscape(Panel& panel, double newest) const {
  Landscape& land = panel.landscape;
  const double seconds = std::clamp(static_cast<double>(choice().seconds), 2.0, 110.0);
  const double each = seconds / SpectrumRows::kInterval / static_cast<double>(land.depth);
  // Landscape rows begin at fixed history rows, or their ridges would flicker while they move.
  const double front = std::floor(newest / each);
  land.shift = static_cast<float>(newest / each - front);
  panel.front = front;
  panel.each = each;
  land.heights.assign(land.depth * land.columns, 0.0F);
  land.rows = 0;
  for (std::size_t row = 0; row < land.depth; ++row) {
    const double high = (front - static_cast<double>(row)) * each;
    const auto last = static_cast<std::int64_t>(std::floor(high));
    const auto from = std::min(static_cast<std::int64_t>(std::floor(high - each)) + 1, last);
    if (from < static_cast<std::int64_t>(panel.rows.first()) ||
        last >= static_cast<std::int64_t>(panel.rows.taken())) {
      break;
    }
    float* out = land.heights.data() + row * land.columns;
    for (std::int64_t r = from; r <= last; ++r) {
      const std::uint16_t* heights = panel.rows.row(static_cast<std::uint64_t>(r));
      for (std::size_t c = 0; c < land.columns; ++c) {
        out[c] = std::max(out[c], static_cast<float>(heights[c]) / 65535.0F);
      }
    }
    ++land.rows;
  }
}

void Spectrum3DView::followSwitch(Panel& panel, const Frame& frame) {
  panel.threshold = -1;
  panel.counts.clear();
  if (panel.source >= kChannels) {
    const auto level = static_cast<double>(fft::coherenceSWlevel.get());
    panel.threshold = heightOf(level, panel);
    panel.thresholdText = QStringLiteral("switch above %1 %").arg(numberText(level, 0));
  } else {
    const std::vector<double>& spectrum = frame.channels[panel.source].spectrum;
    double sum = 0;
    for (std::size_t bin = 1; bin < spectrum.size(); ++bin) sum += spectrum[bin];
    const double mean = spectrum.size() > 1 ? sum / static_cast<double>(spectrum.size() - 1) : 0;
    const double level = std::max(static_cast<double>(fft::peakSWratio.get()) * mean,
                                  static_cast<double>(fft::peakSWlevel.get()));
    panel.threshold = heightOf(level, panel);
    panel.thresholdText = QStringLiteral("switch above %1 %2")
                              .arg(figureText(scale_.shown(level, panel.factor)), scale_.unit());
  }
  if (display::showCountsX == 0) return;
  const double most = std::max(static_cast<double>(fft::maxBScount.get()), 1.0);
  const std::size_t columns = panel.landscape.columns;
  panel.counts.assign(columns, 0.0F);
  const double low = static_cast<double>(choice().lowF);
  const auto from = static_cast<std::int64_t>(std::ceil(low / frame.binWidth));
  const auto to = static_cast<std::int64_t>(highF() / frame.binWidth);
  for (std::int64_t bin = from; bin <= to && bin < frame.bins; ++bin) {
    const double part = (static_cast<double>(bin) * frame.binWidth - low) / (highF() - low);
    const auto column = std::min(
        static_cast<std::size_t>(std::max(part, 0.0) * static_cast<double>(columns)), columns - 1);
    const std::int32_t count = feed().switchCount(static_cast<std::int32_t>(panel.source),
                                                  static_cast<std::uint64_t>(bin));
    panel.counts[column] =
        std::max(panel.counts[column], static_cast<float>(std::min(count / most, 1.0)));
  }
}

void Spectrum3DView::followPanel(Panel& panel, const Frame& frame) {
  HeightLayout layout;
  layout.track = panel.source;
  layout.highF = highF();
  layout.lowF = std::min(static_cast<double>(choice().lowF), layout.highF - 0.5);
  layout.columns = panel.landscape.columns;
  layout.stamp = stamp_;
  panel.rows.follow(feed().rows(), layout,
                    [this, &panel](double value) { return heightOf(value, panel); });
  const SpectrumRows& rows = feed().rows();
  if (rows.taken() == 0) return;
  const double age = (frame.smoothPoint - static_cast<double>(rows.pointOf(rows.taken() - 1))) /
                     (SpectrumRows::kInterval * frame.sampleSpeed);
  makeLandscape(panel, static_cast<double>(rows.taken() - 1) - kLead + std::clamp(age, -1.0, 1.0));
  if (frame.fresh) followSwitch(panel, frame);
}

bool Spectrum3DView::take(const Frame& frame) {
  if (!frame.alive) return true;
  choosePanels(frame);
  followScale(frame);
  for (Panel& panel : panels_) followPanel(panel, frame);
  stalePicture();
  return true;
}

void Spectrum3DView::layOut() {
  scale_ = ValueScale(choice().unit, choice().scale, logScale_);
  ++stamp_;
  const auto count = static_cast<int>(std::max<std::size_t>(panels_.size(), 1));
  // As square as the view allows.
  int across = 1;
  while (across < count &&
         (width() / across) > 1.3 * height() / std::ceil(count / double(across))) {
    ++across;
  }
  const int down = (count + across - 1) / across;
  const double wide = width() / static_cast<double>(across);
  const double tall = height() / static_cast<double>(down);
  for (int i = 0; i < static_cast<int>(panels_.size()); ++i) {
    panels_[static_cast<std::size_t>(i)].area =
        QRectF(std::round(i % across * wide), std::round(i / across * tall), std::floor(wide),
               std::floor(tall));
    // Many small landscapes cost no more than a large one.
    Landscape& land = panels_[static_cast<std::size_t>(i)].landscape;
    const std::size_t columns = count > 2 ? 80 : 160;
    if (land.columns == columns) continue;
    land.columns = columns;
    land.depth = count > 2 ? 45 : 90;
    land.rows = 0;
  }
}

bool Spectrum3DView::beginGl() {
  gl_ = std::make_unique<LandscapeGl>();
  return gl_->ready();
}

void Spectrum3DView::endGl() {
  gl_.reset();
}

void Spectrum3DView::drawGl(const QSize& pixels) {
  const double ratio = devicePixelRatioF();
  const float opacity = std::clamp(display::alpha3DX.get(), 0.1F, 1.0F);
  for (const Panel& panel : panels_) {
    gl_->draw(panel.landscape, camera().matrix(panel.area.width(), panel.area.height()),
              QRectF(panel.area.topLeft() * ratio, panel.area.size() * ratio), pixels,
              choice().palette, opacity);
  }
}

void Spectrum3DView::paintImage(QPainter& painter) {
  for (const Panel& panel : panels_) {
    paintLandscape(painter, panel.landscape,
                   camera().matrix(panel.area.width(), panel.area.height()), panel.area,
                   choice().palette, theme(),
                   std::clamp(static_cast<double>(display::alpha3DX.get()), 0.1, 1.0));
  }
}

/// The frame of the floor with frequencies along the front and time along the right.
void Spectrum3DView::paintFloor(QPainter& painter, const Panel& panel, const QMatrix4x4& matrix) {
  const QFont font = labelFont(panels_.size() > 2 ? 0.85 : 1);
  const QFontMetricsF metrics(font);
  const auto at = [&](float x, float y, float z) {
    return projected(matrix, panel.area, QVector3D(x, y, z)).value_or(QPointF());
  };
  painter.setFont(font);
  painter.setPen(theme().axis);
  painter.drawLine(at(-1, 0, 1), at(1, 0, 1));
  painter.drawLine(at(1, 0, 1), at(1, 0, -1));
  const double low = std::min(static_cast<double>(choice().lowF), highF() - 0.5);
  const double front = std::hypot(at(1, 0, 1).x() - at(-1, 0, 1).x(), 1.0);
  const Ticks ticks =
      ticksOf(low, highF(), std::max(front / (metrics.horizontalAdvance("0000") + 8), 1.0));
  const bool hanging = display::showCountsX != 0 && !panel.counts.empty();
  for (int i = 0; i < ticks.count; ++i) {
    const auto x = static_cast<float>(2 * (ticks.at(i) - low) / (highF() - low) - 1);
    const QPointF foot = at(x, hanging ? -kCountDepth : 0, 1);
    painter.setPen(theme().quietText);
    const bool last = i + 1 == ticks.count;
    const QString text =
        numberText(ticks.at(i), ticks.decimals) + (last ? QStringLiteral(" Hz") : QString());
    painter.drawText(
        QPointF(foot.x() - metrics.horizontalAdvance(text) / 2, foot.y() + 4 + metrics.ascent()),
        text);
  }
  const double seconds = std::clamp(static_cast<double>(choice().seconds), 2.0, 110.0);
  const Ticks time = ticksOf(0, seconds, 4);
  for (int i = 1; i < time.count; ++i) {
    const QPointF side = at(1.03F, 0, static_cast<float>(1 - 2 * time.at(i) / seconds));
    painter.drawText(side + QPointF(4, metrics.capHeight() / 2),
                     QStringLiteral("−%1 s").arg(time.at(i)));
  }
}

void Spectrum3DView::paintSwitch(QPainter& painter, const Panel& panel, const QMatrix4x4& matrix) {
  const QFont font = labelFont();
  const auto at = [&](float x, float y) {
    return projected(matrix, panel.area, QVector3D(x, y, 1)).value_or(QPointF());
  };
  const bool inside = panel.threshold >= 0 && panel.threshold <= 1.2;
  if (display::showThresholdX != 0 && inside) {
    const auto y = static_cast<float>(panel.threshold) * Landscape::kTall;
    painter.setPen(QPen(theme().warning, 1.5, Qt::DashLine));
    painter.drawLine(at(-1, y), at(1, y));
  }
  if (panel.counts.empty()) return;
  painter.setPen(Qt::NoPen);
  const float each = 2.0F / static_cast<float>(panel.counts.size());
  for (std::size_t c = 0; c < panel.counts.size(); ++c) {
    if (panel.counts[c] <= 0) continue;
    const float left = -1 + each * static_cast<float>(c);
    const float deep = -kCountDepth * panel.counts[c];
    QColor color = theme().warning;
    color.setAlphaF(panel.counts[c] >= 1 ? 1.0F : 0.6F);
    painter.setBrush(color);
    const std::array<QPointF, 4> bar{at(left, 0), at(left + each, 0), at(left + each, deep),
                                     at(left, deep)};
    painter.drawPolygon(bar.data(), 4);
  }
}

void Spectrum3DView::paintFigures(QPainter& painter) {
  painter.setRenderHint(QPainter::Antialiasing);
  QFont large = labelFont(1.35);
  large.setBold(true);
  for (const Panel& panel : panels_) {
    const QMatrix4x4 matrix = camera().matrix(panel.area.width(), panel.area.height());
    paintFloor(painter, panel, matrix);
    paintSwitch(painter, panel, matrix);
    const QString name =
        QString::fromUtf8(panel.source < kChannels ? kChannelNames[panel.source]
                                                   : kPairNames[panel.source - kChannels]);
    const QRectF box = paintLabel(painter, theme(), large, panel.area.topLeft() + QPointF(6, 4),
                                  name, colorOf(panel.source));
    QStringList facts;
    if (coherence()) {
      facts << QStringLiteral("coherence to 100 %");
    } else if (scale_.decibels()) {
      facts << QStringLiteral("to %1 %2").arg(numberText(20 * std::log10(top_), 0), scale_.unit());
    } else {
      facts << QStringLiteral("to %1 %2").arg(figureText(top_), scale_.unit());
    }
    if (display::showThresholdX != 0 && panel.threshold >= 0) facts << panel.thresholdText;
    if (display::showCountsX != 0) {
      facts << QStringLiteral("counts of the last %1").arg(fft::maxBScount.get());
    }
    const QFont font = labelFont();
    const QFontMetricsF metrics(font);
    painter.setFont(font);
    painter.setPen(theme().quietText);
    const double room = panel.area.right() - box.right() - 8;
    QString text = facts.join(QStringLiteral(" · "));
    if (metrics.horizontalAdvance(text) > room) text = facts.front();
    if (metrics.horizontalAdvance(text) > room) continue;
    painter.drawText(QPointF(box.right() + 6, box.top() + 6 + metrics.ascent()), text);
  }
}

}  // namespace ovka::desktop
