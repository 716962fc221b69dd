#include <doctest/doctest.h>

#include "DyadicSum.h"
#include "EngineRig.h"
#include "PlainEngine.h"

using namespace ovka;
using ovka::testing::EngineRig;

namespace {
// Sums over a spectrum of ones count the bins of each band.
std::array<double, 8> binsOfBands(std::int32_t points, std::uint32_t speed) {
  buffer::SampleSpeed = speed;
  const std::vector<double> ones(static_cast<std::size_t>(points / 2), 1.0);
  return bandSums(ones.data(), points).bands;
}
}  // namespace

TEST_CASE("band edges map to bins") {
  EngineRig rig;
  CHECK(binsOfBands(256, 256) == std::array<double, 8>{2, 2, 3, 5, 12, 10, 15, 10});
  CHECK(binsOfBands(512, 256) == std::array<double, 8>{4, 4, 6, 10, 24, 20, 30, 20});
  CHECK(binsOfBands(256, 257) == binsOfBands(256, 256));  // an odd speed loses its half
  CHECK(binsOfBands(128, 64) == std::array<double, 8>{4, 4, 6, 10, 24, 14, 0, 0});  // to 32 Hz
  CHECK(binsOfBands(128, 1) == std::array<double, 8>{64, 0, 0, 0, 0, 0, 0, 0});  // no width at all

  buffer::SampleSpeed = 256;
  std::vector<double> spectrum(128, 0.0);
  spectrum[12] = 5.0;  // the gap
  CHECK(bandSums(spectrum.data(), 256).total == 0.0);
  CHECK(std::isnan(bandShares(spectrum.data(), 256).bands[3]));
  spectrum[8] = spectrum[10] = 3.0;
  spectrum[13] = 1.0;
  CHECK(bandShares(spectrum.data(), 256).bands[3] == 6.0 / 7.0);
  const BandValues peaks = bandPeaks(spectrum.data(), 256);
  CHECK(peaks.bands[3] == 3.0);
  CHECK(peaks.total == 3.0);
  double band = 0, percent = 0, total = 0, frequency = 0, value = 0;
  PowerNumbers(spectrum.data(), 256, 7, 11, &band, &percent, &total);
  CHECK(band == 6.0);
  CHECK(percent == 100.0 * 6.0 / 12.0);
  Peak(spectrum.data(), 256, 7, 12, &frequency, &value);
  CHECK(frequency == 8.0);  // the lower of two equals
  Peak(spectrum.data(), 256, 20, 30, &frequency, &value);
  CHECK(frequency == 0.0);
}

TEST_CASE("sums follow the tree, from the values and from kept nodes") {
  std::mt19937 random(11);
  for (const std::size_t size : {1U, 2U, 64U, 1024U, 4096U}) {
    plain::Values values(size);
    for (double& value : values) value = std::ldexp(static_cast<double>(random()), -20);
    if (size > 64) values[random() % size] = NAN;
    if (size == 1024) {
      for (double& value : values) value = static_cast<double>(random() % 3);  // many equals
    }
    SumTree sums(size);
    PeakTree peaks(size);
    sums.build(values);
    peaks.build(values);
    for (int round = 0; round < 300; ++round) {
      const std::size_t from = random() % (size + 1);
      const std::size_t to = random() % (size + 1);
      const double expected = plain::sum(values, from, to);
      const double direct = dyadicSum(values.data(), from, to);
      const double kept = sums.sum(from, to);
      REQUIRE((direct == expected || (std::isnan(direct) && std::isnan(expected))));
      REQUIRE((kept == expected || (std::isnan(kept) && std::isnan(expected))));
      const Strongest a = strongestOf(values.data(), from, to);
      const Strongest b = peaks.strongest(from, to);
      REQUIRE(a.value == b.value);
      REQUIRE(a.position == b.position);
    }
  }
  // Equal values: the first one, wherever the nodes are cut.
  const plain::Values equal(256, 2.5);
  PeakTree peaks(256);
  peaks.build(equal);
  for (std::size_t from = 0; from < 256; from += 7)
    CHECK(peaks.strongest(from, 256).position == from);
}

TEST_CASE("the mean of a constant block is that constant") {
  for (const double constant : {0.1, 1.0 / 3.0, 123.456, -7e-9}) {
    for (std::size_t size = 2; size <= 65536; size *= 2) {
      std::vector<double> block(size, constant);
      CHECK(removeMean(block.data(), size) == constant);
      CHECK(block.front() == 0.0);
    }
  }
}

TEST_CASE("block methods alter the caller's block and reduce its spectrum") {
  EngineRig rig;
  buffer::SampleSpeed = 256;
  std::mt19937 random(2);
  plain::Values plainBlock(512), pairs(1024, 77.0);
  for (std::size_t i = 0; i < 512; ++i) {
    plainBlock[i] = static_cast<double>(random() % 1000) * 0.37;
    pairs[2 * i] = plainBlock[i];
  }
  plain::Values meanFree = plainBlock;
  plain::removeMean(meanFree);
  const plain::Values spectrumY = plain::transform(meanFree, fft::scalerY).magnitude;

  double bands[8], total = 0;
  using Door = void (QZFFT::*)(double*, std::int32_t, double*, double*, double*, double*, double*,
                               double*, double*, double*, double*);
  const auto ask = [&](Door door, plain::Values& of) {
    (rig.engine.*door)(of.data(), static_cast<std::int32_t>(of.size()), &bands[0], &bands[1],
                       &bands[2], &bands[3], &bands[4], &bands[5], &bands[6], &bands[7], &total);
  };
  plain::Values block = plainBlock;
  ask(&QZFFT::MultiPower, block);
  CHECK(block == meanFree);
  for (std::size_t b = 0; b < 8; ++b) {
    CHECK(bands[b] == plain::sum(spectrumY, plain::binFrom(kBands[b].low, 512),
                                 plain::binFrom(kBands[b].high, 512)));
  }
  const double alpha = bands[3], whole = std::exchange(total, 0);
  block = plainBlock;
  ask(&QZFFT::MultiPowerPercent, block);
  CHECK(total == whole);
  CHECK(bands[3] == alpha / whole);

  double band = 0, percent = 0, all = 0;
  rig.engine.Power(pairs.data(), 512, 7, 12, &band, &percent, &all);
  CHECK(band == alpha);
  CHECK(all == plain::sum(spectrumY, 0, 256));
  CHECK(pairs[2] == meanFree[1]);
  CHECK(pairs[3] == 77.0);  // imaginary slots are left alone
  double frequency = 0, value = 0;
  rig.engine.SpectrumPeak(pairs.data(), 512, 0, 128, &frequency, &value);
  plain::removeMean(meanFree);
  const plain::Values spectrumX = plain::transform(meanFree, fft::scalerX).magnitude;
  CHECK(value == *std::max_element(spectrumX.begin(), spectrumX.end()));

  std::vector<double> packed(256);
  block = plainBlock;
  rig.engine.FFTpackB(block.data(), 512, 0, 0);
  rig.engine.readFFTpackB(packed);
  plain::Values once = plainBlock;
  plain::removeMean(once);
  CHECK(packed == plain::transform(once, fft::scalerX).magnitude);
  rig.engine.readFFTpackA(packed);
  CHECK(packed == plain::Values(256, 0.0));

  block.assign(300, 1.0);
  ask(&QZFFT::MultiPowerPeak, block);
  CHECK(block[0] == 1.0);  // no such length
  block.assign(256, 1.0 / 3.0);
  ask(&QZFFT::MultiPowerPeak, block);
  CHECK(total == 0.0);
  const double few[] = {3.0, 4.0};
  CHECK(AverageA(few, 2) == 3.5);
  CHECK(RMS(few, 2) == std::sqrt(12.5));
}

TEST_CASE("lone transforms equal the plain form at every length, also beyond the engine's") {
  EngineRig rig;
  std::mt19937 random(4);
  for (const std::int32_t n : {1, 2, 16, 32, 64, 512, 32768, 65536}) {
    const auto size = 2 * static_cast<std::size_t>(n);
    plain::Values data(size + 1), power(size + 1), expectedPower(size + 1);
    for (double& value : data) value = static_cast<double>(random() % 4001) - 2000.0;
    plain::Values expected = data;
    plain::Values complexData = data;
    plain::Values expectedComplex = data;
    plain::realTransform(expected.data(), static_cast<std::size_t>(n));
    plain::magnitudes(expected.data(), expectedPower.data(), static_cast<std::size_t>(n));
    plain::Values inPlace = data;
    rig.engine.RealFFTobj(data.data(), power.data(), n, 0);
    CAPTURE(n);
    CHECK(data == expected);
    CHECK(power == expectedPower);
    rig.engine.RealFFT(inPlace.data(), n, 0);
    expectedPower[0] = inPlace[0];
    CHECK(inPlace == expectedPower);
    plain::complexTransform(expectedComplex.data(), static_cast<std::size_t>(n));
    rig.engine.FFTJ(complexData.data(), n);
    CHECK(complexData == expectedComplex);
  }
  plain::Values odd(13, 1.0);
  rig.engine.RealFFT(odd.data(), 6, 0);
  rig.engine.FFTJ(odd.data(), 0);
  CHECK(odd == plain::Values(13, 1.0));
  CHECK(SpectrumTransform::imul(32767, -32767) == -32767);  // an arithmetic shift rounds down
  CHECK(SpectrumTransform::imuls(1 << 20, 1 << 20, 30) == 1024);
  CHECK(SpectrumTransform::imulD(3.0, 16384.0) == 1.5);
}
