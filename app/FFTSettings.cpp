#include "FFTVariables.h"
#include "SettingsRegistry.h"
#include "SettingsTables.h"

namespace ovka {
namespace {

void addTransformSettings(SettingsRegistry& to) {
  using namespace fft;  // NOLINT: a table of this room's names
  to.add("fftp", fftp, 128, 65536, "samples of a transform").choices =
      "128 256 512 1024 2048 4096 8192 16384 32768 65536";
  to.add("fftpX", fftpX, 7, 16, "the same as its base-2 logarithm");
  to.add("FFTpointX", FFTpointX, 0, 9, "the same by menu: 128 to 65536");
  to.add("windSape", windSape, 0, 0,
         "window: r rectangular, t triangular, m Hamming, n Hanning, b Blackman")
      .choices = "rtmnb";
  to.add("stopWindFunction", stopWindFunction, 0, 1, "1: the analysis sees silence");
  to.add("FFTcalculationSelectX", FFTcalculationSelectX, 0, 3,
         "gain rule: 0 effective, 1 plain, 2 and 3 the same corrected for the window");
  to.add("scalerX", scalerX, -1e6, 1e6, "gain before the transform; follows rule and window");
  to.add("scalerY", scalerY, -1e6, 1e6, "gain before the band powers; follows rule and window");
  to.add("LOGpowerONed", LOGpowerONed, 0, 1, "1: logarithmic spectra");
  to.add("calculationSelectX", calculationSelectX, 0, 1, "1: average the last AverageTime spectra");
  to.add("AverageTime", AverageTime, 1, 64, "spectra to average").choices = "1 2 5 10 20 32 64";
  to.add("setAverageTime", setAverageTime, 0, 6, "the same by menu");
  to.add("setGain1Number", setGain1Number, 0, 11,
         "gain of channel A: 10, 5, 3, 2, 1.5, 1, 0.5, 0.2, 0.1, 0.05, 0.02, 0.01");
  to.add("setGain2Number", setGain2Number, 0, 11, "gain of channel B, as A");
  to.add("setGain3Number", setGain3Number, 0, 11, "gain of channel D, as A");
  to.add("setGain4Number", setGain4Number, 0, 11, "gain of channel E, as A");
  to.add("setGain1NumberSound", setGain1NumberSound, 0, 14,
         "gain of the sound channels: 400, 200, 100, 50, 20, 10, 5, 2, 1, 0.5, ... 0.01");
}

void addFilterSettings(SettingsRegistry& to) {
  using namespace fft;  // NOLINT: a table of this room's names
  to.add("DCcutONed", DCcutONed, 0, 1, "1: the lowest bins are cut");
  to.add("setDCNumber", setDCNumber, 0, 10,
         "cut below: bin 0 alone, 0.1, 0.5, 1, 2, 3, 4, 8, 16, 32, 64 Hz");
  to.add("ACcutONed", ACcutONed, 0, 1, "1: mains hum is cut");
  to.add("setACNumber", setACNumber, 0, 7,
         "cut from 49-51, 59-61, 45-65, 48-52, 45-55, 58-62, 55-65, 55-70 Hz");
  to.add("AutoZeroRawDataONed", AutoZeroRawDataONed, 0, 1, "1: DC offsets are estimated");
  to.add("setAutoZeroNumber", setAutoZeroNumber, 0, 5, "over 1, 2, 4, 8, 16, 32 passes");
}

void addPeakSettings(SettingsRegistry& to) {
  using namespace fft;  // NOLINT: a table of this room's names
  constexpr double kHighest = 100000;
  to.add("calculatePeakSelectX", calculatePeakSelectX, 0, 2,
         "peak search: 0 none, 1 downward, 2 upward");
  to.add("UsePeakModeX", UsePeakModeX, 0, 3, "1: from LowFX to HighFX, else the whole spectrum");
  to.add("LowFX", LowFX, 0, kHighest, "lowest frequency of the peak search (Hz)");
  to.add("HighFX", HighFX, 0, kHighest, "highest frequency of the peak search (Hz)");
  to.add("CoherenceLevel", CoherenceLevel, 0, 1e9, "least cross magnitude that counts");
  to.add("setCoherenceLevel", setCoherenceLevel, 0, 6,
         "the same by menu: 0.01, 0.05, 0.1, 0.5, 1, 2, 5");
  to.add("maxBScount", maxBScount, 1, 64, "spectra that the brain-switch counts look back on");
  to.add("coherenceSWoffset", coherenceSWoffset, -64, 63.5, "taken off that number for the scale");
  to.add("coherenceSWlevel", coherenceSWlevel, 0, 100, "coherence above which a bin counts");
  to.add("peakSWratio", peakSWratio, 0, 1e6, "times the mean above which a bin counts");
  to.add("peakSWlevel", peakSWlevel, 0, 1e9, "least value that counts");
}

}  // namespace

void addFFTSettings(SettingsRegistry& to) {
  addTransformSettings(to);
  addFilterSettings(to);
  addPeakSettings(to);
  to.addStatus("stratFFTinit", fft::stratFFTinit, "1: the tables are being rebuilt");
  to.addStatus("peakFrequencyX", fft::peakFrequencyX, "frequency of the last band query (Hz)");
  to.addStatus("DCoffsetA", fft::DCoffsetA, "estimated offset of channel A");
  to.addStatus("DCoffsetB", fft::DCoffsetB, "estimated offset of channel B");
  to.addStatus("DCoffsetD", fft::DCoffsetD, "estimated offset of channel D");
  to.addStatus("DCoffsetE", fft::DCoffsetE, "estimated offset of channel E");
}

}  // namespace ovka
