#pragma once

#include <cstddef>
#include <span>

#include "AlignedBlock.h"

namespace ovka {

// The order in which the engine adds bins and samples. Every sum over a range runs along one fixed
// binary tree over the positions 0, 1, 2, ...: a node of 2^k positions that starts at a multiple of
// 2^k has two halves; its sum is that of its left half plus that of its right half, each taken over
// the positions inside the range, and a half with none adds nothing. So a sum does not depend on
// how it was reached (from the values or from kept nodes), a constant block of 2^k values has
// exactly 2^k times its value, and the error grows with log2 of the length instead of the length.

/// Sum of values[from] ... values[to - 1] in that order; 0 for an empty range.
[[nodiscard]] double dyadicSum(const double* values, std::size_t from, std::size_t to);

/// Where the strongest value of a range is; value 0 when none is positive.
struct Strongest {
  double value = 0.0;
  std::size_t position = 0;
};
/// The greatest positive value of values[from] ... values[to - 1], at equal values the first.
[[nodiscard]] Strongest strongestOf(const double* values, std::size_t from, std::size_t to);

/// The inner nodes of that tree over a power-of-two number of values, kept so that each range costs
/// its logarithm: `SumTree` gives what dyadicSum gives, `PeakTree` what strongestOf gives, bit for
/// bit. The values themselves stay with the caller and must not change between build and the last
/// question.
///
/// Node 1 is the root, nodes 2n and 2n + 1 are the halves of node n, and value i stands as node
/// size + i. Which nodes a range takes is as good as random: the questions mask what they do not
/// take instead of branching, since a mispredicted branch a level costs more than all the rest.
class RangeTree {
 public:
  explicit RangeTree(std::size_t capacity) : nodes_(capacity) {}

 protected:
  AlignedBlock nodes_;
  const double* values_ = nullptr;
  std::size_t count_ = 0;
};

class SumTree : public RangeTree {
 public:
  using RangeTree::RangeTree;
  void build(std::span<const double> values);
  [[nodiscard]] double sum(std::size_t from, std::size_t to) const;
};

class PeakTree : public RangeTree {
 public:
  using RangeTree::RangeTree;
  void build(std::span<const double> values);
  [[nodiscard]] Strongest strongest(std::size_t from, std::size_t to) const;
};

}  // namespace ovka
