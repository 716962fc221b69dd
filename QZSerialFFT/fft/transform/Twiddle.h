#pragma once

#include <cmath>
#include <cstdint>

namespace ovka {

/// The twiddle factor w = wr + i wi, advanced by w <- w + w * (wpr + i wpi). The order of the
/// operations in step() decides the last bits, and so does the start of each stage: twiddles of two
/// stages that are equal in mathematics differ in bits and are never shared.
struct Twiddle {
  double wpr = 0.0, wpi = 0.0, wr = 1.0, wi = 0.0;

  /// The stage whose butterflies are `half` pairs apart, at its first twiddle (1, 0).
  static Twiddle ofStage(std::int64_t half) {
    // The constant is 2 pi to fifteen digits, and stays so.
    return Twiddle(6.28318530717959 / static_cast<double>(2 * half));
  }

  /// The unpacking of `points` pairs, at its first twiddle (1 + wpr, wpi), that of bin 1.
  static Twiddle ofUnpacking(std::int64_t points) {
    Twiddle w(3.141592653589793 / static_cast<double>(points));
    w.wr = 1.0 + w.wpr;
    w.wi = w.wpi;
    return w;
  }

  void step() {
    const double old = wr;
    wr = old * wpr - wi * wpi + wr;
    wi = wi * wpr + old * wpi + wi;
  }

 private:
  explicit Twiddle(double theta) {
    const double half = std::sin(0.5 * theta);
    wpr = -2.0 * half * half;
    wpi = std::sin(theta);
  }
};

}  // namespace ovka
