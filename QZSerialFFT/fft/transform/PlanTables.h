#pragma once

#include <memory>
#include <new>

#include "Passes.h"

namespace ovka {

/// Doubles aligned to a cache line, so that no load of eight crosses one.
struct AlignedDelete {
  void operator()(double* p) const noexcept { ::operator delete[](p, std::align_val_t{64}); }
};
using AlignedDoubles = std::unique_ptr<double[], AlignedDelete>;

/// The twiddles of one length in the order in which the passes read them, and the memory they lie
/// in.
struct PlanTables {
  TransformPlan plan;
  AlignedDoubles memory;
};

/// Takes the sines and runs the recurrences for `points` real samples, a power of two, 128 ...
/// 65536.
PlanTables buildPlanTables(int points);

}  // namespace ovka
