#include "JournalRing.h"

#include <algorithm>

namespace ovka {
namespace {

void subtract(std::vector<PointRange>& from, const PointRange& gone) {
  std::vector<PointRange> left;
  for (const PointRange& range : from) {
    if (range.first < gone.first) left.push_back({range.first, std::min(range.end, gone.first)});
    if (range.end > gone.end) left.push_back({std::max(range.first, gone.end), range.end});
  }
  from = std::move(left);
}

void add(std::vector<PointRange>& to, PointRange range) {
  for (const PointRange& other : to) {
    if (other.end < range.first || other.first > range.end) continue;
    range.first = std::min(range.first, other.first);
    range.end = std::max(range.end, other.end);
  }
  std::erase_if(to, [&range](const PointRange& other) {
    return other.first >= range.first && other.end <= range.end;
  });
  to.insert(std::ranges::upper_bound(to, range.first, {}, &PointRange::first), range);
}

}  // namespace

void JournalRing::countAnew() {
  for (Part& part : parts_) part.framesBefore = 0;
}

void JournalRing::wrote(const PointRange& range) {
  if (range.end > range.first && !parts_.empty()) add(parts_.back().ranges, range);
}

void JournalRing::synced(const PointRange& range, std::size_t part) {
  for (std::size_t i = 0; i < parts_.size() && dropped_ + i < part; ++i)
    subtract(parts_[i].ranges, range);
}

std::size_t JournalRing::spare() const {
  std::size_t count = 0;
  while (count + 1 < parts_.size() && parts_[count].ranges.empty()) ++count;
  return count;
}

void JournalRing::drop(std::size_t count) {
  parts_.erase(parts_.begin(), parts_.begin() + static_cast<std::ptrdiff_t>(count));
  dropped_ += count;
}

}  // namespace ovka
