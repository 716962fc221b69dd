#include "QZFFT.h"

#include <chrono>
#include <cmath>

#include "BufferVariables.h"
#include "Print.h"

namespace ovka {

namespace {

// The interval is the single-precision 0.01.
std::chrono::nanoseconds tickInterval() {
  return std::chrono::nanoseconds(std::llround(static_cast<double>(0.01F) * 1e9));
}

}  // namespace

QZFFT::QZFFT(const SampleStore& store, RunLoop& runLoop)
    : SampleFetch(store, *this, *this, *this),
      SpectrumPass(*this, *this, *this),
      BandQuery(store, *this, *this),
      SpectrumHistory(*this, *this),
      Coherence(*this, *this, *this) {
  if (fft::firstTimeRunFFT != 0) return;
  fft::firstTimeRunFFT = 1;
  runLoop.addTimer(tickInterval(), [this] { timerUpdate(); });
  Print("init FFT\n");
}

void QZFFT::timerUpdate() {
  const std::int64_t point = buffer::ploop;
  if (point == lastPoint_) return;
  lastPoint_ = point;
  getAndfftA(point, 0, 0);
  getAndfftB(point, 0, 0);
  getAndfftD(point, 0, 0);
  getAndfftE(point, 0, 0);
  update();
  ticks_.fetch_add(1);
}

}  // namespace ovka
