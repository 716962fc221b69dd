#include "RealTransform.h"

#include <array>
#include <atomic>
#include <cstddef>

namespace ovka {
namespace {

constexpr std::array<const Passes*, instructionSetCount> passesOf = {&plainPasses, &baselinePasses,
                                                                     &avx2Passes, &avx512Passes};
constexpr std::array<const char*, instructionSetCount> names = {"plain", "baseline", "AVX2",
                                                                "AVX-512"};

bool processorHas(InstructionSet set) noexcept {
#if defined(__x86_64__)
  switch (set) {
    case InstructionSet::avx2:
      return __builtin_cpu_supports("avx2") != 0;
    case InstructionSet::avx512:
      return __builtin_cpu_supports("avx512f") != 0 && __builtin_cpu_supports("avx512dq") != 0;
    default:
      return true;
  }
#else
  return set == InstructionSet::plain;
#endif
}

/// What useInstructionSet() asked for; -1 until it did.
std::atomic<int> asked{-1};

/// A plan a power of two from 128 on. They are kept until the process ends, because a thread may be
/// in one.
std::array<std::atomic<const RealTransform*>, 10> plans{};

}  // namespace

const char* nameOf(InstructionSet set) noexcept {
  return names[static_cast<std::size_t>(set)];
}

bool isSupported(InstructionSet set) noexcept {
  const auto index = static_cast<std::size_t>(set);
  return index < passesOf.size() && passesOf[index]->first != nullptr && processorHas(set);
}

InstructionSet fastestInstructionSet() noexcept {
  static const InstructionSet fastest = [] {
    for (const InstructionSet set :
         {InstructionSet::avx512, InstructionSet::avx2, InstructionSet::baseline}) {
      if (isSupported(set)) return set;
    }
    return InstructionSet::plain;
  }();
  return fastest;
}

bool RealTransform::useInstructionSet(InstructionSet set) noexcept {
  if (!isSupported(set)) return false;
  asked.store(static_cast<int>(set), std::memory_order_relaxed);
  return true;
}

InstructionSet RealTransform::instructionSet() noexcept {
  const int set = asked.load(std::memory_order_relaxed);
  return set < 0 ? fastestInstructionSet() : static_cast<InstructionSet>(set);
}

RealTransform::RealTransform(int points) : tables_(buildPlanTables(points)) {}

const RealTransform* RealTransform::forPoints(int points) {
  if (points < shortest || points > longest || (points & (points - 1)) != 0) return nullptr;
  std::size_t index = 0;
  while (shortest << index < points) ++index;
  const RealTransform* plan = plans[index].load(std::memory_order_acquire);
  if (plan != nullptr) return plan;

  std::unique_ptr<const RealTransform> built(new RealTransform(points));
  // Two threads may build at once; the first to publish wins and the other takes that one.
  if (plans[index].compare_exchange_strong(plan, built.get(), std::memory_order_acq_rel,
                                           std::memory_order_acquire)) {
    return built.release();
  }
  return plan;
}

void RealTransform::transform(const double* in, double* packed, double* magnitude,
                              double* scratch) const noexcept {
  const Passes& passes = *passesOf[static_cast<std::size_t>(instructionSet())];
  passes.first(tables_.plan, in, scratch);
  passes.middle(tables_.plan, scratch);
  passes.last(tables_.plan, scratch, packed, magnitude);
}

}  // namespace ovka
