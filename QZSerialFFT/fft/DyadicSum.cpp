#include "DyadicSum.h"

#include <bit>
#include <cstdint>

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

// The value, or +0 when `taken` is 0 instead of 1.
double valueIf(std::size_t taken, double value) {
  return std::bit_cast<double>(std::bit_cast<std::uint64_t>(value) & (0 - std::uint64_t{taken}));
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
    left += valueIf(from % 2, level[from]);
    right = valueIf(to % 2, level[to - 1]) + right;
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
  struct Node {
    double value = 0.0;
    std::size_t number = 0;
  };
  Node left;   // met from left to right: the first of equals stays
  Node right;  // met from right to left: the last of equals stays
  const double* level = values_;
  for (std::size_t first = count_; from < to; first /= 2) {
    const double l = valueIf(from % 2, level[from]);
    const auto lm = 0 - static_cast<std::uint64_t>(l > left.value);
    left.number ^= (left.number ^ (first + from)) & lm;
    left.value = l > left.value ? l : left.value;
    const double r = valueIf(to % 2, level[to - 1]);
    const auto rm = 0 - static_cast<std::uint64_t>(r >= right.value);
    right.number ^= (right.number ^ (first + to - 1)) & rm;
    right.value = r > right.value ? r : right.value;
    from = (from + 1) / 2;
    to /= 2;
    level = nodes_.data() + first / 2;
  }
  const Node best = right.value > left.value ? right : left;
  if (!(best.value > 0.0)) return {};
  // Downward the value is told by its bits: nodes hold copies.
  const auto bits = std::bit_cast<std::uint64_t>(best.value);
  const auto notFirst = [bits](const double& half) {
    return static_cast<std::size_t>(std::bit_cast<std::uint64_t>(half) != bits);
  };
  std::size_t number = best.number;
  while (number < count_ / 2) number = 2 * number + notFirst(nodes_.data()[2 * number]);
  if (number < count_) number = 2 * number + notFirst(values_[2 * number - count_]);
  return {best.value, number - count_};
}

}  // namespace ovka
