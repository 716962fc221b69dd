#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <random>
#include <vector>

// Inputs that have shown a difference between two orders of the same sum, or could.
namespace ovka::transformtest {

using Random = std::mt19937_64;

struct Input {
  const char* name;
  std::function<double(Random&, std::size_t index, std::size_t points)> sample;
};

inline double normal(Random& random) {
  static thread_local std::normal_distribution<double> distribution;
  return distribution(random);
}

inline std::int64_t integerIn(Random& random, std::int64_t low, std::int64_t high) {
  return std::uniform_int_distribution<std::int64_t>(low, high)(random);
}

inline double hanning(std::size_t i, std::size_t n) {
  return std::trunc(
      32767.0 * 0.5 *
      (1.0 - std::cos(6.283185307 * static_cast<double>(i) / static_cast<double>(n - 1))));
}

inline double withExponent(Random& random, int low, int high) {
  return std::ldexp(normal(random), static_cast<int>(integerIn(random, low, high)));
}

inline const std::vector<Input>& inputs() {
  using std::size_t;
  static const std::vector<Input> all = {
      {"random", [](Random& r, size_t, size_t) { return normal(r); }},
      {"windowed integers",
       [](Random& r, size_t i, size_t n) {
         return static_cast<double>(integerIn(r, -8388608, 8388607)) * hanning(i, n) / 32768.0 *
                0.25;
       }},
      {"exponents 2^-300 to 2^300",
       [](Random& r, size_t, size_t) { return withExponent(r, -300, 300); }},
      {"denormal results", [](Random& r, size_t, size_t) { return withExponent(r, -1074, -1015); }},
      {"overflowing sums", [](Random& r, size_t, size_t) { return withExponent(r, 1010, 1020); }},
      {"sparse",
       [](Random& r, size_t, size_t) { return integerIn(r, 0, 15) == 0 ? normal(r) : 0.0; }},
      {"sparse among negative zeros",
       [](Random& r, size_t, size_t) { return integerIn(r, 0, 15) == 0 ? normal(r) : -0.0; }},
      {"zeros of both signs",
       [](Random& r, size_t, size_t) { return integerIn(r, 0, 1) == 0 ? 0.0 : -0.0; }},
      {"negative zeros", [](Random&, size_t, size_t) { return -0.0; }},
      {"first impulse", [](Random&, size_t i, size_t) { return i == 0 ? 1.0 : 0.0; }},
      {"last impulse", [](Random&, size_t i, size_t n) { return i == n - 1 ? -3.7 : 0.0; }},
      {"constant", [](Random&, size_t, size_t) { return 0.1; }},
      {"alternating", [](Random&, size_t i, size_t) { return i % 2 == 0 ? 5.0 : -5.0; }},
      {"sines",
       [](Random&, size_t i, size_t) {
         const double t = static_cast<double>(i);
         return 100.0 * std::sin(0.37 * t) + 1e-3 * std::cos(2.9 * t);
       }},
      {"an infinity",
       [](Random& r, size_t i, size_t) {
         return i == 77 ? -std::numeric_limits<double>::infinity() : normal(r);
       }},
      {"a value that is no number",
       [](Random& r, size_t i, size_t n) {
         return i == n / 2 ? std::numeric_limits<double>::quiet_NaN() : normal(r);
       }},
  };
  return all;
}

inline std::vector<double> samplesOf(const Input& input, std::size_t points, std::uint64_t seed) {
  Random random(seed + points);
  std::vector<double> samples(points);
  for (std::size_t i = 0; i < points; ++i) samples[i] = input.sample(random, i, points);
  return samples;
}

}  // namespace ovka::transformtest
