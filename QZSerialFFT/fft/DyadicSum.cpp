#include "DyadicSum.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <limits>

namespace ovka {

namespace {

constexpr std::size_t kLeaf = 64;

template <std::size_t kCount>
double foldedSum(const double* values) {
  if constexpr (kCount == 1) {
    return values[0];
  } else {
    double halves[kCount / 2];
    for (std::size_t i = 0; i < kCount / 2; ++i) halves[i] = values[2 * i] + values[2 * i + 1];
    return foldedSum<kCount / 2>(halves);
  }
}

// A whole node of `size` values.
double nodeSum(const double* values, std::size_t size) {
  if (size == kLeaf) return foldedSum<kLeaf>(values);
  if (size == 1) return values[0];
  return nodeSum(values, size / 2) + nodeSum(values + size / 2, size / 2);
}

// The part of the node [first, first + size) inside [from, to), which it meets.
double partSum(const double* values, std::size_t first, std::size_t size, std::size_t from,
               std::size_t to) {
  if (from <= first && first + size <= to) return nodeSum(values + first, size);
  const std::size_t middle = first + size / 2;
  if (to <= middle) return partSum(values, first, size / 2, from, to);
  if (from >= middle) return partSum(values, middle, size / 2, from, to);
  return partSum(values, first, size / 2, from, to) + partSum(values, middle, size / 2, from, to);
}

// The greater of two values above 0, 0 when neither is (or is a number).
double greater(double a, double b) {
  const double left = a > 0.0 ? a : 0.0;
  return b > left ? b : left;
}

template <typename Combine>
void buildLevels(std::span<const double> values, double* nodes, Combine combine) {
  const double* below = values.data();
  for (std::size_t count = values.size() / 2; count > 0; count /= 2) {
    double* level = nodes + count;
    for (std::size_t i = 0; i < count; ++i) level[i] = combine(below[2 * i], below[2 * i + 1]);
    below = level;
  }
}

// All ones or all zeros.
std::uint64_t maskIf(bool condition) {
  return 0 - static_cast<std::uint64_t>(condition);
}

double valueIf(bool condition, double value) {
  return std::bit_cast<double>(std::bit_cast<std::uint64_t>(value) & maskIf(condition));
}

}  // namespace

double dyadicSum(const double* values, std::size_t from, std::size_t to) {
  return from < to ? partSum(values, 0, std::bit_ceil(to), from, to) : 0.0;
}

Strongest strongestOf(const double* values, std::size_t from, std::size_t to) {
  Strongest best;
  for (std::size_t i = from; i < to; ++i) {
    if (values[i] > best.value) best = {values[i], i};
  }
  return best;
}

void SumTree::build(std::span<const double> values) {
  values_ = values.data();
  count_ = values.size();
  buildLevels(values, nodes_.data(), [](double a, double b) { return a + b; });
}

double SumTree::sum(std::size_t from, std::size_t to) const {
  // What is not taken adds +0, which changes neither sum: both start at +0 and so never are -0.
  double left = 0.0;
  double right = 0.0;
  const double* level = values_;
  for (std::size_t first = count_; from < to; first /= 2) {
    left += valueIf(from % 2 != 0, level[from]);
    right = valueIf(to % 2 != 0, level[to - 1]) + right;
    from = (from + 1) / 2;
    to /= 2;
    level = nodes_.data() + first / 2;
  }
  return left + right;
}

void PeakTree::build(std::span<const double> values) {
  values_ = values.data();
  count_ = values.size();
  buildLevels(values, nodes_.data(), greater);
}

Strongest PeakTree::strongest(std::size_t from, std::size_t to) const {
  // Values above 0 are ordered as their bits are; what is negative or no number lies outside.
  struct Node {
    std::int64_t bits = 0;
    std::size_t number = 0;
    void takeIf(std::uint64_t mask, std::int64_t newBits, std::size_t newNumber) noexcept {
      bits ^= (bits ^ newBits) & static_cast<std::int64_t>(mask);
      number ^= (number ^ newNumber) & mask;
    }
  };
  constexpr auto kInfinite = std::bit_cast<std::int64_t>(std::numeric_limits<double>::infinity());
  Node left;   // met from left to right: the first of equals stays
  Node right;  // met from right to left: the last of equals stays
  const double* level = values_;
  for (std::size_t first = count_; from < to; first /= 2) {
    const auto l = std::bit_cast<std::int64_t>(level[from]);
    left.takeIf(maskIf(from % 2 != 0) & maskIf(l > left.bits) & maskIf(l <= kInfinite), l,
                first + from);
    const auto r = std::bit_cast<std::int64_t>(level[to - 1]);
    right.takeIf(maskIf(to % 2 != 0) & maskIf(r >= right.bits) & maskIf(r <= kInfinite), r,
                 first + to - 1);
    from = (from + 1) / 2;
    to /= 2;
    level = nodes_.data() + first / 2;
  }
  const std::int64_t bits = std::max(left.bits, right.bits);
  if (bits == 0) return {};
  std::size_t number = right.bits > left.bits ? right.number : left.number;
  // Downward the value is told by its bits: nodes hold copies.
  const auto notFirst = [bits](const double& half) {
    return static_cast<std::size_t>(std::bit_cast<std::int64_t>(half) != bits);
  };
  while (number < count_ / 2) number = 2 * number + notFirst(nodes_.data()[2 * number]);
  if (number < count_) number = 2 * number + notFirst(values_[2 * number - count_]);
  return {std::bit_cast<double>(bits), number - count_};
}

}  // namespace ovka
