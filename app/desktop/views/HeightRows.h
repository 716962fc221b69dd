#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "Histories.h"

namespace ovka::desktop {

/// How a row of a spectrum history becomes heights.
struct HeightLayout {
  std::size_t track = 0;
  double lowF = 0, highF = 60;  ///< Hz, from the left end to the right
  std::size_t columns = 1;
  std::uint64_t stamp = 0;  ///< advances when `height` changes its meaning

  bool operator==(const HeightLayout&) const = default;
};

/// The rows of a track of SpectrumRows as a view shows them: a column an entry, each the greatest
/// value it covers, as a height from 0 to 65535. Rows are worked out once. The GUI thread.
class HeightRows {
 public:
  /// Rows of the ring; row `number` lies at number % kRows.
  static constexpr std::size_t kRows = SpectrumRows::kRows;

  /// Takes in what is new; `height` maps a value to 0 ... 1. Returns the first row that changed
  /// (rows.taken() when none did).
  std::uint64_t follow(const SpectrumRows& rows, const HeightLayout& layout,
                       const std::function<double(double)>& height);
  void forget() { valid_ = false; }

  [[nodiscard]] std::size_t columns() const { return layout_.columns; }
  /// Rows that are there: first() ... taken() - 1.
  [[nodiscard]] std::uint64_t first() const { return first_; }
  [[nodiscard]] std::uint64_t taken() const { return taken_; }
  [[nodiscard]] const std::uint16_t* row(std::uint64_t number) const {
    return heights_.data() + (number % kRows) * layout_.columns;
  }
  [[nodiscard]] const std::vector<std::uint16_t>& ring() const { return heights_; }

 private:
  void reduce(std::span<const float> values, double valueWidth, std::uint64_t number,
              const std::function<double(double)>& height);

  HeightLayout layout_;
  bool valid_ = false;
  std::uint64_t rowsLayout_ = 0;
  std::uint64_t first_ = 0;
  std::uint64_t taken_ = 0;
  std::vector<std::uint16_t> heights_;
};

}  // namespace ovka::desktop
