#include "RateMeter.h"

#include <algorithm>

namespace ovka::terminal {

/// age 0 is the newest sighting.
const RateMeter::Sighting& RateMeter::at(std::size_t age) const {
  return ring_[(next_ + ring_.size() - 1 - age) % ring_.size()];
}

void RateMeter::take(std::int64_t nanoseconds, std::int64_t points) {
  if (count_ > 0 && nanoseconds - at(0).nanoseconds < kApart) return;
  ring_[next_] = {nanoseconds, points};
  next_ = (next_ + 1) % ring_.size();
  count_ = std::min(count_ + 1, ring_.size());
  while (count_ > 2 && nanoseconds - at(count_ - 1).nanoseconds > kWindow) --count_;
}

double RateMeter::rate() const {
  if (count_ < 3 || at(0).nanoseconds - at(count_ - 1).nanoseconds < kShortest) return 0;
  // Least squares, counted from the oldest sighting to keep the numbers small.
  const Sighting& first = at(count_ - 1);
  double sumT = 0;
  double sumP = 0;
  double sumTT = 0;
  double sumTP = 0;
  for (std::size_t age = 0; age < count_; ++age) {
    const double t = static_cast<double>(at(age).nanoseconds - first.nanoseconds) * 1e-9;
    const auto p = static_cast<double>(at(age).points - first.points);
    sumT += t;
    sumP += p;
    sumTT += t * t;
    sumTP += t * p;
  }
  const auto n = static_cast<double>(count_);
  const double spread = n * sumTT - sumT * sumT;
  return spread > 0 ? std::max((n * sumTP - sumT * sumP) / spread, 0.0) : 0;
}

}  // namespace ovka::terminal
