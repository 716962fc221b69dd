#include "PlanTables.h"

#include <algorithm>
#include <cstddef>
#include <vector>

#include "Twiddle.h"

namespace ovka {
namespace {

constexpr int lanes = 8;
constexpr int blockSize = 2 * lanes;

struct Pair {
  double re, im;
};

/// The first `count` values of a recurrence; the ones before index `from` and past the end are 0
/// and stand only in lanes whose results are thrown away.
class Values {
 public:
  Values(Twiddle w, int from, int count) : from_(from), values_(static_cast<std::size_t>(count)) {
    for (Pair& value : values_) {
      value = {w.wr, w.wi};
      w.step();
    }
  }
  static Values ofStage(int half) { return {Twiddle::ofStage(half), 0, half}; }
  static Values ofUnpacking(int points) {
    return {Twiddle::ofUnpacking(points), 1, points / 2 - 1};
  }
  Pair operator[](int index) const {
    const int i = index - from_;
    if (i < 0 || i >= static_cast<int>(values_.size())) return {0.0, 0.0};
    return values_[static_cast<std::size_t>(i)];
  }

 private:
  int from_;
  std::vector<Pair> values_;
};

/// Appends twiddles to memory that was counted beforehand.
class Writer {
 public:
  explicit Writer(double* to) : to_(to) {}
  void pair(Pair w) {
    *to_++ = w.re;
    *to_++ = w.im;
  }
  /// The eight values from `index` on, upwards (direction 1) or downwards (-1).
  void block(const Values& w, int index, int direction) {
    for (int l = 0; l < lanes; ++l) {
      to_[l] = w[index + direction * l].re;
      to_[lanes + l] = w[index + direction * l].im;
    }
    to_ += blockSize;
  }
  [[nodiscard]] const double* position() const { return to_; }

 private:
  double* to_;
};

void writeFirst(Writer& out) {
  const Values second = Values::ofStage(2), third = Values::ofStage(4);
  out.pair(second[1]);
  for (int r = 1; r < 4; ++r) out.pair(third[r]);
}

void writeMiddle(Writer& out, int distance) {
  const int half = distance * lanes;
  const Values near = Values::ofStage(half), far = Values::ofStage(2 * half);
  for (int m = 0; m < half; m += lanes) {
    out.block(near, m, 1);
    out.block(far, m, 1);
    out.block(far, m + half, 1);
  }
}

/// The last pass and its two single butterflies: `count` numbers a butterfly, N / count apart.
struct LastTables {
  LastTables(int points, int count)
      : count_(count),
        apart_(points / count),
        near_(Values::ofStage(apart_)),
        far_(Values::ofStage(count == 4 ? 2 * apart_ : 1)),
        unpack_(Values::ofUnpacking(points)) {}

  void writeBlocks(Writer& out) const {
    for (int m = 0; m < apart_ / 2; m += lanes) {
      writeStages(out, m, 1);
      writeStages(out, apart_ - m, -1);
      for (int i = 0; i < count_ / 2; ++i) {
        out.block(unpack_, m + i * apart_, 1);
        out.block(unpack_, (i + 1) * apart_ - m, -1);
      }
    }
  }

  void writeEdges(Writer& out) const {
    for (const int m : {0, apart_ / 2}) {
      out.pair(near_[m]);
      if (count_ == 4) out.pair(far_[m]);
      if (count_ == 4) out.pair(far_[m + apart_]);
    }
    for (int i = 0; i < count_ / 2; ++i) out.pair(unpack_[apart_ / 2 + i * apart_]);
    out.pair(unpack_[apart_]);
  }

 private:
  void writeStages(Writer& out, int m, int direction) const {
    out.block(near_, m, direction);
    if (count_ == 4) out.block(far_, m, direction);
    if (count_ == 4) out.block(far_, m + apart_, direction);
  }

  int count_, apart_;
  Values near_, far_, unpack_;
};

AlignedDoubles allocate(std::size_t count) {
  AlignedDoubles memory(new (std::align_val_t{64}) double[count]);
  std::fill_n(memory.get(), count, 0.0);
  return memory;
}

}  // namespace

PlanTables buildPlanTables(int points) {
  PlanTables tables{};
  TransformPlan& plan = tables.plan;
  plan.complexPoints = points / 2;
  plan.scale = 1.0 / points;
  int stages = -3;  // the first pass has done three
  for (int n = plan.complexPoints; n > 1; n /= 2) ++stages;
  plan.lastIsDouble = stages % 2 == 0;
  const int count = plan.lastIsDouble ? 4 : 2;
  plan.doublePasses = (stages - (plan.lastIsDouble ? 2 : 1)) / 2;

  std::size_t size = 64;  // the first stages and the edges
  int distance = 1;
  for (int pass = 0; pass < plan.doublePasses; ++pass, distance *= 4) {
    size += static_cast<std::size_t>(3 * blockSize * distance);
  }
  size += static_cast<std::size_t>(plan.complexPoints / count / 2 / lanes * 10 * blockSize);
  tables.memory = allocate(size);

  Writer out(tables.memory.get());
  plan.first = out.position();
  writeFirst(out);
  plan.middle = out.position();
  distance = 1;
  for (int pass = 0; pass < plan.doublePasses; ++pass, distance *= 4) writeMiddle(out, distance);
  plan.last = out.position();
  const LastTables last(plan.complexPoints, count);
  last.writeBlocks(out);
  plan.edge = out.position();
  last.writeEdges(out);
  return tables;
}

}  // namespace ovka
