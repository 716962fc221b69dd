#include "ClassicTransform.h"

#include <cmath>
#include <utility>

#include "Twiddle.h"

namespace ovka {
namespace {

bool isPowerOfTwo(std::int64_t points) {
  return points >= 1 && (points & (points - 1)) == 0;
}

void swapIntoBitReversedOrder(double* data, std::int64_t points) {
  std::int64_t j = 0;
  for (std::int64_t i = 0; i < points; ++i) {
    if (j > i) {
      std::swap(data[2 * j], data[2 * i]);
      std::swap(data[2 * j + 1], data[2 * i + 1]);
    }
    std::int64_t bit = points / 2;
    while (bit >= 1 && (j & bit) != 0) {
      j -= bit;
      bit /= 2;
    }
    j += bit;
  }
}

void butterfly(double* low, double* high, const Twiddle& w) {
  const double real = w.wr * high[0] - w.wi * high[1];
  const double imaginary = w.wr * high[1] + w.wi * high[0];
  high[0] = low[0] - real;
  high[1] = low[1] - imaginary;
  low[0] += real;
  low[1] += imaginary;
}

}  // namespace

void complexTransform(double* data, std::int32_t points) noexcept {
  if (!isPowerOfTwo(points)) return;
  const std::int64_t count = points;
  swapIntoBitReversedOrder(data, count);
  for (std::int64_t half = 1; half < count; half *= 2) {
    Twiddle w = Twiddle::ofStage(half);
    for (std::int64_t m = 0; m < half; ++m) {
      for (std::int64_t i = m; i < count; i += 2 * half) {
        butterfly(data + 2 * i, data + 2 * (i + half), w);
      }
      w.step();
    }
  }
}

void realTransform(double* data, std::int32_t points) noexcept {
  if (!isPowerOfTwo(points)) return;
  complexTransform(data, points);
  const std::int64_t count = points;
  Twiddle w = Twiddle::ofUnpacking(count);
  for (std::int64_t k = 1; k < count / 2; ++k) {
    double* low = data + 2 * k;
    double* high = data + 2 * (count - k);
    const double h1r = 0.5 * (low[0] + high[0]);
    const double h1i = 0.5 * (low[1] - high[1]);
    const double h2r = 0.5 * (low[1] + high[1]);
    const double h2i = -0.5 * (low[0] - high[0]);
    low[0] = h1r + w.wr * h2r - w.wi * h2i;
    low[1] = h1i + w.wr * h2i + w.wi * h2r;
    high[0] = h1r - w.wr * h2r + w.wi * h2i;
    high[1] = -h1i + w.wr * h2i + w.wi * h2r;
    w.step();
  }
  const double real = data[0];
  data[0] = real + data[1];
  data[1] = real - data[1];
}

}  // namespace ovka
