#include "LinuxClock.h"

#include <ctime>

namespace ovka {
namespace {

std::int64_t read(clockid_t clock) noexcept {
  timespec now{};
  ::clock_gettime(clock, &now);
  return std::int64_t{now.tv_sec} * 1'000'000'000 + now.tv_nsec;
}

}  // namespace

std::int64_t LinuxClock::nanoseconds() const noexcept {
  return read(CLOCK_MONOTONIC);
}
std::int64_t LinuxClock::wallNanoseconds() const noexcept {
  return read(CLOCK_REALTIME);
}

}  // namespace ovka
