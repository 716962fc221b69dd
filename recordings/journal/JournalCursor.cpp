#include "JournalCursor.h"

#include <algorithm>

namespace ovka {
namespace {

/// A frame moves the current point just before the store counts it; the rest is caution.
constexpr std::uint64_t kUncounted = 64;

[[nodiscard]] std::int64_t pointOf(const JournalPositions& at) {
  return std::clamp<std::int64_t>(at.ploop, 0, std::max<std::int64_t>(at.capacity, 0));
}

void add(std::vector<PointRange>& to, std::int64_t first, std::int64_t end) {
  if (end > first) to.push_back({first, end});
}

}  // namespace

void JournalCursor::reset(const JournalPositions& now) {
  next_ = pointOf(now);
  generation_ = now.generation;
}

JournalCursor::Found JournalCursor::look(const JournalPositions& now) {
  Found found;
  const std::int64_t capacity = std::max<std::int64_t>(now.capacity, 0);
  const std::int64_t point = pointOf(now);
  const std::int64_t start = std::clamp<std::int64_t>(now.ploopStart, 0, capacity);
  const std::int64_t before = std::min(next_, capacity);
  const std::uint64_t writes = now.generation - generation_;
  // No more frames than this can have come since the last look.
  const auto most = static_cast<std::int64_t>(
      std::min(writes + kUncounted, static_cast<std::uint64_t>(capacity)));
  const bool round = now.looping && point >= start && point <= capacity;
  reset(now);
  if (writes == 0) {
    // A frame that is not counted yet is left for the next look; anything else is a jump.
    if (point >= before && point - before <= static_cast<std::int64_t>(kUncounted)) next_ = before;
    return found;
  }
  if (round && most >= capacity - start) {
    add(found.ranges, point, capacity);
    add(found.ranges, start, point);
    found.wrapped = true;
  } else if (point >= before && point - before <= most) {
    add(found.ranges, before, point);
  } else if (round && point < before && capacity - before + point - start <= most) {
    add(found.ranges, before, capacity);
    add(found.ranges, start, point);
    found.wrapped = true;
  } else {
    add(found.apart, before, std::min(before + most, capacity));
    add(found.ranges, std::max<std::int64_t>(point - most, 0), point);
  }
  return found;
}

}  // namespace ovka
