#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

namespace ovka {

/// The tables of one transform length and one window; never changed once built.
struct AnalysisTableSet {
  std::int32_t points = 0;         ///< N
  char window = 0;                 ///< its code
  std::vector<std::int32_t> revs;  ///< N swap partners: entry j holds a smaller partner or 0
  std::vector<std::int32_t> sine;  ///< N values, scale 32767: a negative, then a positive half wave
  std::vector<std::int32_t> wind;  ///< N window values (1.0 is 32767), the gain word, a spare 0;
                                   ///< empty for an unknown window code
  std::vector<double> windowValue;  ///< the N window values again, as the fetch multiplies them
};

/// The table sets in use: one for the EEG channels, one for the two sound channels.
///
/// Each set is built once per length and window and kept; the pointer to the one in use is atomic,
/// so a pass that began with one goes on with it while another thread changes the settings.
class AnalysisTables {
 public:
  /// fftinit:WindowType: tables of N = 2^bits (bits 1 to 16, others do nothing) and a window code;
  /// prints "fftinit", and `stratFFTinit` is 1 meanwhile. Allocates when the pair is new. The
  /// thread that changes the settings.
  void fftinit(std::int32_t bits, char WindowType);
  /// fftinit2:WindowType: the same for the sound channels; prints "fftinit2".
  void fftinit2(std::int32_t bits, char WindowType);

  /// windReturn: entry `index` of the window table, its gain word at N; 0 outside and before the
  /// first fftinit. Any thread.
  [[nodiscard]] std::int32_t windReturn(std::int32_t index) const;

  /// The set in use (sound: of the sound channels); nullptr before the first fftinit. Any thread;
  /// valid as long as this object.
  [[nodiscard]] const AnalysisTableSet* tables(bool sound = false) const noexcept;
  /// Advances with every fftinit:WindowType:; who keeps counters that start anew with the tables
  /// compares it.
  [[nodiscard]] std::uint32_t initCount() const noexcept { return initCount_.load(); }

 private:
  static constexpr std::size_t kLengths = 17;
  static constexpr std::size_t kWindows = 6;

  const AnalysisTableSet* find(std::int32_t bits, char window);

  std::mutex lock_;  // one builder at a time
  std::array<std::unique_ptr<const AnalysisTableSet>, kLengths * kWindows> built_;
  std::atomic<const AnalysisTableSet*> eeg_{nullptr};
  std::atomic<const AnalysisTableSet*> sound_{nullptr};
  std::atomic<std::uint32_t> initCount_{0};
};

/// The swap table of N = 2^bits; with `pairs` each swap appears once (see AnalysisTableSet::revs),
/// without it every entry holds its bit-reversed index.
[[nodiscard]] std::vector<std::int32_t> bitReversalTable(std::int32_t bits, bool pairs);
[[nodiscard]] std::vector<std::int32_t> sineTable(std::int32_t bits);
[[nodiscard]] std::vector<std::int32_t> windowTable(std::int32_t bits, char window);

}  // namespace ovka
