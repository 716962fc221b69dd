#include <cmath>
#include <complex>
#include <cstdint>
#include <cstring>
#include <doctest/doctest.h>
#include <vector>

#include "ClassicTransform.h"
#include "Inputs.h"
#include "PlainTransform.h"

using namespace ovka;
using namespace ovka::transformtest;

namespace {

bool sameBits(const std::vector<double>& zeroBased, const std::vector<double>& oneBased) {
  return std::memcmp(zeroBased.data(), oneBased.data() + 1, zeroBased.size() * sizeof(double)) == 0;
}

std::vector<double> oneBased(const std::vector<double>& values) {
  std::vector<double> data(values.size() + 1);
  std::copy(values.begin(), values.end(), data.begin() + 1);
  return data;
}

using Exact = std::complex<long double>;

// The definition, term by term: positive sign, unscaled.
Exact binOf(const std::vector<Exact>& x, std::size_t k) {
  const long double step = 2.0L * std::acos(-1.0L) / static_cast<long double>(x.size());
  Exact sum = 0.0L;
  for (std::size_t i = 0; i < x.size(); ++i) {
    sum += x[i] * std::polar(1.0L, step * static_cast<long double>(i * k % x.size()));
  }
  return sum;
}

// The difference from the definition, as a part of the largest bin.
double errorOf(const std::vector<Exact>& x, const std::vector<std::complex<double>>& bins) {
  long double error = 0.0L, largest = 0.0L;
  for (std::size_t k = 0; k < bins.size(); ++k) {
    const Exact exact = binOf(x, k);
    error = std::max(error, std::abs(exact - Exact(bins[k].real(), bins[k].imag())));
    largest = std::max(largest, std::abs(exact));
  }
  return static_cast<double>(error / largest);
}

}  // namespace

TEST_CASE("the classic transforms give the bits of the plain form at every length") {
  for (std::size_t points = 1; points <= 32768; points *= 2) {
    CAPTURE(points);
    const std::vector<double> samples = samplesOf(inputs()[points % 2], 2 * points, 4);
    std::vector<double> data = samples, expected = oneBased(samples);
    complexTransform(data.data(), static_cast<std::int32_t>(points));
    plain::complexTransform(expected.data(), points);
    CHECK(sameBits(data, expected));

    data = samples;
    expected = oneBased(samples);
    realTransform(data.data(), static_cast<std::int32_t>(points));
    plain::realTransform(expected.data(), points);
    CHECK(sameBits(data, expected));
  }
}

TEST_CASE("the plain form itself is a Fourier transform") {
  for (const std::size_t points : {1U, 2U, 4U, 32U, 512U}) {
    CAPTURE(points);
    const std::vector<double> samples = samplesOf(inputs().front(), 2 * points, 5);
    std::vector<Exact> complexInput, realInput;
    for (std::size_t i = 0; i < points; ++i)
      complexInput.emplace_back(samples[2 * i], samples[2 * i + 1]);
    for (const double sample : samples) realInput.emplace_back(sample);

    std::vector<double> data = oneBased(samples);
    plain::complexTransform(data.data(), points);
    std::vector<std::complex<double>> bins;
    for (std::size_t k = 0; k < points; ++k) bins.emplace_back(data[2 * k + 1], data[2 * k + 2]);
    CHECK(errorOf(complexInput, bins) < 1e-13);

    data = oneBased(samples);
    plain::realTransform(data.data(), points);
    bins.assign(1, data[1]);
    for (std::size_t k = 1; k < points; ++k) bins.emplace_back(data[2 * k + 1], data[2 * k + 2]);
    bins.emplace_back(data[2]);
    CHECK(errorOf(realInput, bins) < 1e-13);
  }
}

TEST_CASE("a number of points that is not a power of two changes nothing") {
  const std::vector<double> samples = {1, 2, 3, 4, 5, 6};
  for (const std::int32_t points : {3, 0, -1, -4, INT32_MIN}) {
    CAPTURE(points);
    std::vector<double> data = samples;
    complexTransform(data.data(), points);
    realTransform(data.data(), points);
    CHECK(data == samples);
  }
}
