#include "DyadicSum.h"

#include <bit>

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
    for (std::size_t i = 0; i < count; ++i) nodes[i] = combine(below[2 * i], below[2 * i + 1]);
    below = nodes;
    nodes += count;
  }
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

const double* RangeTree::level(std::size_t level) const noexcept {
  if (level == 0) return values_;
  // Levels 1, 2, ... follow each other with count/2, count/4, ... nodes.
  return nodes_.data() + (count_ - (count_ >> (level - 1)));
}

void SumTree::build(std::span<const double> values) {
  values_ = values.data();
  count_ = values.size();
  buildLevels(values, nodes_.data(), [](double a, double b) { return a + b; });
}

double SumTree::sum(std::size_t from, std::size_t to) const {
  double left = 0.0;
  double right = 0.0;
  for (std::size_t k = 0; from < to; ++k, from /= 2, to /= 2) {
    const double* nodes = level(k);
    if (from % 2 != 0) left += nodes[from++];
    if (to % 2 != 0) right = nodes[--to] + right;
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
    std::size_t level = 0, index = 0;
  };
  Node left;   // met from left to right: the first of equals stays
  Node right;  // met from right to left: the last of equals stays
  for (std::size_t k = 0; from < to; ++k, from /= 2, to /= 2) {
    const double* nodes = level(k);
    if (from % 2 != 0) {
      if (nodes[from] > left.value) left = {nodes[from], k, from};
      ++from;
    }
    if (to % 2 != 0) {
      --to;
      if (nodes[to] > 0.0 && nodes[to] >= right.value) right = {nodes[to], k, to};
    }
  }
  Node best = right.value > left.value ? right : left;
  if (!(best.value > 0.0)) return {};
  while (best.level > 0) {
    --best.level;
    best.index *= 2;
    if (level(best.level)[best.index] != best.value) ++best.index;
  }
  return {best.value, best.index};
}

}  // namespace ovka
