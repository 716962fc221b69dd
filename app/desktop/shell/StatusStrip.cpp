#include "StatusStrip.h"

#include <QHBoxLayout>
#include <QLabel>
#include <algorithm>

#include "AmplifierVariables.h"
#include "BufferVariables.h"
#include "Look.h"

namespace ovka::desktop {
namespace {

constexpr double kLookedAt = 2;                       // s of samples that a judgement takes
constexpr std::int64_t kRemembered = 10'000'000'000;  // ns that a loss stays in sight

struct StateWords {
  const char* text;
  const char* tip;
};

StateWords wordsOf(SignalState state) {
  switch (state) {
    case SignalState::Good:
      return {"good",
              "The electrode delivers a signal; the figure is its range from the lowest to "
              "the highest sample."};
    case SignalState::Hum:
      return {"mains hum",
              "Most of the signal is hum of the power line: press the electrode on, "
              "move away from power cords."};
    case SignalState::Railed:
      return {"railed",
              "The amplifier's input is at its limit: the electrode has no contact or "
              "the gain is too high."};
    case SignalState::Flat:
      return {"flat", "No signal at all: the electrode or its cable is not connected."};
    case SignalState::Unknown:
      break;
  }
  return {"–", "Not enough samples yet."};
}

QString microvolts(double value) {
  return value >= 1000 ? QStringLiteral("%1 mV").arg(value / 1000, 0, 'f', 1)
                       : QStringLiteral("%1 µV").arg(value, 0, 'f', 0);
}

}  // namespace

StatusStrip::StatusStrip(Workbench& bench, QWidget* parent)
    : QFrame(parent), bench_(bench), losses_(new QLabel), delay_(new QLabel), place_(new QLabel) {
  setObjectName(QStringLiteral("strip"));
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(16, 6, 16, 6);
  row->setSpacing(3 * look::kGrid);
  for (std::size_t channel = 0; channel < channels_.size(); ++channel) {
    channels_[channel] = new QLabel;
    channels_[channel]->setObjectName(
        QStringLiteral("quality%1").arg(QLatin1String(kChannelNames[channel])));
    channels_[channel]->setAccessibleName(
        QStringLiteral("Channel %1").arg(QLatin1String(kChannelNames[channel])));
    channels_[channel]->setFont(look::font(look::Type::Strong));
    row->addWidget(channels_[channel]);
  }
  row->addSpacing(look::kGrid);
  losses_->setObjectName(QStringLiteral("losses"));
  delay_->setObjectName(QStringLiteral("delay"));
  place_->setObjectName(QStringLiteral("place"));
  place_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
  place_->setProperty("quiet", true);
  place_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
  row->addWidget(losses_);
  row->addWidget(delay_);
  row->addWidget(place_, 1);
  connect(&bench_, &Workbench::engineChanged, this, [this] {
    picture_.reset();
    lostBefore_ = lostAt_ = 0;
  });
  connect(&bench_.feed(), &Feed::pulled, this, [this] {
    // A capture runs on a clock of its own.
    const bool line = bench_.source().kind == SourceChoice::Kind::Demo ||
                      bench_.source().kind == SourceChoice::Kind::Serial;
    if (line && buffer::setPauseX == 0 && bench_.recorder().acquires())
      picture_.take(bench_.clock().nanoseconds(), amplifier::newestReadAt);
  });
  applyLook();
}

void StatusStrip::applyLook() {
  judged_.fill(-1);
  refresh();
}

void StatusStrip::setPlace(const QString& path) {
  path_ = path;
  refreshPlace();
}

void StatusStrip::paint(QLabel* label, const QColor& dot, const QString& text, const QString& tip) {
  const QString rich = QStringLiteral("<span style='color:%1'>●</span>&nbsp;%2")
                           .arg(dot.name(), text.toHtmlEscaped());
  if (label->text() != rich) label->setText(rich);
  label->setToolTip(tip);
  label->setAccessibleDescription(text + QStringLiteral(". ") + tip);
}

void StatusStrip::refresh() {
  // One channel a turn: judging costs some milliseconds at high speeds.
  refreshChannel(turn_++ % channels_.size());
  refreshLosses();
  refreshDelay();
  refreshPlace();
}

void StatusStrip::refreshChannel(std::size_t channel) {
  const Frame& frame = bench_.feed().frame();
  QLabel* label = channels_[channel];
  const bool there = bench_.engine() != nullptr && frame.alive && frame.channels[channel].active;
  label->setVisible(there);
  if (!there) return;
  const bool known = judged_[channel] == frame.point && bench_.feed().rests();
  judged_[channel] = frame.point;
  if (known) return;
  const double speed = frame.sampleSpeed;
  const auto count = static_cast<std::int64_t>(kLookedAt * speed);
  const std::int64_t first = std::max(frame.point - count, frame.pointStart);
  samples_.resize(static_cast<std::size_t>(std::max<std::int64_t>(frame.point - first, 0)));
  bench_.feed().readWave(channel, first, samples_);
  const SignalQuality quality = judgeSignal(samples_, speed, amplifierLimit());
  const look::Colors colors = look::colors(look::theme());
  const StateWords words = wordsOf(quality.state);
  QString text = QStringLiteral("%1 ").arg(QLatin1String(kChannelNames[channel]));
  text += quality.state == SignalState::Good ? microvolts(quality.peakToPeak)
                                             : QString::fromUtf8(words.text);
  QString tip = QString::fromUtf8(words.tip);
  if (quality.state == SignalState::Hum)
    tip += QStringLiteral(" (%1 %% at %2 Hz)")
               .arg(quality.humShare * 100, 0, 'f', 0)
               .arg(quality.humFrequency, 0, 'f', 0)
               .replace(QStringLiteral("%%"), QStringLiteral("%"));
  paint(label,
        quality.state == SignalState::Good      ? colors.good
        : quality.state == SignalState::Unknown ? look::theme().quietText
        : quality.state == SignalState::Hum     ? colors.warn
                                                : colors.record,
        text, tip);
}

void StatusStrip::refreshLosses() {
  losses_->setVisible(bench_.engine() != nullptr && bench_.recorder().acquires());
  if (bench_.engine() == nullptr) return;
  QStringList causes;
  std::int64_t lost = 0;
  for (const LossCause& cause : kLossCauses) {
    const auto count = static_cast<std::int64_t>((bench_.engine()->losses().*cause.count).get());
    lost += count;
    if (count > 0) causes << QStringLiteral("%1: %2").arg(QLatin1String(cause.text)).arg(count);
  }
  const std::int64_t now = bench_.clock().nanoseconds();
  if (lost != lostBefore_) lostAt_ = now;
  lostBefore_ = lost;
  const look::Colors colors = look::colors(look::theme());
  const bool recent = lostAt_ != 0 && now - lostAt_ < kRemembered;
  paint(losses_,
        recent     ? colors.record
        : lost > 0 ? colors.warn
                   : colors.good,
        lost == 0 ? QStringLiteral("nothing lost") : QStringLiteral("%1 lost").arg(lost),
        lost == 0
            ? QStringLiteral("Every byte that was received became a sample.")
            : QStringLiteral("Received, but no sample: %1").arg(causes.join(QStringLiteral("; "))));
}

void StatusStrip::refreshDelay() {
  const PictureDelay::Figures figures = picture_.figures(bench_.clock().nanoseconds());
  delay_->setVisible(figures.known);
  if (!figures.known) return;
  const look::Colors colors = look::colors(look::theme());
  paint(delay_, figures.median < 100 ? colors.good : colors.warn,
        QStringLiteral("%1 ms old").arg(figures.median, 0, 'f', 0),
        QStringLiteral("How old the newest samples are in the picture: from the reading of the "
                       "line to the frame, %1 ms in the middle and %2 ms at worst over the last "
                       "ten seconds. %3 frames a second.")
            .arg(figures.median, 0, 'f', 0)
            .arg(figures.worst, 0, 'f', 0)
            .arg(bench_.feed().framesPerSecond(), 0, 'f', 0));
}

void StatusStrip::refreshPlace() {
  QString text;
  QString tip;
  const RecordState state = bench_.recorder().state();
  const bool running = state == RecordState::Recording || state == RecordState::Paused;
  if (running && bench_.engine() != nullptr) {
    const JournalStatus status = bench_.engine()->documents()->journal().status();
    const QString path = QString::fromStdString(status.path);
    text = path.isEmpty()
               ? QStringLiteral("in memory")
               : QStringLiteral("%1 · %2").arg(path.section(QLatin1Char('/'), -1),
                                               sizeText(static_cast<double>(status.bytes)));
    if (status.freeBytes)
      text += QStringLiteral(" · %1 free").arg(sizeText(static_cast<double>(*status.freeBytes)));
    tip =
        QStringLiteral("The journal that keeps the recording safe while it is made: %1").arg(path);
  } else if (!path_.isEmpty()) {
    text = path_;
    tip = QStringLiteral("The document that is open.");
  } else {
    text = bench_.sourceText();
    tip = QStringLiteral("Where the samples come from.");
  }
  const QString shown =
      place_->fontMetrics().elidedText(text, Qt::ElideMiddle, std::max(place_->width(), 40));
  if (place_->text() != shown) place_->setText(shown);
  place_->setToolTip(tip);
}

}  // namespace ovka::desktop
