#include "Decimation.h"

#include <algorithm>
#include <cmath>

namespace ovka::desktop {

void Pyramid::build(std::span<const double> values) {
  size_ = values.size();
  if (levels_.empty()) levels_.emplace_back();
  levels_[0].resize(size_);
  for (std::size_t i = 0; i < size_; ++i) {
    const auto value = static_cast<float>(values[i]);
    const float shown = std::isfinite(value) ? value : 0.0F;
    levels_[0][i] = {shown, shown};
  }
  std::size_t level = 0;
  while (levels_[level].size() > kFactor) {
    if (levels_.size() == level + 1) levels_.emplace_back();
    const std::vector<Extent>& below = levels_[level];
    std::vector<Extent>& above = levels_[++level];
    above.assign((below.size() + kFactor - 1) / kFactor, Extent{});
    for (std::size_t i = 0; i < below.size(); ++i) above[i / kFactor].take(below[i]);
  }
}

Extent Pyramid::over(std::int64_t first, std::int64_t end) const {
  Extent extent;
  if (levels_.empty()) return extent;
  auto from = static_cast<std::size_t>(std::clamp<std::int64_t>(first, 0, std::ssize(levels_[0])));
  auto to = static_cast<std::size_t>(std::clamp<std::int64_t>(end, 0, std::ssize(levels_[0])));
  std::size_t level = 0;
  // The ragged ends of each level, then the whole blocks in between one level up.
  while (from < to) {
    const std::vector<Extent>& row = levels_[level];
    const bool top = to - from < 2 * kFactor || level + 1 == levels_.size();
    while (from < to && (top || from % kFactor != 0)) extent.take(row[from++]);
    while (from < to && to % kFactor != 0) extent.take(row[--to]);
    from /= kFactor;
    to /= kFactor;
    ++level;
  }
  return extent;
}

float Pyramid::between(double position) const {
  if (size_ == 0) return 0;
  const double held = std::clamp(position, 0.0, static_cast<double>(size_ - 1));
  const auto left = static_cast<std::size_t>(held);
  const std::size_t right = std::min(left + 1, size_ - 1);
  const auto part = static_cast<float>(held - static_cast<double>(left));
  return at(left) + (at(right) - at(left)) * part;
}

void columnsOf(const Pyramid& values, std::span<const double> edges, std::span<Extent> out) {
  const auto last = static_cast<double>(values.size()) - 1;
  for (std::size_t c = 0; c < out.size(); ++c) {
    out[c] = {};
    const double from = std::max(edges[c], 0.0);
    const double to = std::min(edges[c + 1], last);
    if (values.size() == 0 || from > to) continue;
    out[c] = values.over(static_cast<std::int64_t>(std::ceil(from)),
                         static_cast<std::int64_t>(std::floor(to)) + 1);
    out[c].take(values.between(from));
    out[c].take(values.between(to));
  }
}

void evenEdges(double first, double last, std::size_t count, std::vector<double>& edges) {
  edges.resize(count + 1);
  for (std::size_t c = 0; c <= count; ++c) {
    edges[c] = first + (last - first) * static_cast<double>(c) / static_cast<double>(count);
  }
}

}  // namespace ovka::desktop
