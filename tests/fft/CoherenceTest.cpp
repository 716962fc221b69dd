#include <doctest/doctest.h>

#include "Coherence.h"
#include "EngineRig.h"
#include "PlainEngine.h"

using namespace ovka;
using ovka::testing::EngineRig;

namespace {

// The definition, term by term.
double plainCoherence(ComplexDouble x, ComplexDouble y, double N, double level, bool opposite) {
  const double a = x.real, b = x.imaginary, c = y.real, d = y.imaginary;
  double R = (a * c + b * d) / (N * N);
  const double I = (b * c - a * d) / (N * N);
  const double M = std::sqrt(((a * a + b * b) / (N * N)) * ((c * c + d * d) / (N * N)));
  if (opposite) R = -R;
  const auto term = [&](double excluded) {
    if (excluded > 0.0) return 0.0;
    const double value = M > level ? 100.0 * std::max(R, 0.0) / M : 0.0;
    return std::min(std::max(value, 0.0), 100.0);
  };
  const double first = term(opposite ? -I : I);
  const double second = term(opposite ? I : -I);
  return std::min(first + second, 100.0);
}

// A sine of bin 8 in every channel, channel c turned by degrees[c].
void fillTurned(EngineRig& rig, std::array<double, 4> degrees, double amplitude = 4000.0) {
  for (std::int32_t c = 0; c < 4; ++c) {
    const double turn = degrees[static_cast<std::size_t>(c)] * M_PI / 180.0;
    rig.fill(c + 1, 256, [&](std::int64_t i) {
      return std::lround(amplitude * std::cos(2 * M_PI * 8 * static_cast<double>(i) / 256 + turn));
    });
  }
}

}  // namespace

TEST_CASE("coherence of one bin equals its definition") {
  std::mt19937 random(6);
  const auto value = [&] { return (static_cast<double>(random() % 21) - 10.0) * 13.7; };
  for (int round = 0; round < 3000; ++round) {
    ComplexDouble x{value(), value()}, y{value(), value()};
    if (round % 5 == 0) y = {-2.0 * x.real, -2.0 * x.imaginary};
    if (round % 7 == 0) y = x;
    const double level = round % 3 == 0 ? 0.5 : 0.01;
    for (const bool opposite : {false, true}) {
      REQUIRE(coherenceOf(x, y, 128, level, opposite) ==
              plainCoherence(x, y, 128, level, opposite));
    }
  }
  CHECK(coherenceOf({3, 4}, {3, 4}, 1, 0.01, false) == 100.0);
  CHECK(coherenceOf({1, 1}, {1, 0}, 1, 0.01, false) == doctest::Approx(100 * std::sqrt(0.5)));
  CHECK(coherenceOf({3, 0}, {2, 0}, 1, 6.0, false) == 0.0);  // must be above the level
}

TEST_CASE("eight doors compare their own pairs, by the cosine of the phase between them") {
  EngineRig rig;
  rig.use(1, 'r');
  fft::DCcutONed = 0;
  struct Row {
    double (Coherence::*door)(std::uint64_t, double) const;
    std::size_t x, y;
    double sign;  // of the cosine
  };
  for (const std::array<double, 4>& degrees :
       {std::array<double, 4>{0, 20, 50, 85}, std::array<double, 4>{0, 160, 30, 220}}) {
    fillTurned(rig, degrees);
    rig.engine.getAndfftA(256, 0, 0);
    rig.engine.getAndfftB(256, 0, 0);
    rig.engine.getAndfftD(256, 0, 0);
    rig.engine.getAndfftE(256, 0, 0);
    for (const Row& row :
         {Row{&Coherence::CoherenceM, 0, 1, 1}, Row{&Coherence::CoherenceM2, 2, 3, 1},
          Row{&Coherence::CoherenceM3, 0, 2, 1}, Row{&Coherence::CoherenceM4, 1, 3, 1},
          Row{&Coherence::CoherenceM5, 1, 2, 1}, Row{&Coherence::CoherenceM6, 0, 3, 1},
          Row{&Coherence::CoherenceM7, 0, 1, -1}, Row{&Coherence::CoherenceM8, 2, 3, -1}}) {
      const double turn = (degrees[row.x] - degrees[row.y]) * M_PI / 180.0;
      const double expected = 100.0 * std::max(0.0, row.sign * std::cos(turn));
      CHECK((rig.engine.*row.door)(8, 256) == doctest::Approx(expected).epsilon(0.01));
    }
  }
  CHECK(rig.engine.CoherenceM3(1ULL << 60U, 256) == 0.0);
  fft::CoherenceLevel = 1e9;
  CHECK(rig.engine.CoherenceM7(8, 256) == 0.0);
}

TEST_CASE("doCoherence transforms a block that was put in, its DC bins cut twice") {
  EngineRig rig;
  rig.use(0);
  buffer::SampleSpeed = 128;
  fft::setDCNumber = 4;  // 2 Hz: bins 0 and 1
  std::mt19937 random(8);
  plain::Values block(128);
  for (std::size_t i = 0; i < 128; ++i) {
    block[i] = static_cast<double>(random() % 999) - 400.0;
    rig.engine.putcomplexDoubleToBuffer(12, static_cast<std::int64_t>(i), block[i]);
  }
  rig.engine.doCoherence(2);
  plain::Values expected = plain::transform(block, fft::scalerX).pairs;
  for (std::size_t bin = 0; bin < 2; ++bin) {
    expected[2 * bin] = expected[2 * bin] / 10.0 / 10.0;
    expected[2 * bin + 1] = 0.0;
  }
  CHECK(rig.coefficients(2) == expected);
  CHECK(rig.engine.getcomplexDoubleFromBuffer(12, 5).imaginary == expected[11]);
  CHECK(rig.engine.getcomplexDoubleFromBuffer(12, -4).real == expected[0]);
  CHECK(rig.engine.getcomplexDoubleFromBuffer(14, 5).real == 0.0);
  rig.engine.doCoherence(4);

  // A pass with CO fetches into the coherence array, leaves the spectrum, and cuts twice as well.
  rig.fillNoise(128);
  rig.engine.getAndfftD(128, 1, 0);
  plain::Values pairs =
      plain::transform(plain::fetch(rig.store, rig.engine, 2, 128, 128), fft::scalerX).pairs;
  CHECK(rig.coefficients(2)[2] == pairs[2] / 10.0 / 10.0);
  CHECK(rig.coefficients(2)[9] == pairs[9]);
  CHECK(rig.spectrum(2) == plain::Values(64, 0.0));
  rig.engine.getDataToBuffer(2, 128, 0);
  CHECK(rig.spectrum(2)[40] == plain::fetch(rig.store, rig.engine, 2, 128, 128)[40]);
}

TEST_CASE("band values: the average") {
  EngineRig rig;
  rig.use(0, 'r');
  buffer::SampleSpeed = 128;  // bins of 1 Hz
  fft::DCcutONed = 0;
  for (std::int64_t bin = 4; bin < 8; ++bin) {  // A and B alike in bins 4 and 5 only
    rig.engine.putcomplexDoubleToBuffer(10, bin, 5000.0);
    rig.engine.putcomplexDoubleToBuffer(11, bin, bin < 6 ? 5000.0 : 0.0);
  }
  CHECK(rig.engine.peakAVCoherenceBand(4, 4.0F, 7.0F, 1) == 50.0F);  // the top bin is included
  CHECK(rig.engine.peakAVCoherenceBand(4, 4.9F, 5.9F, 1) == 100.0F);
  CHECK(rig.engine.peakAVCoherenceBand(4, 9.0F, 8.0F, 1) == 0.0F);
  CHECK(rig.engine.peakAVCoherenceBand(4, 4.0F, 1e30F, 1) == 200.0F / 60.0F);  // to the last bin
  CHECK(rig.engine.peakAVCoherenceBand(4, NAN, NAN, 1) == 0.0F);
  CHECK(rig.engine.peakAVCoherenceBand(3, 4.0F, 7.0F, 1) == 0.0F);
  CHECK(rig.engine.peakAVCoherenceBand(12, 4.0F, 7.0F, 1) == 0.0F);
  CHECK(rig.engine.peakAVCoherenceBand(4, 4.0F, 7.0F, 2) == 0.0F);
  // Sources 8 and 9 are M6 (A, E) and M5 (B, D).
  rig.engine.putcomplexDoubleToBuffer(13, 7, 5000.0);
  CHECK(rig.engine.peakAVCoherenceBand(8, 7.0F, 7.0F, 1) == 100.0F);
  CHECK(rig.engine.peakAVCoherenceBand(9, 7.0F, 7.0F, 1) == 0.0F);
}

TEST_CASE("band values: the maximum of the history, tested with one pair and read with another") {
  EngineRig rig;
  rig.use(0, 'r');
  buffer::SampleSpeed = 128;
  fft::maxBScount = 10;
  const auto put = [&](std::uint32_t array, double value) {
    rig.engine.putcomplexDoubleToBuffer(array, 8, value);
  };
  for (const std::int32_t MC : {2, 5, 6}) rig.engine.coherenceMFout(8, 0, 4, MC);  // follow
  put(10, 5000.0);
  put(11, 5000.0);
  for (int i = 0; i < 4; ++i) rig.engine.update();
  CHECK(rig.engine.peakAVCoherenceBand(4, 5.0F, 12.0F, 0) == 40.0F);
  CHECK(rig.engine.peakAVCoherenceBand(5, 5.0F, 12.0F, 0) == 0.0F);
  put(12, 5000.0);  // A and D now, so source 6; but the test looks at D and E
  rig.engine.update();
  CHECK(rig.engine.coherenceMFout(8, 0, 6, 6) == 1.0F);
  CHECK(rig.engine.peakAVCoherenceBand(6, 5.0F, 12.0F, 0) == 0.0F);
  put(13, 5000.0);
  rig.engine.update();
  CHECK(rig.engine.peakAVCoherenceBand(6, 5.0F, 12.0F, 0) == 20.0F);
  CHECK(rig.engine.coherenceMFout(8, 1, 6, 6) == 100.0F);
  fft::coherenceSWoffset = 5.0F;
  CHECK(rig.engine.peakAVCoherenceBand(4, 5.0F, 12.0F, 0) == 100.0F);
  fft::coherenceSWoffset = 10.0F;
  CHECK(rig.engine.peakAVCoherenceBand(4, 5.0F, 12.0F, 0) == 0.0F);
  fft::maxBScount = 3;
  CHECK(rig.engine.coherenceMFout(8, 0, 4, 2) == 3.0F);
  rig.engine.fftinit(7, 'n');  // new tables: counts start anew
  rig.engine.update();
  CHECK(rig.engine.coherenceMFout(8, 0, 4, 2) == 1.0F);
  CHECK(rig.engine.coherenceMFout(8, 0, 4, 3) == 0.0F);
}

TEST_CASE("brain-switch rows: a held rhythm counts, its bin leads its band") {
  EngineRig rig;
  buffer::SampleSpeed = 128;
  rig.use(1);  // bins of 0.5 Hz
  fft::maxBScount = 8;
  rig.engine.waven3DBSQC(0);
  rig.engine.waven3DBSQC(4);
  const auto tick = [&](int times) {
    for (int i = 0; i < times; ++i) {
      buffer::ploop = buffer::ploop == 256 ? 257 : 256;
      rig.time.advance(std::chrono::milliseconds(10));
    }
  };
  rig.fillSine(4000.0, 20, 257);  // 10 Hz
  tick(6);
  rig.engine.waven3DBSQC(0);
  rig.engine.waven3DBSQC(4);
  const auto& row = fft::peakSWfftCount[0];
  CHECK(row[15 * 4] == 6.0F);  // alpha
  CHECK(row[15 * 4 + 1] == doctest::Approx(10.0).epsilon(0.05));
  CHECK(row[15 * 4 + 4] == 75.0F);
  CHECK(row[0] == 6.0F);           // the range of the peak search
  CHECK(row[15 * 4 + 5] == 6.0F);  // a neighbour in the window's main lobe
  CHECK(row[15 * 4 + 3] >= row[15 * 4 + 8]);
  CHECK(row[15 * 6] == 0.0F);  // mid beta
  CHECK(fft::peakSWcoherenceCount[0][15 * 4] == 6.0F);
  CHECK(fft::peakSWcoherenceCount[0][15 * 4 + 3] == 100.0F);

  rig.fillSine(4000.0, 60, 257);  // 30 Hz
  tick(5);
  rig.engine.waven3DBSQC(0);
  CHECK(row[15 * 4] == 3.0F);  // 8 looked back on, 5 of them without
  CHECK(row[15 * 6] == 5.0F);
  rig.engine.waven3DBSQC(10);
  rig.engine.waven3DBSQC(-1);
}

TEST_CASE("the tick: every 10 ms, once in a process, only when samples came") {
  EngineRig rig;
  CHECK(rig.print.take() == "init FFT\n");
  CHECK(fft::firstTimeRunFFT == 1);
  rig.use(0);
  rig.fillNoise(500);
  CHECK(rig.engine.ticksComputed() == 0);
  rig.time.advance(std::chrono::microseconds(9999));
  CHECK(rig.engine.ticksComputed() == 0);
  rig.time.advance(std::chrono::microseconds(1));
  CHECK(rig.engine.ticksComputed() == 1);
  for (std::int32_t channel = 0; channel < 4; ++channel) CHECK(rig.spectrum(channel)[20] > 0.0);
  rig.time.advance(std::chrono::milliseconds(50));
  CHECK(rig.engine.ticksComputed() == 1);
  static_cast<void>(rig.print.take());
  const QZFFT second(rig.store, rig.time);
  CHECK(rig.print.take().empty());
  buffer::ploop = 400;
  rig.time.advance(std::chrono::milliseconds(10));
  CHECK(rig.engine.ticksComputed() == 2);
  CHECK(second.ticksComputed() == 0);
}
