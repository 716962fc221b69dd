#include <cmath>
#include <doctest/doctest.h>
#include <memory>
#include <string>
#include <vector>

#include "FileSignal.h"
#include "Signal.h"

using namespace ovka;

namespace {

std::vector<Microvolts> samples(Signal& signal, double speed, std::size_t count) {
  std::vector<Microvolts> out(count);
  for (Microvolts& row : out) signal.next(speed, row);
  return out;
}

struct Spectrum {
  double re = 0.0, im = 0.0;
  [[nodiscard]] double power() const { return re * re + im * im; }
};

/// One bin of a plain transform of `points` samples from `first` on.
Spectrum bin(const std::vector<Microvolts>& rows, std::size_t channel, std::size_t first,
             std::size_t points, double cycles) {
  Spectrum sum;
  for (std::size_t i = 0; i < points; ++i) {
    const double angle = 2.0 * 3.14159265358979323846 * cycles * static_cast<double>(i) /
                         static_cast<double>(points);
    sum.re += rows[first + i][channel] * std::cos(angle);
    sum.im -= rows[first + i][channel] * std::sin(angle);
  }
  return sum;
}

/// Mean power between two frequencies (Hz) over stretches of four seconds.
double bandPower(const std::vector<Microvolts>& rows, std::size_t channel, double speed, double low,
                 double high) {
  const auto points = static_cast<std::size_t>(4 * speed);
  double sum = 0.0;
  int count = 0;
  for (std::size_t first = 0; first + points <= rows.size(); first += points) {
    for (double cycles = std::ceil(low * 4); cycles < high * 4; cycles += 1.0, ++count) {
      sum += bin(rows, channel, first, points, cycles).power();
    }
  }
  return sum / count;
}

/// Mean squared coherence of two channels around 10 Hz.
double coherence(const std::vector<Microvolts>& rows, std::size_t a, std::size_t b, double cycles) {
  double re = 0, im = 0, powerA = 0, powerB = 0;
  for (std::size_t first = 0; first + 480 <= rows.size(); first += 480) {
    const Spectrum x = bin(rows, a, first, 480, cycles);
    const Spectrum y = bin(rows, b, first, 480, cycles);
    re += x.re * y.re + x.im * y.im;
    im += x.im * y.re - x.re * y.im;
    powerA += x.power();
    powerB += y.power();
  }
  return (re * re + im * im) / (powerA * powerB);
}

std::unique_ptr<Signal> eeg(Eyes eyes, std::uint64_t seed, double hum = 0.0) {
  SimulatorOptions options;
  options.eeg = {eyes, hum, 8.0};
  options.seed = seed;
  std::string error;
  return makeSignal(options, error);
}

}  // namespace

TEST_CASE("a sine has its frequency, amplitude and phase on every channel") {
  SimulatorOptions options;
  options.signal = SignalKind::Sine;
  options.sine = {10.0, {0, 50, 25, 100, 5}, {0, 0, 90, -45, 0}};
  std::string error;
  const auto signal = makeSignal(options, error);
  const auto rows = samples(*signal, 120, 1200);
  for (std::size_t channel = 1; channel < 5; ++channel) {
    const Spectrum line = bin(rows, channel, 0, 1200, 100);
    CHECK(std::sqrt(line.power()) / 600 == doctest::Approx(options.sine.microvolts[channel]));
    CHECK(bin(rows, channel, 0, 1200, 101).power() < 1e-12 * line.power());
    // A sine's phase against the cosine of the transform is -90 degrees.
    const double degrees = std::atan2(line.im, line.re) * 180 / 3.14159265358979 + 90;
    CHECK(std::remainder(degrees - options.sine.degrees[channel], 360) ==
          doctest::Approx(0).epsilon(1e-6));
  }
}

TEST_CASE("the same seed gives the same bits, another seed others") {
  const auto one = samples(*eeg(Eyes::Alternating, 7), 256, 5000);
  CHECK(one == samples(*eeg(Eyes::Alternating, 7), 256, 5000));
  CHECK(one != samples(*eeg(Eyes::Alternating, 8), 256, 5000));
}

TEST_CASE("the EEG has alpha that rises with eyes closed, a falling background and coherence") {
  constexpr double kSpeed = 120;
  const auto open = samples(*eeg(Eyes::Open, 3), kSpeed, 60 * 120);
  const auto closed = samples(*eeg(Eyes::Closed, 3), kSpeed, 60 * 120);
  for (std::size_t channel = 0; channel < 5; ++channel) {
    CAPTURE(channel);
    CHECK(bandPower(closed, channel, kSpeed, 9, 11) > 8 * bandPower(open, channel, kSpeed, 9, 11));
    CHECK(bandPower(closed, channel, kSpeed, 9, 11) >
          8 * bandPower(closed, channel, kSpeed, 14, 18));
    CHECK(bandPower(closed, channel, kSpeed, 1, 3) >
          2 * bandPower(closed, channel, kSpeed, 15, 30));
    for (const Microvolts& row : closed) REQUIRE(std::abs(row[channel]) < 500);
  }
  // Blinks: slow, in front, with eyes open only.
  CHECK(bandPower(open, 1, kSpeed, 0.5, 3) > 4 * bandPower(closed, 1, kSpeed, 0.5, 3));
  CHECK(bandPower(open, 1, kSpeed, 0.5, 3) > 4 * bandPower(open, 3, kSpeed, 0.5, 3));
  CHECK(coherence(closed, 3, 4, 40) > 0.7);
  CHECK(coherence(closed, 1, 4, 100) < 0.6);
}

TEST_CASE("hum stands at its frequency, and eyes can be closed while it runs") {
  const auto rows = samples(*eeg(Eyes::Closed, 3, 50.0), 240, 240 * 20);
  CHECK(std::sqrt(bin(rows, 0, 0, 4800, 1000).power()) / 2400 == doctest::Approx(8).epsilon(0.05));
  const auto signal = eeg(Eyes::Open, 5);
  const auto before = samples(*signal, 120, 40 * 120);
  signal->setEyesClosed(true);
  samples(*signal, 120, 240);
  CHECK(bandPower(samples(*signal, 120, 40 * 120), 3, 120, 9, 11) >
        8 * bandPower(before, 3, 120, 9, 11));
}

TEST_CASE("a file is resampled linearly and repeated; columns are channels 1, 2, 3, 4, 0") {
  std::string error;
  auto signal = FileSignal::parse("A;B\r\n0;10\r\n\n# rest\n4;+20.5\n8;30", 100, "f", error);
  REQUIRE(signal);
  CHECK(signal->rows() == 3);
  Microvolts out{};
  const double first[] = {0, 2, 4, 6, 8, 4, 0, 2};
  for (const double expected : first) {
    signal->next(200, out);
    CHECK(out[1] == expected);
    CHECK(out[3] == 0.0);
  }
  CHECK(out[2] == doctest::Approx(15.25));
  signal = FileSignal::parse("1 2\t3  4 5\n", 10, "f", error);
  REQUIRE(signal);
  signal->next(7, out);
  CHECK(out == Microvolts{5, 1, 2, 3, 4});
}

TEST_CASE("a file that cannot be used says where and why") {
  const std::pair<const char*, const char*> rows[] = {
      {"", "f: holds no numbers"},
      {"a,b\n", "f: holds no numbers"},
      {"a,b\n1,2\n1,x2\n", "f, line 3, column 2: \"x2\" is not a number"},
      {"1,2\n3\n", "f, line 2: 1 columns where the rows before have 2"},
      {"1,2,3,4,5,6\n", "f, line 1: 6 columns; at most 5"},
      {"1\nnan\n", "f, line 2, column 1: \"nan\" is not"},
      {"1\n1e9\n", "f, line 2, column 1: \"1e9\" is not"},
      {"1,\n", "f, line 1, column 2: \"\" is not"},
      {"1\n\x01\xff\n", "f, line 2, column 1: \"??\" is not"},
  };
  for (const auto& row : rows) {
    std::string error;
    CHECK(FileSignal::parse(row.first, 100, "f", error) == nullptr);
    CAPTURE(error);
    CHECK(error.find(row.second) == 0);
    CHECK(error.find('\n') == std::string::npos);
  }
  std::string error;
  CHECK(FileSignal::load({"/nowhere/at/all.csv", 128}, error) == nullptr);
  CHECK(error.find("/nowhere/at/all.csv: cannot be opened: ") == 0);
  CHECK(FileSignal::load({"/", 128}, error) == nullptr);
  CHECK(error.find("/: cannot be ") == 0);
}
