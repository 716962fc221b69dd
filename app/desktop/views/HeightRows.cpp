#include "HeightRows.h"

#include <algorithm>
#include <cmath>

namespace ovka::desktop {

void HeightRows::reduce(std::span<const float> values, double valueWidth, std::uint64_t number,
                        const std::function<double(double)>& height) {
  std::uint16_t* out = heights_.data() + (number % kRows) * layout_.columns;
  const double first = layout_.lowF / valueWidth;
  const double each =
      (layout_.highF - layout_.lowF) / valueWidth / static_cast<double>(layout_.columns);
  const auto last = static_cast<std::int64_t>(values.size()) - 1;
  for (std::size_t c = 0; c < layout_.columns; ++c) {
    const double from = first + static_cast<double>(c) * each;
    const double middle = from + each / 2;
    // Values lie at whole positions; between two of them the line through both is shown.
    auto begin = static_cast<std::int64_t>(std::ceil(from));
    const auto end = static_cast<std::int64_t>(std::ceil(from + each));
    double greatest = 0;
    if (begin < end) {
      for (; begin < end && begin <= last; ++begin) {
        greatest = std::max(greatest, static_cast<double>(values[static_cast<std::size_t>(begin)]));
      }
    } else if (const auto left = static_cast<std::int64_t>(middle); left >= 0 && left <= last) {
      const auto l = static_cast<std::size_t>(left);
      const auto r = static_cast<std::size_t>(std::min(left + 1, last));
      const double part = middle - static_cast<double>(left);
      greatest =
          static_cast<double>(values[l]) * (1 - part) + static_cast<double>(values[r]) * part;
    }
    out[c] =
        static_cast<std::uint16_t>(std::lround(std::clamp(height(greatest), 0.0, 1.0) * 65535.0));
  }
}

std::uint64_t HeightRows::follow(const SpectrumRows& rows, const HeightLayout& layout,
                                 const std::function<double(double)>& height) {
  const std::uint64_t end = rows.taken();
  std::uint64_t from = taken_;
  if (!valid_ || layout != layout_ || rows.layout() != rowsLayout_) {
    layout_ = layout;
    rowsLayout_ = rows.layout();
    heights_.assign(kRows * layout_.columns, 0);
    valid_ = true;
    from = end > kRows ? end - kRows : 0;
    while (from < end && rows.row(layout_.track, from).empty()) ++from;
    first_ = from;
  }
  for (std::uint64_t number = from; number < end; ++number) {
    reduce(rows.row(layout_.track, number), rows.valueWidth(), number, height);
  }
  taken_ = end;
  first_ = std::max(first_, end > kRows ? end - kRows : 0);
  return from;
}

}  // namespace ovka::desktop
