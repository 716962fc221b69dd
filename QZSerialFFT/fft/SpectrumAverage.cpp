#include "SpectrumAverage.h"

#include <algorithm>
#include <bit>

namespace ovka {

namespace {

// What the path from a new row to the root is added to.
struct Siblings {
  const double* row;  // beside the new row
  const double* otherRow0;
  const double* otherRow1;
  const double* group;  // beside the new row's group
  const double* otherGroups;
  const double* quarter;  // beside its quarter
  const double* otherQuarters;
};
struct Path {
  double* row;
  double* group;
  double* quarter;
};

// a / number; dividing by a power of two is multiplying by its inverse, to the bit, and several
// times faster.
struct Divide {
  double number;
  double operator()(double sum) const { return sum / number; }
};
struct Multiply {
  double inverse;
  double operator()(double sum) const { return sum * inverse; }
};

// One pass from the new row to the root. The sum of two is the same in either order, so the node on
// the path may come first in each pair, and its pair first in each node.
template <bool kStorePath, typename Mean>
void addPath(const Siblings& s, const Path& path, double* __restrict spectrum, std::size_t bins,
             Mean mean) {
  const double* __restrict s0 = s.row;
  const double* __restrict s1 = s.otherRow0;
  const double* __restrict s2 = s.otherRow1;
  const double* __restrict g1 = s.group;
  const double* __restrict g23 = s.otherGroups;
  const double* __restrict q1 = s.quarter;
  const double* __restrict q23 = s.otherQuarters;
  double* __restrict row = path.row;
  double* __restrict groupNode = path.group;
  double* __restrict quarterNode = path.quarter;
  for (std::size_t i = 0; i < bins; ++i) {
    const double value = spectrum[i];
    const double group = (value + s0[i]) + (s1[i] + s2[i]);
    const double quarter = (group + g1[i]) + g23[i];
    row[i] = value;
    if constexpr (kStorePath) {
      groupNode[i] = group;
      quarterNode[i] = quarter;
    }
    spectrum[i] = mean((quarter + q1[i]) + q23[i]);
  }
}

template <typename Mean>
void addPath(const Siblings& siblings, const Path& path, bool store, std::span<double> spectrum,
             Mean mean) {
  if (store) {
    addPath<true>(siblings, path, spectrum.data(), spectrum.size(), mean);
  } else {
    addPath<false>(siblings, path, spectrum.data(), spectrum.size(), mean);
  }
}

void addTwo(const double* a, const double* b, double* __restrict sum, std::size_t bins) {
  for (std::size_t i = 0; i < bins; ++i) sum[i] = a[i] + b[i];
}

void addFour(const double* c0, const double* c1, const double* c2, const double* c3,
             double* __restrict node, std::size_t bins) {
  for (std::size_t i = 0; i < bins; ++i) node[i] = (c0[i] + c1[i]) + (c2[i] + c3[i]);
}

// The first of the pair of children to which child n does not belong.
constexpr std::size_t otherPair(std::size_t n) {
  return (n & ~std::size_t{1}) ^ 2U;
}

}  // namespace

SpectrumAverage::SpectrumAverage() : memory_((kRows + kGroups + kQuarters + 3) * kStride) {}

const double* SpectrumAverage::rowOrZeros(std::size_t r) noexcept {
  return r < times_ ? row(r) : zeros();
}
const double* SpectrumAverage::groupOrZeros(std::size_t g) noexcept {
  return 4 * g < times_ ? group(g) : zeros();
}
const double* SpectrumAverage::quarterOrZeros(std::size_t q) noexcept {
  return 16 * q < times_ ? quarter(q) : zeros();
}

void SpectrumAverage::addGroup(std::size_t g) {
  addFour(rowOrZeros(4 * g), rowOrZeros(4 * g + 1), rowOrZeros(4 * g + 2), rowOrZeros(4 * g + 3),
          group(g), bins_);
}

void SpectrumAverage::addQuarter(std::size_t q) {
  addFour(groupOrZeros(4 * q), groupOrZeros(4 * q + 1), groupOrZeros(4 * q + 2),
          groupOrZeros(4 * q + 3), quarter(q), bins_);
}

// All nodes from the rows, with the path at the first group.
void SpectrumAverage::rebuild() {
  for (std::size_t g = 0; 4 * g < times_; ++g) addGroup(g);
  for (std::size_t q = 0; 16 * q < times_; ++q) addQuarter(q);
  addTwo(groupOrZeros(2), groupOrZeros(3), otherGroups(), bins_);
  addTwo(quarterOrZeros(2), quarterOrZeros(3), otherQuarters(), bins_);
  group_ = 0;
  pathStored_ = true;
}

// Leads the path through another group; what belongs to the same pairs is still right.
void SpectrumAverage::moveTo(std::size_t g) {
  if (g == group_) return;
  if (!pathStored_) {
    addGroup(group_);
    addQuarter(group_ / 4);
  }
  if (g / 2 != group_ / 2) {
    const std::size_t other = otherPair(g);
    addTwo(groupOrZeros(other), groupOrZeros(other + 1), otherGroups(), bins_);
  }
  if (g / 8 != group_ / 8) {
    const std::size_t other = otherPair(g / 4);
    addTwo(quarterOrZeros(other), quarterOrZeros(other + 1), otherQuarters(), bins_);
  }
  group_ = g;
}

void SpectrumAverage::replaceByAverage(std::span<double> spectrum, std::int32_t times) {
  const auto count = static_cast<std::size_t>(std::clamp(times, 1, fft::kRingRows));
  const std::size_t bins = std::min(spectrum.size(), static_cast<std::size_t>(fft::kMaxBins));
  if (count != times_ || bins != bins_) {
    times_ = count;
    bins_ = bins;
    rebuild();
  }
  const std::size_t at = index_ < count ? index_ : 0;
  const std::size_t g = at / 4;
  moveTo(g);
  index_ = at + 1 < count ? at + 1 : 0;
  pathStored_ = index_ / 4 != g;
  const std::size_t rows = otherPair(at);
  const Siblings siblings{rowOrZeros(at ^ 1U),  rowOrZeros(rows), rowOrZeros(rows + 1),
                          groupOrZeros(g ^ 1U), otherGroups(),    quarterOrZeros(g / 4 ^ 1U),
                          otherQuarters()};
  const Path path{row(at), group(g), quarter(g / 4)};
  const auto number = static_cast<double>(count);
  if (std::has_single_bit(count)) {
    addPath(siblings, path, pathStored_, spectrum.first(bins), Multiply{1.0 / number});
  } else {
    addPath(siblings, path, pathStored_, spectrum.first(bins), Divide{number});
  }
}

}  // namespace ovka
