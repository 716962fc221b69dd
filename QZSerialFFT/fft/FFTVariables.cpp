#include "FFTVariables.h"

namespace ovka::fft {

PeakList& peakFFT(std::int32_t channel) {
  static constexpr std::array<PeakList*, kAllChannels> lists{
      &peakFFTA, &peakFFTB, &peakFFTD, &peakFFTE, &peakFFTASound, &peakFFTBSound};
  return *lists[static_cast<std::size_t>(channel)];
}

AutoZeroState autoZeroState(std::int32_t channel) {
  switch (channel) {
    case 0:
      return {DCoffsetA, DCoffsetATotal, smoothCountA};
    case 1:
      return {DCoffsetB, DCoffsetBTotal, smoothCountB};
    case 2:
      return {DCoffsetD, DCoffsetDTotal, smoothCountD};
    default:
      return {DCoffsetE, DCoffsetETotal, smoothCountE};
  }
}

namespace {

void resetSettings() {
  fftp = 1024;
  fftpX = 10;
  FFTpointX = 3;
  fftpoint = 10;
  stopWindFunction = 0;
  windSape = 'n';
  fftwind = 'n';
  FFTcalculationSelectX = 2;
  scalerX = 2.0 * 1.414213562;
  scalerY = 0.78125;
  LOGpowerONed = 0;
  DCcutONed = 1;
  setDCNumber = 2U;
  ACcutONed = 0;
  setACNumber = 0U;
  AutoZeroRawDataONed = 0;
  setAutoZeroNumber = 3;
  calculationSelectX = 0;
  AverageTime = 10;
  setAverageTime = 3;
  calculatePeakSelectX = 1;
  UsePeakModeX = 1;
  LowFX = 2.0F;
  HighFX = 40.0F;
  for (Shared<std::int32_t>* gain :
       {&setGain1Number, &setGain2Number, &setGain3Number, &setGain4Number}) {
    *gain = 5;
  }
  setGain1NumberSound = 8;
  CoherenceLevel = 0.01;
  setCoherenceLevel = 0;
  maxBScount = 32;
  coherenceSWoffset = 0.0F;
  coherenceSWlevel = 70.0F;
  peakSWratio = 2.0F;
  peakSWlevel = 0.1F;
}

void resetResults() {
  stratFFTinit = 0;
  firstTimeRunFFT = 0;
  peakFrequencyX = 0.0F;
  for (std::int32_t channel = 0; channel < kEegChannels; ++channel) {
    const AutoZeroState state = autoZeroState(channel);
    state.offset = 0.0;
    state.total = 0.0;
    state.count = 0;
  }
  for (std::int32_t channel = 0; channel < kAllChannels; ++channel) {
    const auto c = static_cast<std::size_t>(channel);
    peakFFT(channel).clear();
    PeakfftPowerFV[c].clear();
    PeakfftPower[c].clear();
    peakHistory[c].clear();
  }
  avPeakCount.clear();
  for (auto& row : peakSWfftCount) row.clear();
  for (auto& row : peakSWcoherenceCount) row.clear();
}

}  // namespace

void resetVariables() {
  resetSettings();
  resetResults();
}

}  // namespace ovka::fft
