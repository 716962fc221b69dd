#include "FaultInjector.h"

#include <algorithm>

namespace ovka {
namespace {

/// What a burst may hold back; beyond it the burst ends early, so memory stays bounded.
constexpr std::size_t kMaximumHeld = 1U << 20U;

std::uint64_t framesIn(double seconds, double samplesPerSecond) {
  return std::max<std::uint64_t>(static_cast<std::uint64_t>(seconds * samplesPerSecond), 1);
}

}  // namespace

FaultInjector::FaultInjector(const FaultChoice& choice, std::uint64_t seed)
    : choice_(choice), random_(seed ^ 0xFA017FA017FA0170U) {}

bool FaultInjector::begins(double perMinute, double samplesPerSecond) {
  return perMinute > 0.0 && random_.uniform() < perMinute / 60.0 / samplesPerSecond;
}

void FaultInjector::pass(std::span<const std::uint8_t> frame, double samplesPerSecond,
                         std::vector<std::uint8_t>& out) {
  if (stallLeft_ == 0 && burstLeft_ == 0) {
    if (begins(choice_.stallsPerMinute, samplesPerSecond)) {
      stallLeft_ = framesIn(choice_.stallSeconds, samplesPerSecond);
      ++counts_.stalls;
    } else if (begins(choice_.burstsPerMinute, samplesPerSecond)) {
      burstLeft_ = framesIn(choice_.burstSeconds, samplesPerSecond);
      ++counts_.bursts;
    }
  }
  if (stallLeft_ > 0) {
    --stallLeft_;
    ++counts_.stalledFrames;
    return;
  }
  if (burstLeft_ == 0) {
    spoil(frame, out);
    return;
  }
  spoil(frame, held_);
  ++counts_.heldFrames;
  if (--burstLeft_ > 0 && held_.size() < kMaximumHeld) return;
  burstLeft_ = 0;
  out.insert(out.end(), held_.begin(), held_.end());
  held_.clear();
}

void FaultInjector::spoil(std::span<const std::uint8_t> frame, std::vector<std::uint8_t>& out) {
  const double dropBelow = choice_.dropRate;
  const double duplicateBelow = dropBelow + choice_.duplicateRate;
  const double corruptBelow = duplicateBelow + choice_.corruptRate;
  if (corruptBelow <= 0.0) {
    out.insert(out.end(), frame.begin(), frame.end());
    return;
  }
  for (const std::uint8_t byte : frame) {
    const double dice = random_.uniform();
    if (dice < dropBelow) {
      ++counts_.droppedBytes;
      continue;
    }
    if (dice < duplicateBelow) {
      ++counts_.duplicatedBytes;
      out.push_back(byte);
      out.push_back(byte);
    } else if (dice < corruptBelow) {
      ++counts_.corruptedBytes;
      out.push_back(static_cast<std::uint8_t>(byte ^ (1U + random_.next() % 255U)));
    } else {
      out.push_back(byte);
    }
  }
}

}  // namespace ovka
