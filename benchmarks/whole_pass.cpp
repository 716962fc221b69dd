// A whole tick of four channels (fetch, window, transform, filters, peak search, publication,
// history) as multiples of T, FFTW3's real transform of the same length, and in microseconds:
// without and with averaging over 64 spectra (the ring full), and in the logarithmic scale. Medians
// of interleaved rounds, one core. Usage: bench_whole_pass [rounds, 30 unless given]

#include <cstdlib>

#include "AnalysisRig.h"

namespace {

void tick(ovka::bench::AnalysisRig& rig, bool average, bool log) {
  ovka::fft::calculationSelectX = average ? 1 : 0;
  ovka::fft::LOGpowerONed = log ? 1 : 0;
  rig.oneFrame();
  rig.engine->timerUpdate();
}

void measure(ovka::bench::AnalysisRig& rig, std::int32_t index, int rounds) {
  rig.use(index);
  ovka::fft::selectAverageTime(6);
  // The ring is full in use: the first spectra of a session meet memory that nobody touched.
  for (int row = 0; row < ovka::fft::kRingRows; ++row) tick(rig, true, false);
  const ovka::bench::Peer peer(128 << index);
  ovka::bench::Interleaved work;
  work.add("T", [&] { peer.run(); });
  work.add("pass", [&] { tick(rig, false, false); });
  work.add("pass, average of 64", [&] { tick(rig, true, false); });
  work.add("pass, log", [&] { tick(rig, false, true); });
  work.run(rounds, 400e-6);
  ovka::bench::printRow(128 << index, work);
}

}  // namespace

int main(int argc, char** argv) {
  const int rounds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 30;
  const auto rig = std::make_unique<ovka::bench::AnalysisRig>();
  std::printf("  points      T, us | four channels        | averaged over 64     | log scale\n");
  for (std::int32_t index = 0; index < 10; ++index) measure(*rig, index, rounds);
}
