#pragma once

#include <cmath>
#include <random>
#include <string_view>

#include "AnalysisSettings.h"
#include "BufferVariables.h"
#include "CapturedPrint.h"
#include "GuardedAddressSpace.h"
#include "ManualTime.h"
#include "QZFFT.h"
#include "RecordingShell.h"
#include "SampleStore.h"

namespace ovka::testing {

/// A store and an engine with every variable at its default, the tables built, and what was
/// printed.
struct EngineRig {
  explicit EngineRig(std::uint64_t capacity = 200000) {
    store.initMalloc(capacity);
    store.recCleare();
  }
  EngineRig(const EngineRig&) = delete;
  EngineRig& operator=(const EngineRig&) = delete;

  /// Length 128 << index and a window code, with the tables of both kinds.
  void use(std::int32_t index, char window = 'n') {
    fft::selectFFTpoint(index);
    fft::windSape = window;
    fft::updateScalers();
    engine.fftinit(fft::fftpX, window);
    engine.fftinit2(fft::fftpX, window);
  }

  /// Values 0 ... count - 1 of buffer channel `channel` from f(point); `ploop` goes to count.
  template <typename F>
  void fill(std::int32_t channel, std::int64_t count, F f) {
    for (std::int64_t i = 0; i < count; ++i) {
      store.putIntToBuffer(channel, i, static_cast<std::int64_t>(f(i)));
    }
    buffer::ploop = count;
  }
  void fillNoise(std::int64_t count, unsigned seed = 1) {
    std::mt19937 random(seed);
    std::uniform_int_distribution<int> value(-2000, 2000);
    for (std::int32_t channel = 1; channel <= 4; ++channel) {
      fill(channel, count, [&](std::int64_t) { return value(random); });
    }
  }
  /// A whole number of `cycles` of a sine over `points` samples on every EEG channel.
  void fillSine(double amplitude, double cycles, std::int64_t points) {
    for (std::int32_t channel = 1; channel <= 4; ++channel) {
      fill(channel, points, [&](std::int64_t i) {
        return std::lround(amplitude * std::sin(2 * M_PI * cycles * static_cast<double>(i) /
                                                static_cast<double>(points)));
      });
    }
  }

  std::vector<double> spectrum(std::int32_t channel) const {
    std::vector<double> values(static_cast<std::size_t>(fft::fftp / 2));
    engine.readSpectrum(channel, values);
    return values;
  }
  std::vector<double> coefficients(std::int32_t channel) const {
    std::vector<double> values(static_cast<std::size_t>(fft::fftp));
    engine.readCoefficients(channel, values);
    return values;
  }

  // Before everything else.
  struct Defaults {
    Defaults() {
      buffer::resetVariables();
      fft::resetVariables();
    }
  } defaults;
  CapturedPrint print;
  GuardedAddressSpace space;
  RecordingShell shell;
  SampleStore store{space, shell.recording, shell.annotations};
  ManualTime time;
  QZFFT engine{store, time};
};

}  // namespace ovka::testing
