// The vector of OVKA_LANES doubles and what moves values between lanes. Included once by each file
// that compiles the passes, after it has defined OVKA_LANES (1, 2, 4 or 8). Everything is in an
// unnamed namespace, so nothing compiled for one instruction set can be called by code meant for
// another.
#pragma once

#if OVKA_LANES > 1 && defined(__x86_64__)
#include <immintrin.h>
#endif

#define OVKA_INLINE inline __attribute__((always_inline))

namespace {

constexpr int lanes = OVKA_LANES;

#if OVKA_LANES == 1
using Vector = double;
#else
typedef double Vector __attribute__((vector_size(8 * OVKA_LANES)));
typedef double VectorInMemory __attribute__((vector_size(8 * OVKA_LANES), aligned(8), may_alias));
typedef double VectorInTable __attribute__((vector_size(8 * OVKA_LANES), may_alias));
#endif

// A complex number a lane; V is Vector, or double where one number is done alone.
template <typename V>
struct Complex {
  V re, im;
};

#if OVKA_LANES == 1

OVKA_INLINE Vector load(const double* p) {
  return *p;
}
OVKA_INLINE Vector loadAligned(const double* p) {
  return *p;
}
OVKA_INLINE void store(double* p, Vector v) {
  *p = v;
}
OVKA_INLINE Vector squareRoot(Vector v) {
  return __builtin_sqrt(v);
}
OVKA_INLINE Vector mirrored(Vector behind, Vector) {
  return behind;
}
OVKA_INLINE Vector reversed(Vector v) {
  return v;
}

OVKA_INLINE Complex<Vector> loadPairs(const double* p) {
  return {p[0], p[1]};
}
OVKA_INLINE void storePairs(double* p, Complex<Vector> c) {
  p[0] = c.re;
  p[1] = c.im;
}
OVKA_INLINE void storePairsReversed(double* p, Complex<Vector> c) {
  storePairs(p, c);
}
OVKA_INLINE void transpose(Vector*) {}
constexpr int loadOrder[1] = {0};

#else

OVKA_INLINE Vector load(const double* p) {
  return *reinterpret_cast<const VectorInMemory*>(p);
}
OVKA_INLINE Vector loadAligned(const double* p) {
  return *reinterpret_cast<const VectorInTable*>(p);
}
OVKA_INLINE void store(double* p, Vector v) {
  *reinterpret_cast<VectorInMemory*>(p) = v;
}

#if OVKA_LANES == 2

OVKA_INLINE Vector squareRoot(Vector v) {
  return _mm_sqrt_pd(v);
}
OVKA_INLINE Vector even(Vector a, Vector b) {
  return __builtin_shufflevector(a, b, 0, 2);
}
OVKA_INLINE Vector odd(Vector a, Vector b) {
  return __builtin_shufflevector(a, b, 1, 3);
}
OVKA_INLINE Vector reversed(Vector v) {
  return __builtin_shufflevector(v, v, 1, 0);
}
// The first lane of `behind`, then the others of `before` from the last one down.
OVKA_INLINE Vector mirrored(Vector behind, Vector before) {
  return __builtin_shufflevector(behind, before, 0, 3);
}
OVKA_INLINE void storePairs(double* p, Complex<Vector> c) {
  store(p, even(c.re, c.im));
  store(p + 2, odd(c.re, c.im));
}
OVKA_INLINE void storePairsReversed(double* p, Complex<Vector> c) {
  store(p, odd(c.re, c.im));
  store(p + 2, even(c.re, c.im));
}
OVKA_INLINE void transpose(Vector* row) {
  const Vector a = row[0], b = row[1];
  row[0] = even(a, b);
  row[1] = odd(a, b);
}
constexpr int loadOrder[2] = {0, 1};

#elif OVKA_LANES == 4

OVKA_INLINE Vector squareRoot(Vector v) {
  return _mm256_sqrt_pd(v);
}
// Even and odd lanes within each 128-bit half: one cheap instruction.
OVKA_INLINE Vector even(Vector a, Vector b) {
  return __builtin_shufflevector(a, b, 0, 4, 2, 6);
}
OVKA_INLINE Vector odd(Vector a, Vector b) {
  return __builtin_shufflevector(a, b, 1, 5, 3, 7);
}
OVKA_INLINE Vector reversed(Vector v) {
  return __builtin_shufflevector(v, v, 3, 2, 1, 0);
}
OVKA_INLINE Vector mirrored(Vector behind, Vector before) {
  const Vector mixed = __builtin_shufflevector(behind, before, 0, 5, 6, 7);
  return __builtin_shufflevector(mixed, mixed, 0, 3, 2, 1);
}
OVKA_INLINE Vector lowHalves(Vector a, Vector b) {
  return __builtin_shufflevector(a, b, 0, 1, 4, 5);
}
OVKA_INLINE Vector highHalves(Vector a, Vector b) {
  return __builtin_shufflevector(a, b, 2, 3, 6, 7);
}
OVKA_INLINE void storePairs(double* p, Complex<Vector> c) {
  const Vector a = even(c.re, c.im), b = odd(c.re, c.im);
  store(p, lowHalves(a, b));
  store(p + 4, highHalves(a, b));
}
OVKA_INLINE void storePairsReversed(double* p, Complex<Vector> c) {
  const Vector a = even(c.re, c.im), b = odd(c.re, c.im);
  store(p, highHalves(b, a));
  store(p + 4, lowHalves(b, a));
}
OVKA_INLINE void transpose(Vector* row) {
  const Vector a = even(row[0], row[1]), b = odd(row[0], row[1]);
  const Vector c = even(row[2], row[3]), d = odd(row[2], row[3]);
  row[0] = lowHalves(a, c);
  row[1] = lowHalves(b, d);
  row[2] = highHalves(a, c);
  row[3] = highHalves(b, d);
}
constexpr int loadOrder[4] = {0, 2, 1, 3};

#elif OVKA_LANES == 8

// All eight lanes by a mask: GCC 12 warns of the unmasked form's own "undefined" operand.
OVKA_INLINE Vector squareRoot(Vector v) {
  return _mm512_maskz_sqrt_pd(0xff, v);
}
OVKA_INLINE Vector even(Vector a, Vector b) {
  return __builtin_shufflevector(a, b, 0, 8, 2, 10, 4, 12, 6, 14);
}
OVKA_INLINE Vector odd(Vector a, Vector b) {
  return __builtin_shufflevector(a, b, 1, 9, 3, 11, 5, 13, 7, 15);
}
OVKA_INLINE Vector reversed(Vector v) {
  return __builtin_shufflevector(v, v, 7, 6, 5, 4, 3, 2, 1, 0);
}
OVKA_INLINE Vector mirrored(Vector behind, Vector before) {
  return __builtin_shufflevector(behind, before, 0, 15, 14, 13, 12, 11, 10, 9);
}
OVKA_INLINE void storePairs(double* p, Complex<Vector> c) {
  store(p, __builtin_shufflevector(c.re, c.im, 0, 8, 1, 9, 2, 10, 3, 11));
  store(p + 8, __builtin_shufflevector(c.re, c.im, 4, 12, 5, 13, 6, 14, 7, 15));
}
OVKA_INLINE void storePairsReversed(double* p, Complex<Vector> c) {
  store(p, __builtin_shufflevector(c.re, c.im, 7, 15, 6, 14, 5, 13, 4, 12));
  store(p + 8, __builtin_shufflevector(c.re, c.im, 3, 11, 2, 10, 1, 9, 0, 8));
}
// Quarters 0 and 2 of both, quarters 1 and 3 of both.
OVKA_INLINE Vector evenQuarters(Vector a, Vector b) {
  return __builtin_shufflevector(a, b, 0, 1, 4, 5, 8, 9, 12, 13);
}
OVKA_INLINE Vector oddQuarters(Vector a, Vector b) {
  return __builtin_shufflevector(a, b, 2, 3, 6, 7, 10, 11, 14, 15);
}
// The quarters of a, b, c, d become rows `to`, `to` + 2, `to` + 4, `to` + 6.
OVKA_INLINE void transposeQuarters(Vector a, Vector b, Vector c, Vector d, Vector* to) {
  const Vector even1 = evenQuarters(a, b), even2 = evenQuarters(c, d);
  const Vector odd1 = oddQuarters(a, b), odd2 = oddQuarters(c, d);
  to[0] = evenQuarters(even1, even2);
  to[2] = evenQuarters(odd1, odd2);
  to[4] = oddQuarters(even1, even2);
  to[6] = oddQuarters(odd1, odd2);
}
OVKA_INLINE void transpose(Vector* row) {
  const Vector a = even(row[0], row[1]), b = odd(row[0], row[1]);
  const Vector c = even(row[2], row[3]), d = odd(row[2], row[3]);
  const Vector e = even(row[4], row[5]), f = odd(row[4], row[5]);
  const Vector g = even(row[6], row[7]), h = odd(row[6], row[7]);
  transposeQuarters(a, c, e, g, row);
  transposeQuarters(b, d, f, h, row + 1);
}
constexpr int loadOrder[8] = {0, 4, 1, 5, 2, 6, 3, 7};

#endif

// `lanes` pairs (real, imaginary) from memory, taken apart; lane l holds pair loadOrder[l].
OVKA_INLINE Complex<Vector> loadPairs(const double* p) {
  const Vector a = load(p), b = load(p + lanes);
  return {even(a, b), odd(a, b)};
}

#endif

// Read once: without this the compiler reads a value again for each of its uses, which costs more
// than the register it saves.
OVKA_INLINE Vector loadOnce(const double* p) {
  Vector v = load(p);
#if defined(__x86_64__)
  asm("" : "+v"(v));
#endif
  return v;
}

OVKA_INLINE Complex<Vector> loadTwiddles(const double* p) {
  return {loadAligned(p), loadAligned(p + 8)};
}
OVKA_INLINE Complex<Vector> loadBlockPart(const double* p) {
  return {loadOnce(p), loadOnce(p + 8)};
}
OVKA_INLINE void storeBlockPart(double* p, const Complex<Vector>& c) {
  store(p, c.re);
  store(p + 8, c.im);
}

}  // namespace
