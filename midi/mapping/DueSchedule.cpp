#include "DueSchedule.h"

#include <cmath>
#include <limits>

namespace ovka {

double DueSchedule::earliest(double last, double interval) noexcept {
  const double sum = last + interval;
  // A time that is no number compares as due with everything.
  if (!std::isfinite(sum)) return -std::numeric_limits<double>::infinity();
  constexpr double kRoundings = 4 * std::numeric_limits<double>::epsilon();
  return sum - kRoundings * (std::fabs(last) + std::fabs(interval));
}

void DueSchedule::clear() noexcept {
  size_ = 0;
  positions_.fill(kNowhere);
  waiting_ = {};
}

void DueSchedule::at(std::size_t setup, double time) noexcept {
  waiting_.erase(setup);
  times_[setup] = time;
  if (positions_[setup] == kNowhere) place(size_++, setup);
  rise(positions_[setup]);
  sink(positions_[setup]);
}

void DueSchedule::atOrWithSamples(std::size_t setup, double time) noexcept {
  at(setup, time);
  waiting_.insert(setup);
}

void DueSchedule::remove(std::size_t setup) noexcept {
  waiting_.erase(setup);
  const std::size_t position = positions_[setup];
  if (position == kNowhere) return;
  positions_[setup] = kNowhere;
  --size_;
  if (position == size_) return;
  place(position, heap_[size_]);
  rise(position);
  sink(positions_[heap_[position]]);
}

void DueSchedule::take(double now, SetupMask& due) noexcept {
  while (size_ > 0 && times_[heap_[0]] <= now) {
    const std::size_t setup = heap_[0];
    remove(setup);
    due.insert(setup);
  }
}

void DueSchedule::takeWaiting(SetupMask& due) noexcept {
  const SetupMask waiting = waiting_;
  due |= waiting;
  waiting.forEach([this](std::size_t setup) { remove(setup); });
}

void DueSchedule::place(std::size_t position, std::size_t setup) noexcept {
  heap_[position] = static_cast<std::uint8_t>(setup);
  positions_[setup] = position;
}

void DueSchedule::rise(std::size_t position) noexcept {
  const std::size_t setup = heap_[position];
  while (position > 0) {
    const std::size_t parent = (position - 1) / 2;
    if (times_[heap_[parent]] <= times_[setup]) break;
    place(position, heap_[parent]);
    position = parent;
  }
  place(position, setup);
}

void DueSchedule::sink(std::size_t position) noexcept {
  const std::size_t setup = heap_[position];
  for (;;) {
    std::size_t child = 2 * position + 1;
    if (child >= size_) break;
    if (child + 1 < size_ && times_[heap_[child + 1]] < times_[heap_[child]]) ++child;
    if (times_[setup] <= times_[heap_[child]]) break;
    place(position, heap_[child]);
    position = child;
  }
  place(position, setup);
}

}  // namespace ovka
