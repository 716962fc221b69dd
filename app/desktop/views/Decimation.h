#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace ovka::desktop {

/// What a pixel column shows of a curve: the extent of the line through its values. Empty where the
/// curve has none.
struct Extent {
  float low = 1.0F;
  float high = -1.0F;

  [[nodiscard]] bool empty() const { return low > high; }
  void take(float value) {
    if (empty()) {
      low = high = value;
    } else if (value < low) {
      low = value;
    } else if (value > high) {
      high = value;
    }
  }
  void take(const Extent& other) {
    if (other.empty()) return;
    take(other.low);
    take(other.high);
  }
  bool operator==(const Extent&) const = default;
};

/// Values with the extents of their stretches of 8, 64, 512 ..., so that a stretch of any length is
/// summed up in a few dozen steps: what a column costs does not depend on how much it covers.
class Pyramid {
 public:
  /// Takes the values (what is not finite counts as 0) and builds the levels. Allocates only when
  /// there are more than ever before.
  void build(std::span<const double> values);
  void clear() { build({}); }

  [[nodiscard]] std::size_t size() const { return size_; }
  [[nodiscard]] float at(std::size_t index) const { return levels_.front()[index].low; }
  /// Extent of the values first ... end - 1 (clamped).
  [[nodiscard]] Extent over(std::int64_t first, std::int64_t end) const;
  /// Height of the straight line through the values at a position between the first and the last.
  [[nodiscard]] float between(double position) const;

 private:
  static constexpr std::size_t kFactor = 8;
  std::size_t size_ = 0;
  std::vector<std::vector<Extent>> levels_;
};

/// For each column c the extent of the line from position edges[c] to edges[c + 1] (rising, in
/// indexes of the values): the values within and the line's height at both ends. No value between
/// the first and the last edge is lost. out.size() is edges.size() - 1.
void columnsOf(const Pyramid& values, std::span<const double> edges, std::span<Extent> out);

/// `count` + 1 edges that divide first ... last evenly.
void evenEdges(double first, double last, std::size_t count, std::vector<double>& edges);

}  // namespace ovka::desktop
