#pragma once

#include <cmath>
#include <cstddef>
#include <utility>
#include <vector>

// The oracle: the classic radix-2 transform in its plain scalar form, kept as simple as it can be.
// Every faster form must give the same bits. Source: the decimation-in-time transform after
// Danielson and Lanczos with twiddles by the trigonometric recurrence, and the real unpacking that
// goes with it. All arrays are 1-based (element 0 is unused) and interleaved: [1] real, [2]
// imaginary, [3] real ...
namespace ovka::plain {

inline constexpr double twoPi = 6.28318530717959;
inline constexpr double pi = 3.141592653589793;

// The recurrence w <- w + w * (wpr + i wpi); the order of the operations is part of the result.
struct Twiddle {
  double wpr, wpi, wr = 1.0, wi = 0.0;
  explicit Twiddle(double theta) {
    const double half = std::sin(0.5 * theta);
    wpr = -2.0 * half * half;
    wpi = std::sin(theta);
  }
  void step() {
    const double wtemp = wr;
    wr = wtemp * wpr - wi * wpi + wr;
    wi = wi * wpr + wtemp * wpi + wi;
  }
};

inline void reverseBits(double* data, std::size_t n) {
  std::size_t j = 1;
  for (std::size_t i = 1; i < 2 * n; i += 2) {
    if (j > i) {
      std::swap(data[j], data[i]);
      std::swap(data[j + 1], data[i + 1]);
    }
    std::size_t m = n;
    while (m >= 2 && j > m) {
      j -= m;
      m >>= 1;
    }
    j += m;
  }
}

// Complex transform of n points, positive sign, unscaled, in place; data[1 .. 2n].
inline void complexTransform(double* data, std::size_t n) {
  reverseBits(data, n);
  for (std::size_t mmax = 2; mmax < 2 * n; mmax *= 2) {
    Twiddle w(twoPi / static_cast<double>(mmax));
    for (std::size_t m = 1; m < mmax; m += 2) {
      for (std::size_t i = m; i <= 2 * n; i += 2 * mmax) {
        const std::size_t j = i + mmax;
        const double tempr = w.wr * data[j] - w.wi * data[j + 1];
        const double tempi = w.wr * data[j + 1] + w.wi * data[j];
        data[j] = data[i] - tempr;
        data[j + 1] = data[i + 1] - tempi;
        data[i] += tempr;
        data[i + 1] += tempi;
      }
      w.step();
    }
  }
}

// Real transform of 2n samples data[1 .. 2n], in place: [1] the DC term, [2] the Nyquist term, then
// the pairs of bins 1 ... n-1. Bin n/2 is what the complex transform left there.
inline void realTransform(double* data, std::size_t n) {
  complexTransform(data, n);
  Twiddle w(pi / static_cast<double>(n));
  w.step();  // from (1, 0) to (1 + wpr, wpi), exactly
  for (std::size_t i = 2; i <= n / 2; ++i) {
    const std::size_t i1 = 2 * i - 1, i2 = i1 + 1, i3 = 2 * n + 3 - i2, i4 = i3 + 1;
    const double h1r = 0.5 * (data[i1] + data[i3]);
    const double h1i = 0.5 * (data[i2] - data[i4]);
    const double h2r = 0.5 * (data[i2] + data[i4]);
    const double h2i = -0.5 * (data[i1] - data[i3]);
    data[i1] = h1r + w.wr * h2r - w.wi * h2i;
    data[i2] = h1i + w.wr * h2i + w.wi * h2r;
    data[i3] = h1r - w.wr * h2r + w.wi * h2i;
    data[i4] = -h1i + w.wr * h2i + w.wi * h2r;
    w.step();
  }
  const double old = data[1];
  data[1] = old + data[2];
  data[2] = old - data[2];
}

// Magnitudes of the packed result data[1 .. 2n]: power[k] for odd k, 0 between; power[1 .. 2n].
inline void magnitudes(const double* data, double* power, std::size_t n) {
  for (std::size_t k = 1; k < 2 * n; k += 2) {
    power[k] =
        std::sqrt(data[k] * data[k] + data[k + 1] * data[k + 1]) / static_cast<double>(2 * n);
    power[k + 1] = 0.0;
  }
}

}  // namespace ovka::plain
