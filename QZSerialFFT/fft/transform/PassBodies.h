// The passes, written once for any number of lanes. Included by each PassesXxx.cpp after
// OVKA_LANES; see docs/TRANSFORM.md for the drawing. The order of every sum is that of the classic
// plain form; the compiler may not contract, and 0 * x is really computed, because it decides the
// sign of a zero.
#pragma once

#include "Lanes.h"
#include "Passes.h"

namespace {

using ovka::TransformPlan;

constexpr int blockSize = 16;  // doubles in a complex block: 8 real, 8 imaginary
constexpr int blockLanes = 8;

template <typename V>
OVKA_INLINE void butterfly(Complex<V>& low, Complex<V>& high, const Complex<V>& w) {
  const V re = w.re * high.re - w.im * high.im;
  const V im = w.re * high.im + w.im * high.re;
  high = {low.re - re, low.im - im};
  low = {low.re + re, low.im + im};
}

// The same for w = (1, 0): 1 * x is x, but 0 * x must stay for the sign of zeros.
template <typename V>
OVKA_INLINE void unitButterfly(Complex<V>& low, Complex<V>& high) {
  const V re = high.re - 0.0 * high.im;
  const V im = high.im + 0.0 * high.re;
  high = {low.re - re, low.im - im};
  low = {low.re + re, low.im + im};
}

// Two stages on four numbers: 0-1 and 2-3 with `near`, then 0-2 with `far`, 1-3 with `farther`.
template <typename V>
OVKA_INLINE void twoStages(Complex<V>* x, const Complex<V>& near, const Complex<V>& far,
                           const Complex<V>& farther) {
  butterfly(x[0], x[1], near);
  butterfly(x[2], x[3], near);
  butterfly(x[0], x[2], far);
  butterfly(x[1], x[3], farther);
}

// Bins k and N - k of the half-length transform become bins k and N - k of the real one.
template <typename V>
OVKA_INLINE void unpack(Complex<V>& low, Complex<V>& high, const Complex<V>& w) {
  const V h1r = 0.5 * (low.re + high.re);
  const V h1i = 0.5 * (low.im - high.im);
  const V h2r = 0.5 * (low.im + high.im);
  const V h2i = -0.5 * (low.re - high.re);
  low = {h1r + w.re * h2r - w.im * h2i, h1i + w.re * h2i + w.im * h2r};
  high = {h1r - w.re * h2r + w.im * h2i, -h1i + w.re * h2i + w.im * h2r};
}

// ---- first pass
// -------------------------------------------------------------------------------------

// The twiddles of stages 2 and 3 that are not 1, the same in all lanes.
struct FirstTwiddles {
  Complex<Vector> second, third[3];

  explicit OVKA_INLINE FirstTwiddles(const double* pairs) : second(spread(pairs)) {
    for (int r = 0; r < 3; ++r) third[r] = spread(pairs + 2 + 2 * r);
  }
  static OVKA_INLINE Complex<Vector> spread(const double* pair) {
    return {pair[0] - Vector{}, pair[1] - Vector{}};
  }
};

// Three stages on eight rows that are `rowLength` pairs apart in `in`. Four rows are read and
// brought through two stages before the other four are touched, which spares registers.
OVKA_INLINE void threeStages(const double* in, long rowLength, const FirstTwiddles& w,
                             Complex<Vector>* x) {
  constexpr int bitReversed[8] = {0, 4, 2, 6, 1, 5, 3, 7};
  for (int half = 0; half < 8; half += 4) {
    Complex<Vector>* y = x + half;
    for (int r = 0; r < 4; ++r) y[r] = loadPairs(in + 2 * bitReversed[half + r] * rowLength);
    unitButterfly(y[0], y[1]);
    unitButterfly(y[2], y[3]);
    unitButterfly(y[0], y[2]);
    butterfly(y[1], y[3], w.second);
  }
  unitButterfly(x[0], x[4]);
  for (int r = 1; r < 4; ++r) butterfly(x[r], x[r + 4], w.third[r - 1]);
}

// Eight rows of `lanes` columns become `lanes` blocks of eight: each column goes to its own block.
OVKA_INLINE void storeColumns(const Complex<Vector>* x, double* data, long columnDistance) {
  for (int part = 0; part < blockLanes; part += lanes) {
    Vector re[lanes], im[lanes];
    for (int r = 0; r < lanes; ++r) {
      re[r] = x[part + r].re;
      im[r] = x[part + r].im;
    }
    transpose(re);
    transpose(im);
    for (int column = 0; column < lanes; ++column) {
      int reversedBits = 0;
      for (int bit = 1, value = loadOrder[column]; bit < lanes; bit *= 2, value /= 2) {
        reversedBits = reversedBits * 2 + (value & 1);
      }
      double* block = data + reversedBits * columnDistance + part;
      store(block, re[column]);
      store(block + 8, im[column]);
    }
  }
}

void firstPass(const TransformPlan& plan, const double* in, double* data) {
  const long rowLength = plan.complexPoints / 8;
  const long steps = rowLength / lanes;
  const FirstTwiddles twiddles(plan.first);
  long block = 0;  // the number of the step with its bits reversed
  for (long step = 0; step < steps; ++step) {
    Complex<Vector> x[8];
    threeStages(in + 2 * step * lanes, rowLength, twiddles, x);
    storeColumns(x, data + block * blockSize, steps * blockSize);
    // Counting in reversed order: the bits from the top down to the first 0 change.
    block ^= steps - (steps >> (__builtin_ctzl(static_cast<unsigned long>(step + 1)) + 1));
  }
}

// ---- passes of two stages
// ---------------------------------------------------------------------------

OVKA_INLINE void doublePass(double* data, long blocks, long distance, const double* twiddles) {
  const long apart = distance * blockSize;
  for (double* group = data; group < data + blocks * blockSize; group += 4 * apart) {
    const double* w = twiddles;
    for (double* block = group; block < group + apart; block += blockSize, w += 3 * blockSize) {
      for (int part = 0; part < blockLanes; part += lanes) {
        double* p = block + part;
        Complex<Vector> x[4];
        for (int i = 0; i < 4; ++i) x[i] = loadBlockPart(p + i * apart);
        twoStages(x, loadTwiddles(w + part), loadTwiddles(w + part + blockSize),
                  loadTwiddles(w + part + 2 * blockSize));
        for (int i = 0; i < 4; ++i) storeBlockPart(p + i * apart, x[i]);
      }
    }
  }
}

void middlePasses(const TransformPlan& plan, double* data) {
  const long blocks = plan.complexPoints / blockLanes;
  const double* twiddles = plan.middle;
  long distance = 1;
  for (int pass = 0; pass < plan.doublePasses; ++pass) {
    doublePass(data, blocks, distance, twiddles);
    twiddles += distance * 3 * blockSize;
    distance *= 4;
  }
}

// ---- last pass: one or two stages, unpacking, magnitudes
// ----------------------------------------------

// With `count` = 2 (one stage) or 4 (two stages) numbers a butterfly, `apart` = N / count:
// butterfly m gives the bins m + i * apart, butterfly apart - m gives their partners, N minus
// those. So both are done together, the second one in mirrored lanes, and everything is unpacked
// without leaving the registers.
template <int count, bool withMagnitude>
struct Last {
  const double* data;
  double* packed;
  double* magnitude;
  double scale;
  long apart;

  static constexpr int stageTwiddles = count == 2 ? 1 : 3;

  template <typename V>
  static OVKA_INLINE void stages(Complex<V>* x, const Complex<V>* w) {
    if constexpr (count == 2) {
      butterfly(x[0], x[1], w[0]);
    } else {
      twoStages(x, w[0], w[1], w[2]);
    }
  }

  OVKA_INLINE Vector magnitudeOf(const Complex<Vector>& c) const {
    return squareRoot(c.re * c.re + c.im * c.im) * scale;
  }

  OVKA_INLINE void put(long bin, const Complex<Vector>& c) const {
    storePairs(packed + 2 * bin, c);
    if constexpr (withMagnitude) {
      store(magnitude + bin, magnitudeOf(c));
    }
  }

  // Lane l to bin `bin` - l.
  OVKA_INLINE void putMirrored(long bin, const Complex<Vector>& c) const {
    bin -= lanes - 1;
    storePairsReversed(packed + 2 * bin, c);
    if constexpr (withMagnitude) {
      store(magnitude + bin, reversed(magnitudeOf(c)));
    }
  }

  OVKA_INLINE void putOne(long bin, const Complex<double>& c) const {
    packed[2 * bin] = c.re;
    packed[2 * bin + 1] = c.im;
    if constexpr (withMagnitude) {
      magnitude[bin] = __builtin_sqrt(c.re * c.re + c.im * c.im) * scale;
    }
  }

  // Where the real part of number `index` lies in complex blocks.
  static OVKA_INLINE long placeOf(long index) { return 2 * index - (index & (blockLanes - 1)); }

  // Butterflies m ... m + lanes - 1 and their partners; `edge` when m is 0: lane 0 then has no
  // partner, is filled with anything, and its bins are written later by edges().
  template <bool edge>
  OVKA_INLINE void step(long m, const double* twiddles) const {
    Complex<Vector> x[count], y[count], w[stageTwiddles];
    for (int i = 0; i < stageTwiddles; ++i) w[i] = loadTwiddles(twiddles + i * blockSize);
    for (int i = 0; i < count; ++i) x[i] = loadBlockPart(data + placeOf(m) + i * 2 * apart);
    stages(x, w);
    twiddles += stageTwiddles * blockSize;
    for (int i = 0; i < stageTwiddles; ++i) w[i] = loadTwiddles(twiddles + i * blockSize);
    // Lane 0 is number apart - m, the first of its part; the other lanes lie in the part before it.
    const double* before = data + placeOf(apart - m - lanes);
    const double* behind = edge ? before : data + placeOf(apart - m);
    for (int i = 0; i < count; ++i, before += 2 * apart, behind += 2 * apart) {
      y[i] = {mirrored(load(behind), load(before)), mirrored(load(behind + 8), load(before + 8))};
    }
    stages(y, w);
    twiddles += stageTwiddles * blockSize;
    for (int i = 0; i < count / 2; ++i) {
      const int j = count - 1 - i;
      unpack(x[i], y[j], loadTwiddles(twiddles + 2 * i * blockSize));
      put(m + i * apart, x[i]);
      if (edge && i == 0) {
        putBelowEnd(y[j]);
      } else {
        putMirrored((j + 1) * apart - m, y[j]);
      }
      unpack(y[i], x[j], loadTwiddles(twiddles + (2 * i + 1) * blockSize));
      putMirrored((i + 1) * apart - m, y[i]);
      put(m + j * apart, x[j]);
    }
  }

  // putMirrored() at bin N, which does not exist: lane 0 is left out.
  OVKA_INLINE void putBelowEnd(const Complex<Vector>& c) const {
    const long end = count * apart;
    double re[lanes], im[lanes];
    store(re, c.re);
    store(im, c.im);
    for (int l = 1; l < lanes; ++l) {
      packed[2 * (end - l)] = re[l];
      packed[2 * (end - l) + 1] = im[l];
    }
    if constexpr (withMagnitude) {
      store(re, magnitudeOf(c));
      for (int l = 1; l < lanes; ++l) magnitude[end - l] = re[l];
    }
  }

  OVKA_INLINE void loadOne(long m, Complex<double>* x) const {
    for (int i = 0; i < count; ++i) {
      const double* p = data + placeOf(m + i * apart);
      x[i] = {p[0], p[8]};
    }
  }

  // Butterfly 0, which holds DC and Nyquist, and butterfly apart / 2, its own partner.
  void edges(const double* twiddles) const {
    constexpr int used = 2 * stageTwiddles + count / 2 + 1;
    Complex<double> w[used], x[count];
    for (int i = 0; i < used; ++i) w[i] = {twiddles[2 * i], twiddles[2 * i + 1]};
    loadOne(0, x);
    stages(x, w);
    x[0] = {x[0].re + x[0].im, x[0].re - x[0].im};
    if constexpr (count == 4) unpack(x[1], x[3], w[used - 1]);
    for (int i = 0; i < count; ++i) putOne(i * apart, x[i]);

    loadOne(apart / 2, x);
    stages(x, w + stageTwiddles);
    for (int i = 0; i < count / 2; ++i) unpack(x[i], x[count - 1 - i], w[2 * stageTwiddles + i]);
    for (int i = 0; i < count; ++i) putOne(i * apart + apart / 2, x[i]);
  }

  OVKA_INLINE void run(const TransformPlan& plan) const {
    constexpr int blockTwiddles = (2 * stageTwiddles + count) * blockSize;
    const double* twiddles = plan.last;
    step<true>(0, twiddles);
    edges(plan.edge);  // here, so that the processor can begin the loop while these few wait for
                       // each other
    for (long block = 0; block < apart / 2; block += blockLanes, twiddles += blockTwiddles) {
      for (int part = block == 0 ? lanes : 0; part < blockLanes; part += lanes) {
        step<false>(block + part, twiddles + part);
      }
    }
  }
};

template <int count>
void lastPassOf(const TransformPlan& plan, const double* data, double* packed, double* magnitude) {
  const long apart = plan.complexPoints / count;
  if (magnitude != nullptr) {
    Last<count, true>{data, packed, magnitude, plan.scale, apart}.run(plan);
  } else {
    Last<count, false>{data, packed, magnitude, plan.scale, apart}.run(plan);
  }
}

void lastPass(const TransformPlan& plan, const double* data, double* packed, double* magnitude) {
  if (plan.lastIsDouble) {
    lastPassOf<4>(plan, data, packed, magnitude);
  } else {
    lastPassOf<2>(plan, data, packed, magnitude);
  }
}

}  // namespace
