#pragma once

#include <atomic>
#include <cstdint>

#include "AnalysisTables.h"
#include "BandPowers.h"
#include "BandQuery.h"
#include "Coherence.h"
#include "RunLoop.h"
#include "SampleFetch.h"
#include "SoundInput.h"
#include "SpectrumArrays.h"
#include "SpectrumFilter.h"
#include "SpectrumHistory.h"
#include "SpectrumPass.h"
#include "SpectrumTransform.h"

namespace ovka {

/// The spectral engine: every 10 ms, when samples came, it leaves the spectra of the four EEG
/// channels in its arrays. Each kind of work is a component that carries the system's method names;
/// this class gathers them and owns the tick.
///
/// About 230 MB of address space, of which only what the chosen length touches takes memory. The
/// store and the run loop must outlive it, and the loop must not tick any more when it goes.
class QZFFT final : public AnalysisTables,
                    public SoundInput,
                    public SpectrumArrays,
                    public SampleFetch,
                    public SpectrumFilter,
                    public SpectrumTransform,
                    public SpectrumPass,
                    public BandPowers,
                    public BandQuery,
                    public SpectrumHistory,
                    public Coherence {
 public:
  /// +sharedQZFFT: the one of this process. Defined by the engine alone.
  static QZFFT& sharedQZFFT();

  /// init On the first creation in the process (`firstTimeRunFFT`): schedules the tick every 0.01 s
  /// on the run loop and prints "init FFT".
  QZFFT(const SampleStore& store, RunLoop& runLoop);
  QZFFT(const QZFFT&) = delete;
  QZFFT& operator=(const QZFFT&) = delete;

  /// timerUpdate: when `ploop` moved since the last tick, one pass each of A, B, D and E at it,
  /// then the history. The run loop's thread.
  void timerUpdate();

  /// runFFTThread: a thread entry that does nothing: all computation runs from the tick.
  void runFFTThread() const {}

  /// Passes made by the tick so far, one for all four channels. Any thread.
  [[nodiscard]] std::uint64_t ticksComputed() const noexcept { return ticks_.load(); }

 private:
  std::int64_t lastPoint_ = 0;
  std::atomic<std::uint64_t> ticks_{0};
};

}  // namespace ovka
