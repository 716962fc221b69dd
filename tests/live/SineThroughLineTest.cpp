#include <chrono>
#include <cmath>
#include <doctest/doctest.h>
#include <string>
#include <thread>
#include <vector>

#include "BufferVariables.h"
#include "CapturedPrint.h"
#include "FFTVariables.h"
#include "LiveSession.h"

using namespace ovka;

namespace {

struct Row {
  std::uint32_t model;
  std::uint32_t config;
  int framing;
  int channels;      // of A, B, D, E that carry the sine
  double tolerance;  // microvolts: what the model's code steps allow
};

// A plain spectrum: rectangular window, gain 1, nothing cut, one hertz a bin.
LiveChoice sineChoice(const Row& row) {
  LiveChoice choice;
  choice.demo = true;
  choice.amplifier.model = row.model;
  choice.amplifier.config = row.config;
  choice.amplifier.samplesPerSecond = 1024;  // model 1 takes no commands
  choice.amplifier.signal = SignalKind::Sine;
  choice.assignments = {"SelectDevice=" + std::to_string(row.model),
                        "DeviceConfig=" + std::to_string(row.config),
                        "FixedFramingX=" + std::to_string(row.framing),
                        "MaxTimeActionX=0",
                        "SampleSpeed=1024",
                        "fftp=1024",
                        "windSape=r",
                        "FFTcalculationSelectX=1",
                        "DCcutONed=0"};
  return choice;
}

bool waitForPoints(std::int64_t points) {
  for (int i = 0; i < 800 && buffer::ploop < points; ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return buffer::ploop >= points;
}

/// Amplitude of a bin in microvolts, back through the scaling of reader, gain and transform.
double amplitudeAt(QZFFT& fft, std::uint32_t array, std::int64_t bin) {
  constexpr double kGain = 1.0 / 4.0;
  constexpr double kWindow = 32767.0 / 32768.0;
  return fft.getcomplexDoubleFromBuffer(array, bin).real * 2 / kGain / kWindow;
}

}  // namespace

TEST_CASE("a sine of 10 Hz and 50 microvolts comes back from every model on a line") {
  const testing::CapturedPrint quiet;
  const std::vector<Row> rows{
      {0, 0, 1, 2, 1.0},  {0, 2, 1, 3, 1.0},  {0, 3, 1, 4, 1.0},  {0, 3, 0, 4, 50.0},
      {1, 1, 0, 1, 2.5},  {2, 3, 1, 4, 1.0},  {3, 3, 1, 4, 1.0},  {5, 3, 1, 4, 0.05},
      {6, 0, 1, 2, 0.05}, {6, 2, 1, 2, 0.05}, {6, 3, 1, 4, 0.05}, {6, 3, 0, 4, 50.0},
      {7, 3, 1, 4, 0.05}, {8, 1, 1, 2, 0.05}, {9, 3, 1, 4, 0.05},
  };
  constexpr std::array<std::uint32_t, 4> kSpectrumArrays{0, 1, 3, 4};
  for (const Row& row : rows) {
    CAPTURE(row.model);
    CAPTURE(row.config);
    CAPTURE(row.framing);
    LiveSession session;
    const LiveSession::Opened opened = session.open(sineChoice(row));
    REQUIRE_MESSAGE(opened.explanation.empty(), opened.explanation);
    REQUIRE(waitForPoints(1300));
    session.close();
    QZFFT& fft = session.engine().fft();
    const std::int64_t now = buffer::ploop;
    fft.getAndfftA(now, 0, 0);
    fft.getAndfftB(now, 0, 0);
    fft.getAndfftD(now, 0, 0);
    fft.getAndfftE(now, 0, 0);
    for (int channel = 0; channel < row.channels; ++channel) {
      CAPTURE(channel);
      const std::uint32_t array = kSpectrumArrays[static_cast<std::size_t>(channel)];
      std::int64_t strongest = 1;
      for (std::int64_t bin = 1; bin < 512; ++bin) {
        if (amplitudeAt(fft, array, bin) > amplitudeAt(fft, array, strongest)) strongest = bin;
      }
      CHECK(std::abs(strongest - 10) <= 1);
      if (row.framing == 1 || row.model == 1) {
        CHECK(amplitudeAt(fft, array, 10) == doctest::Approx(50.0).epsilon(row.tolerance / 50));
      }
    }
  }
}
