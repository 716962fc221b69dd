#pragma once

#include <cstdint>

namespace ovka {

/// The classic radix-2 decimation-in-time transforms in place, one value at a time, for any length:
/// what RealTransform equals bit for bit. They take log2(points) pairs of sines a call and are six
/// to twenty times slower; for lengths that RealTransform has no plan for, and for complex input.
/// Source: Danielson and Lanczos (1942), with twiddles by the trigonometric recurrence.

/// Complex transform, positive sign, unscaled, of `points` pairs (real, imaginary): data[0 ...
/// 2*points-1]. A number of points that is not a power of two, or less than 1, leaves the data as
/// they are.
void complexTransform(double* data, std::int32_t points) noexcept;

/// Real transform of 2*points samples data[0 ... 2*points-1]; in their place come the pairs of bins
/// 0 ... points-1, pair 0 holding (DC, Nyquist). Same condition on `points`.
void realTransform(double* data, std::int32_t points) noexcept;

}  // namespace ovka
