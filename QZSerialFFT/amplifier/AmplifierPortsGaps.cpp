#include "AmplifierPortsGaps.h"

#include "BufferVariables.h"

namespace ovka {

void GapMeter::data(std::int64_t now) {
  const std::scoped_lock guard(lock_);
  const bool stalled = since_ >= 0 && !idle_ && now - since_ > kStall;
  if (counting_ || stalled) count(now);
  since_ = now;
  counting_ = false;
  idle_ = false;
}

void GapMeter::idle(std::int64_t now) {
  const std::scoped_lock guard(lock_);
  if (counting_) since_ = now;
  idle_ = true;
}

void GapMeter::lost(std::int64_t now) {
  const std::scoped_lock guard(lock_);
  if (since_ < 0 || idle_) since_ = now;
  counting_ = true;
  count(now);
}

void GapMeter::missing(std::int64_t now) {
  const std::scoped_lock guard(lock_);
  if (counting_) count(now);
}

void GapMeter::restart() {
  const std::scoped_lock guard(lock_);
  since_ = -1;
  rest_ = 0;
  counting_ = false;
  idle_ = false;
}

void GapMeter::count(std::int64_t now) {
  constexpr std::int64_t kSecond = 1'000'000'000;
  if (now <= since_) return;
  const std::int64_t speed = buffer::SampleSpeed.get();
  // Seconds and the rest apart: their product with the largest custom speed still fits.
  const std::int64_t elapsed = now - since_;
  rest_ += elapsed % kSecond * speed;
  losses_.gapPoints.add(elapsed / kSecond * speed + rest_ / kSecond);
  rest_ %= kSecond;
  since_ = now;
}

}  // namespace ovka
