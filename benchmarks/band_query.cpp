// 1024 band queries in one tick, as multiples of T, FFTW3's real transform of the same length, and
// in microseconds: after new data with the eight default bands of four channels, after new data
// with 1024 distinct bands, and with nothing new. Medians of interleaved rounds, one core. Usage:
// bench_band_query [rounds, 30 unless given]

#include <array>
#include <cstdlib>

#include "AnalysisRig.h"
#include "BandPowers.h"

namespace {

struct Query {
  std::int32_t source;
  float low, high;
  std::int32_t mode;
};
using Queries = std::array<Query, 1024>;

Queries defaultBands() {
  Queries queries{};
  for (std::size_t i = 0; i < queries.size(); ++i) {
    const ovka::Band& band = ovka::kBands[i % 8];
    queries[i] = {static_cast<std::int32_t>(i / 8 % 4), static_cast<float>(band.low),
                  static_cast<float>(band.high), 0};
  }
  return queries;
}

Queries distinctBands() {
  std::mt19937 random(3);
  std::uniform_real_distribution<float> edge(0.0F, 60.0F);
  Queries queries{};
  for (std::size_t i = 0; i < queries.size(); ++i) {
    const float a = edge(random);
    const float b = edge(random);
    queries[i] = {static_cast<std::int32_t>(i % 4), std::min(a, b), std::max(a, b), 0};
  }
  return queries;
}

float total = 0.0F;  // so that no query is left out

void ask(ovka::bench::AnalysisRig& rig, const Queries& queries) {
  for (const Query& query : queries) {
    total += rig.engine->peakFFTband(query.source, query.low, query.high, query.mode);
  }
}

void measure(ovka::bench::AnalysisRig& rig, std::int32_t index, int rounds) {
  static const Queries bands = defaultBands();
  static const Queries distinct = distinctBands();
  rig.use(index);
  const ovka::bench::Peer peer(128 << index);
  ovka::bench::Interleaved work;
  work.add("T", [&] { peer.run(); });
  work.add("new data, default bands", [&] {
    rig.oneFrame();
    ask(rig, bands);
  });
  work.add("nothing new, default bands", [&] { ask(rig, bands); });
  work.add("new data, all distinct", [&] {
    rig.oneFrame();
    ask(rig, distinct);
  });
  work.add("nothing new, all distinct", [&] { ask(rig, distinct); });
  work.run(rounds, 400e-6);
  ovka::bench::printRow(128 << index, work);
}

}  // namespace

int main(int argc, char** argv) {
  const int rounds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 30;
  const auto rig = std::make_unique<ovka::bench::AnalysisRig>();
  std::printf(
      "  points      T, us | new, default bands   | same, default bands  | new, all distinct    | "
      "same, all distinct\n");
  for (std::int32_t index = 0; index < 10; ++index) measure(*rig, index, rounds);
  std::printf("(sum of all answers %g)\n", static_cast<double>(total));
}
