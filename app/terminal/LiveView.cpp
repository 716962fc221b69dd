#include "LiveView.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "LivePicture.h"

namespace ovka::terminal {
namespace {

/// Seconds in which the scale's memory of a large value falls to a third.
constexpr double kScaleMemory = 8.0;

/// The smallest of 1, 2, 5 times a power of ten that is not below `value`.
double roundUp(double value) {
  double step = std::pow(10.0, std::floor(std::log10(value)));
  if (!(step > 0) || !std::isfinite(step)) return value;
  for (const double factor : {1.0, 2.0, 5.0, 10.0}) {
    if (factor * step >= value) return factor * step;
  }
  return 10 * step;
}

}  // namespace

LiveKey liveKeyOf(char character) {
  switch (character) {
    case 'q':
    case 'Q':
    case '\x03':  // Ctrl-C, where the terminal hands it over as a character
    case '\x04':  // Ctrl-D
      return LiveKey::Quit;
    case 'p':
    case 'P':
    case ' ':
      return LiveKey::Pause;
    case 'l':
    case 'L':
      return LiveKey::Loop;
    case 'r':
    case 'R':
      return LiveKey::ResetCounters;
    case 'm':
    case 'M':
      return LiveKey::Shares;
    case 'x':
    case 'X':
      return LiveKey::Panic;
    case '?':
    case 'h':
    case 'H':
      return LiveKey::Help;
    default:
      return LiveKey::None;
  }
}

void AutoScale::update(double largest, double now) {
  if (!std::isfinite(largest) || largest < 0) largest = 0;
  const double passed = started_ ? std::max(now - last_, 0.0) : 0.0;
  last_ = now;
  held_ = std::max(largest, held_ * std::exp(-passed / kScaleMemory));
  if (held_ <= 0) {
    if (!started_) top_ = 1;
    return;
  }
  const double wanted = roundUp(held_);
  // A fall waits until the lower step has room to spare, so that the scale does not flutter.
  if (!started_ || wanted > top_ || (wanted < top_ && held_ < 0.85 * wanted)) top_ = wanted;
  started_ = true;
}

bool LiveView::press(LiveKey key) {
  if (key == LiveKey::Help) {
    showHelp_ = !showHelp_;
    return true;
  }
  if (key == LiveKey::Shares) {
    showShares_ = !showShares_;
    return true;
  }
  return false;
}

Canvas LiveView::draw(const LiveSnapshot& snapshot, int width, int height, double now) {
  double largestValue = 0;
  double largestShare = 0;
  for (const ChannelReading& channel : snapshot.channels) {
    if (!channel.active) continue;
    for (const double value : channel.powers.bands) {
      if (std::isfinite(value)) largestValue = std::max(largestValue, value);
      const double share = 100 * value / channel.powers.total;
      if (std::isfinite(share)) largestShare = std::max(largestShare, share);
    }
  }
  values_.update(largestValue, now);
  shares_.update(largestShare, now);
  LivePicture picture(snapshot, look_, Canvas(width, height));
  picture.shares = showShares_;
  picture.help = showHelp_;
  picture.scale = showShares_ ? std::min(shares_.top(), 100.0) : values_.top();
  return picture.draw();
}

}  // namespace ovka::terminal
