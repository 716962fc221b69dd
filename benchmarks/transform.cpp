// The transform on every path beside FFTW3's double real-to-complex transform of the same length,
// planned with FFTW_MEASURE: medians of interleaved rounds on one core, as multiples of FFTW's
// time. Usage: bench_transform [rounds, 60 unless given]

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fftw3.h>
#include <memory>

#include "ClassicTransform.h"
#include "Interleaved.h"
#include "RealTransform.h"

namespace {

using ovka::InstructionSet;
using ovka::RealTransform;

struct Free {
  void operator()(double* p) const { std::free(p); }
};
using Array = std::unique_ptr<double[], Free>;

// Aligned to 64 bytes, as the spectral engine's arrays are; all runs share them.
Array arrayOf(int count) {
  const std::size_t bytes = static_cast<std::size_t>(count) * sizeof(double);
  return Array(static_cast<double*>(std::aligned_alloc(64, (bytes + 63) / 64 * 64)));
}

void fill(double* x, int points) {
  for (int i = 0; i < points; ++i)
    x[i] = 100.0 * std::sin(0.37 * i) + 30.0 * std::sin(2.1 * i + 1.0);
}

void measure(int points, int rounds) {
  const Array in = arrayOf(points), out = arrayOf(points + 2), scratch = arrayOf(points);
  const Array magnitude = arrayOf(points / 2);
  const fftw_plan peer = fftw_plan_dft_r2c_1d(
      points, in.get(), reinterpret_cast<fftw_complex*>(out.get()), FFTW_MEASURE);
  fill(in.get(), points);  // planning overwrites the input
  const RealTransform* plan = RealTransform::forPoints(points);

  ovka::bench::Interleaved work;
  work.add("FFTW3", [&] { fftw_execute(peer); });
  for (int i = 0; i < ovka::instructionSetCount; ++i) {
    const auto set = static_cast<InstructionSet>(i);
    if (!ovka::isSupported(set)) continue;
    work.add(ovka::nameOf(set), [&, set] {
      RealTransform::useInstructionSet(set);
      plan->transform(in.get(), out.get(), nullptr, scratch.get());
    });
  }
  work.add("fastest with magnitudes", [&] {
    RealTransform::useInstructionSet(ovka::fastestInstructionSet());
    plan->transform(in.get(), out.get(), magnitude.get(), scratch.get());
  });
  work.add("classic", [&] {
    std::copy(in.get(), in.get() + points, out.get());
    ovka::realTransform(out.get(), points / 2);
  });
  work.run(rounds, 200e-6);

  const double unit = work.median(0);
  if (points == RealTransform::shortest) {
    std::printf("%8s %12s", "points", "T, us");
    for (std::size_t i = 1; i < work.size(); ++i) std::printf("  %s/T", work.name(i).c_str());
    std::printf("\n");
  }
  std::printf("%8d %12.3f", points, unit * 1e6);
  for (std::size_t i = 1; i < work.size(); ++i) {
    std::printf("  %*.2f", static_cast<int>(work.name(i).size()) + 2, work.median(i) / unit);
  }
  std::printf("\n");
  std::fflush(stdout);
  fftw_destroy_plan(peer);
}

}  // namespace

int main(int argc, char** argv) {
  const int rounds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 60;
  for (int points = RealTransform::shortest; points <= RealTransform::longest; points *= 2) {
    measure(points, rounds);
  }
}
