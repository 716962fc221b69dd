#pragma once

// Included by the objects that are compiled for one instruction set: no standard header here, and
// no inline function, since the linker could keep the copy made for AVX-512 and hand it to
// everybody.

namespace ovka {

/// The tables of one length. All are read-only, aligned to 64 bytes, and the same for every
/// instruction set. A "complex block" is 8 real parts followed by 8 imaginary parts.
struct TransformPlan {
  int complexPoints;  ///< N, half the number of real samples; a power of two, 64 ... 32768
  int doublePasses;   ///< how many passes of two stages stand between the first pass and the last
  bool lastIsDouble;  ///< whether the last pass does two stages before it unpacks, or one
  double scale;       ///< 1 / (2 N), a power of two, so that multiplying equals dividing

  /// Stages 2 and 3: (real, imaginary) of w[1] of the one and w[1], w[2], w[3] of the other.
  const double* first;
  /// For each double pass and each j below its distance in blocks: three complex blocks, w of the
  /// nearer stage, then of the farther stage at j and at j + distance.
  const double* middle;
  /// For each block of the last pass: LastTwiddles complex blocks (see PassBodies.h).
  const double* last;
  /// (real, imaginary) pairs for the two butterflies of the last pass that are done one by one.
  const double* edge;
};

/// The passes for one instruction set; null where this build has no such path.
struct Passes {
  /// `in` in its natural order -> `data` in complex blocks after three stages.
  void (*first)(const TransformPlan& plan, const double* in, double* data);
  /// All stages between, in place.
  void (*middle)(const TransformPlan& plan, double* data);
  /// The last one or two stages, unpacking, and the magnitudes unless `magnitude` is null.
  void (*last)(const TransformPlan& plan, const double* data, double* packed, double* magnitude);
};

extern const Passes plainPasses;
extern const Passes baselinePasses;
extern const Passes avx2Passes;
extern const Passes avx512Passes;

}  // namespace ovka
