#pragma once

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <fftw3.h>
#include <memory>
#include <random>

#include "AnalysisSettings.h"
#include "BufferVariables.h"
#include "FFTVariables.h"
#include "HeapAddressSpace.h"
#include "Interleaved.h"
#include "ManualTime.h"
#include "Print.h"
#include "QZFFT.h"
#include "SampleStore.h"

namespace ovka::bench {

/// The unit of every ratio: FFTW3's double real-to-complex transform of one length, FFTW_MEASURE.
class Peer {
 public:
  explicit Peer(int points)
      : in_(fftw_alloc_real(static_cast<std::size_t>(points))),
        out_(fftw_alloc_complex(static_cast<std::size_t>(points) / 2 + 1)),
        plan_(fftw_plan_dft_r2c_1d(points, in_, out_, FFTW_MEASURE)) {
    for (int i = 0; i < points; ++i) in_[i] = std::sin(0.37 * i);
  }
  ~Peer() {
    fftw_destroy_plan(plan_);
    fftw_free(in_);
    fftw_free(out_);
  }
  Peer(const Peer&) = delete;
  Peer& operator=(const Peer&) = delete;
  void run() const { fftw_execute(plan_); }

 private:
  double* in_;
  fftw_complex* out_;
  fftw_plan plan_;
};

/// One line of a table: the length, T in microseconds, then every other entry in microseconds and
/// T.
inline void printRow(int points, const Interleaved& work) {
  const double unit = work.median(0);
  std::printf("%8d %10.3f", points, unit * 1e6);
  for (std::size_t i = 1; i < work.size(); ++i) {
    std::printf(" | %8.1f us %6.2f T", work.median(i) * 1e6, work.median(i) / unit);
  }
  std::printf("\n");
  std::fflush(stdout);
}

/// A store full of noise and an engine of the shipped settings.
struct AnalysisRig {
  struct Quiet final : RecordingControl, AnnotationTrack {
    void PauseMovie() override {}
    void StopRecord2VideoandBrainwave() override {}
    void StartRecord2VideoandBrainwave() override {}
    void AutoSaveWhenRecEnd() override {}
    std::int64_t getLengthofTime() override { return 0; }
    void gotoStartWhenLoopmodeAndEnd() override {}
    void autoReONport(std::int32_t) override {}
  };
  static constexpr std::int64_t kPoints = 200000;

  AnalysisRig() {
    setPrintSink([](std::string_view) {});
    store.initMalloc(2 * kPoints);
    std::mt19937 random(1);
    for (std::int32_t channel = 1; channel <= 4; ++channel) {
      for (std::int64_t i = 0; i < kPoints; ++i) {
        store.putIntToBuffer(channel, i, static_cast<std::int64_t>(random() % 4000) - 2000);
      }
    }
    buffer::ploop = kPoints;
  }
  /// Length 128 << index, with its tables.
  void use(std::int32_t index) {
    fft::selectFFTpoint(index);
    engine->fftinit(fft::fftpX, fft::windSape);
  }
  /// One more sample on every channel, as a stored frame leaves it.
  void oneFrame() {
    const std::int64_t point = buffer::ploop;
    for (std::int32_t channel = 1; channel <= 4; ++channel) {
      store.putIntToBuffer(channel, point, point % 777);
    }
    buffer::ploop = point + 1 < 2 * kPoints ? point + 1 : kPoints;
  }

  Quiet quiet;
  HeapAddressSpace space;
  SampleStore store{space, quiet, quiet};
  ManualTime time;
  std::unique_ptr<QZFFT> engine = std::make_unique<QZFFT>(store, time);
};

}  // namespace ovka::bench
