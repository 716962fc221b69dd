#include "TypeTextHere.h"

#include "AppVariables.h"
#include "BufferVariables.h"

namespace ovka {

std::int64_t TypeTextHere::present() const {
  if (!playing_) return point_;
  constexpr std::int64_t kSecond = 1'000'000'000;
  const std::int64_t elapsed = clock_.nanoseconds() - startedAt_;
  const auto speed = static_cast<std::int64_t>(buffer::SampleSpeed.get());
  // Whole seconds apart from the rest: a day at any speed stays far from overflow.
  return point_ + elapsed / kSecond * speed + elapsed % kSecond * speed / kSecond;
}

void TypeTextHere::play() {
  const std::scoped_lock guard(lock_);
  if (playing_) return;
  startedAt_ = clock_.nanoseconds();
  playing_ = true;
}

void TypeTextHere::pause() {
  const std::scoped_lock guard(lock_);
  point_ = present();
  playing_ = false;
}

void TypeTextHere::seek(std::int64_t point) {
  const std::scoped_lock guard(lock_);
  point_ = point < 0 ? 0 : point;
  startedAt_ = clock_.nanoseconds();
}

std::int64_t TypeTextHere::getLengthofTime() {
  const std::scoped_lock guard(lock_);
  return present();
}

void TypeTextHere::gotoStartWhenLoopmodeAndEnd() {
  seek(buffer::ploopStart);
}

void TypeTextHere::autoReONport(std::int32_t on) {
  app::autoReONportX = on;
}

}  // namespace ovka
