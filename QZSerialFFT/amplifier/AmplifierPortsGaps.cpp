#include "AmplifierPortsGaps.h"

#include <algorithm>

#include "BufferVariables.h"

namespace ovka {
namespace {

constexpr std::int64_t kSecond = 1'000'000'000;

}  // namespace

void GapMeter::data(std::int64_t now, std::int64_t points) {
  const std::scoped_lock guard(lock_);
  if (counting_) {
    count(now - since_);
  } else if (since_ >= 0 && !idle_) {
    owe(now, points);
  }
  since_ = now;
  counting_ = false;
  idle_ = false;
}

void GapMeter::idle(std::int64_t now) {
  const std::scoped_lock guard(lock_);
  settle();
  if (counting_) since_ = now;
  idle_ = true;
}

void GapMeter::lost(std::int64_t now) {
  const std::scoped_lock guard(lock_);
  settle();
  if (since_ < 0 || idle_) since_ = now;
  counting_ = true;
  count(now - since_);
  since_ = std::max(since_, now);
}

void GapMeter::missing(std::int64_t now) {
  const std::scoped_lock guard(lock_);
  if (!counting_) return;
  count(now - since_);
  since_ = std::max(since_, now);
}

void GapMeter::restart() {
  const std::scoped_lock guard(lock_);
  settle();
  since_ = -1;
  rest_ = 0;
  counting_ = false;
  idle_ = false;
}

void GapMeter::owe(std::int64_t now, std::int64_t points) {
  const bool stalled = now - since_ > kStall;
  if (settleAt_ == 0 && !stalled) return;
  const std::int64_t speed = std::max<std::int64_t>(buffer::SampleSpeed, 1);
  owed_ += now - since_ - points * kSecond / speed;
  if (stalled) settleAt_ = now + kSettle;
  if (now >= settleAt_) settle();
}

void GapMeter::settle() {
  if (settleAt_ != 0 && owed_ > kUneven) count(owed_);
  settleAt_ = 0;
  owed_ = 0;
}

void GapMeter::count(std::int64_t nanoseconds) {
  if (nanoseconds <= 0) return;
  const std::int64_t speed = buffer::SampleSpeed.get();
  // Seconds and the rest apart: their product with the largest custom speed still fits.
  rest_ += nanoseconds % kSecond * speed;
  losses_.gapPoints.add(nanoseconds / kSecond * speed + rest_ / kSecond);
  rest_ %= kSecond;
}

}  // namespace ovka
