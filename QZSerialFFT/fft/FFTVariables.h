#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "Shared.h"
#include "SharedBlock.h"

/// Settings and results of the spectral engine. Settings are written by the user's panels (see
/// AnalysisSettings.h for those that change together) and read once at the start of each pass;
/// results are written by the engine.
namespace ovka::fft {

/// Longest transform (samples) and its bins.
inline constexpr std::int32_t kMaxPoints = 65536;
inline constexpr std::int32_t kMaxBins = kMaxPoints / 2;
/// Analysis channels: 0 to 3 are A, B, D, E; 4 and 5 the two sound channels.
inline constexpr std::int32_t kEegChannels = 4;
inline constexpr std::int32_t kAllChannels = 6;
/// Rows of the averaging ring, and positions of the peak history.
inline constexpr std::int32_t kRingRows = 64;

// name, default: meaning (unit).

/// Transform length (samples), a power of two from 128 to 65536.
inline constinit Shared<std::int32_t> fftp{1024};
/// log2 of `fftp`, 7 to 16: what fftinit:WindowType: takes.
inline constinit Shared<std::int32_t> fftpX{10};
/// Index of the length choice, 0 to 9.
inline constinit Shared<std::int32_t> FFTpointX{3};
/// log2 of the length that the FFT panel shows.
inline constinit Shared<std::int32_t> fftpoint{10};
/// Non-zero: every input sample is 0.
inline constinit Shared<std::int32_t> stopWindFunction{0};
/// Window shape: 'r' rectangular, 't' triangular, 'm' Hamming, 'n' Hanning, 'b' Blackman.
inline constinit Shared<char> windSape{'n'};
/// Window shape that the FFT panel passes on when it changes the length.
inline constinit Shared<char> fftwind{'n'};
/// Index of the gain rule, 0 to 3; 2 makes readings independent of the window shape.
inline constinit Shared<std::int32_t> FFTcalculationSelectX{2};
/// Gain of every windowed sample before the transform; follows gain rule and window.
inline constinit Shared<double> scalerX{2.0 * 1.414213562};
/// Gain before the transform of the band powers; follows with `scalerX`.
inline constinit Shared<double> scalerY{0.78125};
/// Non-zero: spectra are stored in the logarithmic scale.
inline constinit Shared<std::int32_t> LOGpowerONed{0};
/// Non-zero: the DC cut is on; its setting 0 to 10 (2: below 0.5 Hz).
inline constinit Shared<std::int32_t> DCcutONed{1};
inline constinit Shared<std::uint32_t> setDCNumber{2};
/// Non-zero: the mains notch is on; its setting 0 to 7 (0: 49 to 51 Hz).
inline constinit Shared<std::int32_t> ACcutONed{0};
inline constinit Shared<std::uint32_t> setACNumber{0};
/// Non-zero: DC offsets are estimated; over 1 << setting passes, setting 0 to 5.
inline constinit Shared<std::int32_t> AutoZeroRawDataONed{0};
inline constinit Shared<std::int32_t> setAutoZeroNumber{3};
/// 1: spectra are averaged over `AverageTime` passes (1 to 64); index of that choice, 0 to 6.
inline constinit Shared<std::int32_t> calculationSelectX{0};
inline constinit Shared<std::int32_t> AverageTime{10};
inline constinit Shared<std::int32_t> setAverageTime{3};
/// 0: no peak search; 1: the three slots scanning downward; 2: scanning upward.
inline constinit Shared<std::int32_t> calculatePeakSelectX{1};
/// 1: peaks are searched from `LowFX` to `HighFX` (Hz); 0, 2, 3: in the whole spectrum.
inline constinit Shared<std::int32_t> UsePeakModeX{1};
inline constinit Shared<float> LowFX{2.0F};
inline constinit Shared<float> HighFX{40.0F};
/// Gain index of channels A, B, D, E, 0 to 11 (5: gain 1), and of the sound channels, 0 to 14 (8:
/// gain 1).
inline constinit Shared<std::int32_t> setGain1Number{5};
inline constinit Shared<std::int32_t> setGain2Number{5};
inline constinit Shared<std::int32_t> setGain3Number{5};
inline constinit Shared<std::int32_t> setGain4Number{5};
inline constinit Shared<std::int32_t> setGain1NumberSound{8};
/// Smallest normalised cross magnitude that counts as coherence; its setting 0 to 6.
inline constinit Shared<double> CoherenceLevel{0.01};
inline constinit Shared<std::int32_t> setCoherenceLevel{0};
/// Spectra that the brain-switch counts look back on, 1 to 64, and what is taken off that number
/// when a count is scaled to 100.
inline constinit Shared<std::int32_t> maxBScount{32};
inline constinit Shared<float> coherenceSWoffset{0.0F};
/// A bin of a pair counts while its coherence (0 to 100) is above this.
inline constinit Shared<float> coherenceSWlevel{70.0F};
/// A bin of a channel counts while its value is above this many times the mean of its spectrum from
/// bin 1 on, and above the least value (units of the spectrum).
inline constinit Shared<float> peakSWratio{2.0F};
inline constinit Shared<float> peakSWlevel{0.1F};

// Results.

/// 1 while the tables are being rebuilt.
inline constinit Shared<std::int32_t> stratFFTinit{0};
/// 1 from the creation of the first engine on.
inline constinit Shared<std::int32_t> firstTimeRunFFT{0};
/// Frequency (Hz) of the peak that the last band query found.
inline constinit Shared<float> peakFrequencyX{0.0F};
/// Estimated offset (units of the spectrum's bin 0), running total and count a channel.
inline constinit Shared<double> DCoffsetA{0.0}, DCoffsetB{0.0}, DCoffsetD{0.0}, DCoffsetE{0.0};
inline constinit Shared<double> DCoffsetATotal{0.0}, DCoffsetBTotal{0.0}, DCoffsetDTotal{0.0},
    DCoffsetETotal{0.0};
inline constinit Shared<std::int32_t> smoothCountA{0}, smoothCountB{0}, smoothCountD{0},
    smoothCountE{0};

/// Three peaks: strongest value, its frequency (Hz), second value, its frequency, third, its.
using PeakList = SharedBlock<float, 6>;
inline constinit PeakList peakFFTA, peakFFTB, peakFFTD, peakFFTE, peakFFTASound, peakFFTBSound;
/// Three rows of four 32-bit words: value (float), frequency (float), bin (int32), 0. A row for
/// each of the analysis channels; `PeakfftPower` keeps those of the last pass that was no
/// brain-switch pass.
using PeakRows = SharedBlock<std::uint32_t, 12>;
inline constinit std::array<PeakRows, kAllChannels> PeakfftPowerFV{}, PeakfftPower{};
/// Strongest value of each of the last 64 passes, and where the next one goes.
inline constinit std::array<SharedBlock<double, kRingRows>, kAllChannels> peakHistory{};
inline constinit SharedBlock<std::int32_t, kAllChannels> avPeakCount;

/// Brain-switch counts, rows of 180 (see SpectrumHistory.h): of channels 0 to 3, and of the
/// coherence pairs 4 to 9 (row 0 is pair 4).
inline constexpr std::size_t kSwitchRow = 180;
inline constinit std::array<SharedBlock<float, kSwitchRow>, 4> peakSWfftCount{};
inline constinit std::array<SharedBlock<float, kSwitchRow>, 6> peakSWcoherenceCount{};

/// The peak list of an analysis channel 0 to 5.
[[nodiscard]] PeakList& peakFFT(std::int32_t channel);
/// The offset, total and count of an EEG channel 0 to 3.
struct AutoZeroState {
  Shared<double>& offset;
  Shared<double>& total;
  Shared<std::int32_t>& count;
};
[[nodiscard]] AutoZeroState autoZeroState(std::int32_t channel);

/// Puts every variable back to its default.
void resetVariables();

}  // namespace ovka::fft
