#include "Scale.h"

#include <algorithm>
#include <cmath>

namespace ovka::desktop {
namespace {

/// How long (s) a signal stays small before the scale follows it down.
constexpr double kPatience = 4;

}  // namespace

double niceCeiling(double value) {
  if (!(value > 0) || !std::isfinite(value)) return 1;
  const double power = std::pow(10.0, std::floor(std::log10(value)));
  for (const double step : {1.0, 2.0, 5.0}) {
    if (value <= step * power * (1 + 1e-9)) return step * power;
  }
  return 10 * power;
}

Ticks ticksOf(double low, double high, double most) {
  Ticks ticks;
  const double span = high - low;
  if (!(span > 0) || !std::isfinite(span)) return ticks;
  ticks.step = niceCeiling(span / std::max(most, 1.0));
  ticks.first = std::ceil(low / ticks.step - 1e-9) * ticks.step;
  ticks.count = static_cast<int>(std::floor((high - ticks.first) / ticks.step + 1e-9)) + 1;
  ticks.decimals = std::clamp(static_cast<int>(-std::floor(std::log10(ticks.step) + 1e-9)), 0, 6);
  return ticks;
}

QString numberText(double value, int decimals) {
  const double half = 0.5 * std::pow(10.0, -decimals);
  QString text = QString::number(std::abs(value) < half ? 0.0 : value, 'f', decimals);
  if (text.startsWith('-')) text[0] = QChar(0x2212);
  return text;
}

QString figureText(double value) {
  const double size = std::abs(value);
  return numberText(value, size >= 99.95 ? 0 : size >= 9.995 ? 1 : 2);
}

QString clockText(double seconds, double step) {
  const int decimals = step < 0.095 ? 2 : step < 0.95 ? 1 : 0;
  const double scale = std::pow(10.0, decimals);
  const double whole = std::round(std::max(seconds, 0.0) * scale) / scale;
  const auto minutes = static_cast<int>(whole / 60);
  const QString rest = QString::number(whole - 60.0 * minutes, 'f', decimals)
                           .rightJustified(decimals > 0 ? decimals + 3 : 2, '0');
  if (minutes < 60) return QStringLiteral("%1:%2").arg(minutes).arg(rest);
  return QStringLiteral("%1:%2:%3")
      .arg(minutes / 60)
      .arg(minutes % 60, 2, 10, QChar('0'))
      .arg(rest);
}

double ValueScale::factorOf(const FrameChannel& channel) const {
  // The engine's logarithm is of the level: no factor can be put to it.
  if (log_) return 1;
  return microvolts_ ? channel.displayGain / channel.levelPerMicrovolt : channel.displayGain;
}

double ValueScale::shown(double level, double factor) const {
  const double value = level * factor;
  if (!decibels_) return value;
  return value > 0 ? std::max(20 * std::log10(value), floor()) : floor();
}

double ValueScale::shown(double level, const FrameChannel& channel) const {
  return shown(level, factorOf(channel));
}

QString ValueScale::unit() const {
  if (log_) return QStringLiteral("log level");
  if (decibels_) return microvolts_ ? QStringLiteral("dB µV") : QStringLiteral("dB level");
  return microvolts_ ? QStringLiteral("µV") : QStringLiteral("level");
}

double AutoTop::follow(double greatest, double time) {
  const double value = std::isfinite(greatest) ? std::max(greatest, 0.0) : 0.0;
  if (since_ < 0 || value > top_) {
    top_ = std::max(niceCeiling(value * 1.1), least_);
    since_ = time;
    greatest_ = 0;
    return top_;
  }
  greatest_ = std::max(greatest_, value);
  if (value > 0.4 * top_) {
    since_ = time;
    greatest_ = 0;
  } else if (time - since_ > kPatience) {
    top_ = std::max(niceCeiling(greatest_ * 1.2), least_);
    since_ = time;
    greatest_ = 0;
  }
  return top_;
}

void AutoTop::reset() {
  since_ = -1;
}

}  // namespace ovka::desktop
