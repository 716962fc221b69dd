#include <bit>
#include <doctest/doctest.h>

#include "EngineRig.h"
#include "PlainEngine.h"
#include "SpectrumAverage.h"
#include "SpectrumPeaks.h"

using namespace ovka;
using ovka::testing::EngineRig;

namespace {

// What a pass of channel 0 to 3 at PT must leave.
plain::Spectrum plainPass(const EngineRig& rig, std::int32_t channel, std::int64_t PT) {
  plain::Spectrum result =
      plain::transform(plain::fetch(rig.store, rig.engine, channel, PT, fft::fftp), fft::scalerX);
  if (fft::LOGpowerONed != 0) plain::logScale(result.magnitude);
  const double width = static_cast<double>(buffer::SampleSpeed) / fft::fftp;
  const double edges[] = {0, 0.1, 0.5, 1, 2, 3, 4, 8, 16, 32, 64};
  const double lows[] = {49, 59, 45, 48, 45, 58, 55, 55};
  const double highs[] = {51, 61, 65, 52, 55, 62, 65, 70};
  for (std::size_t k = 0; k < result.magnitude.size(); ++k) {
    const auto bin = static_cast<double>(k);
    if (fft::DCcutONed != 0 && fft::setDCNumber <= 10 &&
        bin < (fft::setDCNumber == 0 ? 1.0 : std::trunc(edges[fft::setDCNumber] / width))) {
      result.magnitude[k] /= 10.0;
      result.pairs[2 * k] /= 10.0;
      result.pairs[2 * k + 1] = 0.0;
    }
    if (fft::ACcutONed != 0 && fft::setACNumber <= 7 &&
        bin >= std::trunc(lows[fft::setACNumber] / width) &&
        bin < std::trunc(highs[fft::setACNumber] / width)) {
      result.magnitude[k] = result.pairs[2 * k] = result.pairs[2 * k + 1] = 0.0;
    }
  }
  return result;
}

void pass(EngineRig& rig, std::int32_t channel, std::int64_t PT) {
  static constexpr void (QZFFT::*doors[])(std::int64_t, std::int32_t, std::int32_t) = {
      &QZFFT::getAndfftA, &QZFFT::getAndfftB, &QZFFT::getAndfftD, &QZFFT::getAndfftE};
  (rig.engine.*doors[channel])(PT, 0, 0);
}

}  // namespace

TEST_CASE("a pass equals the plain form bit for bit under random settings") {
  EngineRig rig;
  rig.fillNoise(150000);
  std::mt19937 random(7);
  const auto pick = [&](int n) {
    return static_cast<std::int32_t>(random() % static_cast<unsigned>(n));
  };
  for (int round = 0; round < 60; ++round) {
    rig.use(round < 10 ? round : pick(7), "rtmnbx"[pick(6)]);
    fft::selectFFTcalculation(pick(4));
    fft::setGain1Number = pick(13);
    fft::setGain4Number = pick(13);
    fft::LOGpowerONed = pick(3) == 0;
    fft::DCcutONed = pick(2);
    fft::setDCNumber = static_cast<std::uint32_t>(pick(12));
    fft::ACcutONed = pick(2);
    fft::setACNumber = static_cast<std::uint32_t>(pick(9));
    fft::stopWindFunction = pick(10) == 0;
    buffer::SelectDevice = static_cast<std::uint32_t>(pick(10));
    buffer::ReversPolarityX = pick(2);
    buffer::LeftRightReverse = pick(2);
    buffer::SampleSpeed = pick(2) == 0 ? 120U : 257U;
    const std::int32_t channel = pick(4);
    const std::int64_t PT = pick(3) == 0 ? pick(fft::fftp) : pick(150000);
    CAPTURE(round);
    pass(rig, channel, PT);
    const plain::Spectrum expected = plainPass(rig, channel, PT);
    CHECK(rig.spectrum(channel) == expected.magnitude);
    CHECK(rig.coefficients(channel) == expected.pairs);
  }
}

TEST_CASE("filter edges") {
  struct Row {
    std::uint32_t dc, ac;  // 99: off
    std::int32_t speed, points, dcEnd, low, high;
  };
  for (const Row& row :
       {Row{3, 99, 256, 256, 1, 0, 0}, Row{99, 0, 256, 512, 0, 98, 102},
        Row{0, 99, 256, 256, 1, 0, 0}, Row{1, 99, 256, 256, 0, 0, 0}, Row{11, 8, 256, 256, 0, 0, 0},
        Row{10, 7, 100, 1024, 512, 512, 512}, Row{10, 7, 0, 1024, 0, 0, 0}}) {
    const auto [dcOn, acOn] = std::pair{row.dc != 99, row.ac != 99};
    const FilterBins bins =
        FilterBins::of(dcOn, dcOn ? row.dc : 0, acOn, acOn ? row.ac : 0, row.speed, row.points);
    CHECK(bins.dcEnd == row.dcEnd);
    CHECK(bins.notchLow == row.low);
    CHECK(bins.notchHigh == row.high);
  }
  // One array given twice is cut twice.
  std::vector<double> pairs{100.0, 7.0, 100.0, 7.0};
  SpectrumFilter::ACDCfilter(pairs.data(), pairs.data(), 1, 0, 0, 0, 256, 4);
  CHECK(pairs == std::vector<double>{1.0, 0.0, 100.0, 7.0});
}

TEST_CASE("averaging equals the plain tree through changes of length, times and tables") {
  EngineRig rig;
  rig.fillNoise(20000);
  fft::calculationSelectX = 1;
  std::vector<plain::Values> rows(64, plain::Values(fft::kMaxBins));
  std::size_t index = 0;
  std::mt19937 random(3);
  std::int32_t length = 0;
  rig.use(length);
  for (int round = 0; round < 400; ++round) {
    if (round % 37 == 36) fft::selectAverageTime(static_cast<std::int32_t>(random() % 7));
    if (round % 90 == 89) {
      length = static_cast<std::int32_t>(random() % 3);
      rig.use(length);
      index = 0;
    }
    const auto times = static_cast<std::size_t>(fft::AverageTime);
    const std::int64_t PT = 1000 + static_cast<std::int64_t>(random() % 19000);
    const plain::Values magnitude = plainPass(rig, 1, PT).magnitude;
    if (index >= times) index = 0;
    std::copy(magnitude.begin(), magnitude.end(), rows[index].begin());
    index = (index + 1) % times;
    plain::Values expected(magnitude.size());
    for (std::size_t k = 0; k < expected.size(); ++k) expected[k] = plain::average(rows, k, times);
    rig.engine.getAndfftB(PT, 0, 0);
    CAPTURE(round);
    REQUIRE(rig.spectrum(1) == expected);
  }
  // The coefficients are never averaged.
  rig.engine.getAndfftB(5000, 0, 0);
  CHECK(rig.coefficients(1) == plainPass(rig, 1, 5000).pairs);
}

TEST_CASE("averaging goes on in the tree after its index is reset anywhere in a group") {
  SpectrumAverage average;
  std::vector<plain::Values> rows(64, plain::Values(40));
  std::size_t index = 0;
  std::mt19937 random(11);
  for (const std::size_t times : {64U, 1U, 10U, 5U, 32U, 20U, 2U, 64U, 37U, 64U}) {
    for (int round = 0; round < 150; ++round) {
      if (random() % 23 == 0) {
        average.resetIndex();
        index = 0;
      }
      // A shorter spectrum now and then leaves the further bins of its row as they were.
      plain::Values spectrum(random() % 29 == 0 ? 24 : 40);
      for (double& value : spectrum)
        value = std::ldexp(1.0 + static_cast<double>(random()), -static_cast<int>(random() % 60));
      if (index >= times) index = 0;
      std::copy(spectrum.begin(), spectrum.end(), rows[index].begin());
      index = (index + 1) % times;
      plain::Values expected(spectrum.size());
      for (std::size_t k = 0; k < expected.size(); ++k) {
        expected[k] = plain::average(rows, k, times);
      }
      average.replaceByAverage(spectrum, static_cast<std::int32_t>(times));
      CAPTURE(times);
      CAPTURE(round);
      REQUIRE(spectrum == expected);
    }
  }
}

TEST_CASE("automatic zero leaves out the value that completes the count") {
  EngineRig rig;
  fft::AutoZeroRawDataONed = 1;
  fft::setAutoZeroNumber = 0;
  SpectrumTransform::automaticZero(0, 40.0);
  CHECK(fft::DCoffsetA == 0.0);
  fft::setAutoZeroNumber = 2;
  for (const double value : {1.0, 2.0, 3.0, 100.0, 8.0}) SpectrumTransform::automaticZero(3, value);
  CHECK(fft::DCoffsetE == 6.0 / 4.0);
  CHECK(fft::smoothCountE == 1);
  CHECK(fft::DCoffsetETotal == 8.0);
  SpectrumTransform::automaticZero(4, 1.0);  // the sound channels have none
  CHECK(fft::DCoffsetD == 0.0);
  // The raw waves are corrected by offset / -1.5.
  rig.fill(4, 10, [](std::int64_t i) { return i; });
  CHECK(rig.engine.getERawwaveX(7) == 7.0 + 1.5 / -1.5);
  std::vector<double> wave(3);
  rig.engine.getERawwave(2, wave);
  CHECK(wave == std::vector<double>{1.0, 2.0, 3.0});
}

TEST_CASE("dofftKel takes bin 0 for the automatic zero before the DC cut") {
  EngineRig rig;
  fft::AutoZeroRawDataONed = 1;
  fft::setAutoZeroNumber = 1;
  fft::DCcutONed = 1;
  fft::scalerX = 1.0;
  std::vector<double> data(512, 0.0), coherence(512);
  for (std::size_t i = 0; i < 256; ++i) data[2 * i] = 3.0;
  rig.engine.dofftKel(data.data(), coherence.data(), 0, 2, 256, 256, 0);
  CHECK(data[0] == 3.0);  // 0.5 Hz lies below bin 1: nothing was cut
  CHECK(fft::DCoffsetDTotal == 3.0);
  CHECK(coherence[0] == 3.0 * 256);
  // With log scale magnitude 1 gives 10 and anything below 0.1 exactly 0.
  for (std::size_t i = 0; i < 256; ++i) data[2 * i] = 1.0;
  rig.engine.dofftKel(data.data(), coherence.data(), 0, 2, 256, 256, 1);
  CHECK(data[0] == 10.0);
  CHECK(data[2] == 0.0);
  std::vector<double> edge{0.0999999, 0.1, 0.1000001};
  SpectrumTransform::toLogScale(edge);
  CHECK(edge == std::vector<double>{0.0, 10.0 * (std::log10(0.1) + 1.0),
                                    10.0 * (std::log10(0.1000001) + 1.0)});
  // In a pass too it is bin 0 as the log scale leaves it.
  rig.use(1);
  rig.fillNoise(300);
  fft::LOGpowerONed = 1;
  fft::DCcutONed = 0;
  rig.engine.getAndfftA(300, 0, 0);
  CHECK(fft::DCoffsetATotal == rig.spectrum(0)[0]);
  CHECK(fft::DCoffsetATotal > 0.0);
  const std::vector<double> before = data;
  rig.engine.dofftKel(data.data(), coherence.data(), 0, 2, 200, 256, 0);  // no such length
  CHECK(data == before);
}

TEST_CASE("peak slots are no sorted top three, and the directions differ") {
  struct Row {
    std::vector<double> spectrum;
    bool downward;
    std::array<float, 3> values;
  };
  for (const Row& row :
       {Row{{0, 9, 7, 5, 3}, true, {9, 0, 0}}, Row{{0, 9, 7, 5, 3}, false, {9, 7, 5}},
        Row{{0, 3, 5, 7, 9}, false, {9, 0, 0}}, Row{{4, 4, 4, 4}, false, {4, 4, 4}},
        Row{{1, 8, 2, 6, 3}, true, {8, 2, 1}}, Row{{NAN, 2, -1, 0}, false, {2, 0, 0}}}) {
    const PeakRange range{0, static_cast<std::int32_t>(row.spectrum.size()), 0.5F};
    const Peaks peaks = searchPeaks(row.spectrum, range, row.downward);
    for (std::size_t p = 0; p < 3; ++p) CHECK(peaks[p].value == row.values[p]);
    CHECK(peaks[0].frequency == static_cast<float>(peaks[0].bin) * 0.5F);
  }
  // Long spectra pass over stretches; they must meet the same bins as a plain scan.
  std::mt19937 random(5);
  for (int round = 0; round < 200; ++round) {
    std::vector<double> spectrum(300);
    for (double& value : spectrum)
      value = static_cast<double>(random() % (round % 2 ? 50 : 100000));
    const auto low = static_cast<std::int32_t>(random() % 150);
    const auto high = static_cast<std::int32_t>(150 + random() % 151);
    for (const bool downward : {true, false}) {
      std::array<float, 3> slots{};
      for (std::int32_t i = 0; i < high - low; ++i) {
        const std::int32_t bin = downward ? high - 1 - i : low + i;
        const auto value = static_cast<float>(spectrum[static_cast<std::size_t>(bin)]);
        for (float& slot : slots) {
          if (value > slot) {
            slot = value;
            break;
          }
        }
      }
      const Peaks peaks = searchPeaks(spectrum, {low, high, 1.0F}, downward);
      for (std::size_t p = 0; p < 3; ++p) REQUIRE(peaks[p].value == slots[p]);
    }
  }
}

TEST_CASE("a pass publishes its peaks within the range; a brain-switch pass spares the outputs") {
  EngineRig rig;
  buffer::SampleSpeed = 128;
  rig.use(3);                      // bins of 0.125 Hz
  rig.fillSine(1000.0, 80, 1024);  // 10 Hz
  rig.engine.getAndfftA(1024, 0, 0);
  CHECK(fft::peakFFTA[1] == doctest::Approx(10.0).epsilon(0.02));
  CHECK(fft::PeakfftPower[0][2] == 80);
  CHECK(std::bit_cast<float>(fft::PeakfftPower[0][0]) == fft::peakFFTA[0]);
  CHECK(fft::avPeakCount[0] == 1);
  CHECK(averagePeak(0, 1) == static_cast<double>(fft::peakFFTA[0]));

  rig.fillSine(1000.0, 160, 1024);  // 20 Hz
  rig.engine.getAndfftA(1024, 0, 1);
  CHECK(fft::PeakfftPowerFV[0][2] == 160);
  CHECK(fft::PeakfftPower[0][2] == 80);
  fft::HighFX = 19.0F;
  rig.engine.getAndfftA(1024, 0, 0);
  CHECK(fft::peakFFTA[1] < 19.0F);
  for (const std::int32_t mode : {0, 2, 3}) {
    fft::UsePeakModeX = mode;
    CHECK(PeakRange::ofSettings(1024).high == 512);
  }
  fft::UsePeakModeX = 4;
  CHECK(PeakRange::ofSettings(1024).high == 0);
}

TEST_CASE("a 50 microvolt sine of 10 Hz gives its peak within one bin at every length") {
  // Models 5 to 9 store 163.84 a microvolt.
  EngineRig rig;
  buffer::SelectDevice = 6;
  buffer::SampleSpeed = 128;
  fft::HighFX = 30.0F;
  rig.fill(1, 70000, [](std::int64_t i) {
    return std::lround(163.84 * 50.0 * std::sin(2 * M_PI * 10.0 * static_cast<double>(i) / 128.0));
  });
  for (std::int32_t index = 0; index < 10; ++index) {
    rig.use(index);
    rig.engine.getAndfftA(70000, 0, 0);
    CAPTURE(index);
    CHECK(std::abs(fft::peakFFTA[1] - 10.0F) <= 128.0F / static_cast<float>(fft::fftp));
    // gain 1 / 4, half amplitude a side, window made up for, times the root of 2
    CHECK(fft::peakFFTA[0] == doctest::Approx(50.0 / 8.0 * 1.414213562).epsilon(0.02));
  }
}

TEST_CASE("sound channels: own tables, own gain, sine and blocks put in") {
  EngineRig rig;
  rig.use(3, 'n');
  rig.engine.fftinit2(10, 'r');
  fft::scalerX = 1.0;
  fft::DCcutONed = 0;
  std::vector<double> block(1024, 100.0);
  rig.engine.putSoundBlock(0, block);
  rig.engine.getAndfftASound(1024, 0, 0);
  const double full = 100.0 * 32767 / 32768.0 * (1.0 * 3.05 * 0.25);
  CHECK(rig.spectrum(4)[0] == doctest::Approx(full));
  CHECK(rig.spectrum(4)[1] == doctest::Approx(0.0));
  rig.engine.getAndfftBSound(1024, 0, 0);
  CHECK(rig.spectrum(5)[0] == 0.0);

  // 1024 / (2 pi 32) points a radian: 32 cycles a block; a quarter turn between the channels.
  rig.engine.sinwaveSoundTest(5.0929582F, 90);
  rig.engine.getAndfftASound(1024, 0, 0);
  rig.engine.getAndfftBSound(1024, 0, 0);
  CHECK(fft::PeakfftPower[4][2] == 32);
  CHECK(rig.engine.CoherenceMSound(32, 1024) < 1.0);
  const double first = rig.spectrum(5)[32];
  rig.engine.sinwaveSoundTestPower(60.0F);  // twice the amplitude at first, angle 0
  rig.engine.getAndfftASound(1024, 0, 0);
  rig.engine.getAndfftBSound(1024, 0, 0);
  CHECK(rig.spectrum(5)[32] == doctest::Approx(2 * first).epsilon(1e-6));
  CHECK(rig.engine.CoherenceMSound(32, 1024) == doctest::Approx(100.0));
}
