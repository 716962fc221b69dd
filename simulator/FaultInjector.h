#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "Random.h"
#include "SimulatorOptions.h"

namespace ovka {

/// What was done to the stream, each cause for itself.
struct FaultCounts {
  std::uint64_t droppedBytes = 0;
  std::uint64_t duplicatedBytes = 0;
  std::uint64_t corruptedBytes = 0;
  std::uint64_t stalls = 0;
  std::uint64_t stalledFrames = 0;  ///< lost in stalls
  std::uint64_t bursts = 0;
  std::uint64_t heldFrames = 0;  ///< held back in bursts, sent late
  std::uint64_t hangUps = 0;
  std::uint64_t skippedFrames = 0;  ///< lost because the simulator itself was held up too long
  std::uint64_t overrunBytes = 0;   ///< not taken by a host that does not read
};

/// Spoils a stream of frames on demand. Decides by frames and bytes, not by calls, so the same seed
/// gives the same faults however the time is cut. Used by one thread.
class FaultInjector {
 public:
  FaultInjector(const FaultChoice& choice, std::uint64_t seed);

  /// One frame of a stream of `samplesPerSecond`: appends to `out` what leaves the line for it.
  void pass(std::span<const std::uint8_t> frame, double samplesPerSecond,
            std::vector<std::uint8_t>& out);

  [[nodiscard]] const FaultCounts& counts() const noexcept { return counts_; }
  [[nodiscard]] FaultCounts& counts() noexcept { return counts_; }

 private:
  void spoil(std::span<const std::uint8_t> frame, std::vector<std::uint8_t>& out);
  [[nodiscard]] bool begins(double perMinute, double samplesPerSecond);

  FaultChoice choice_;
  Random random_;
  FaultCounts counts_;
  std::uint64_t stallLeft_ = 0;  ///< frames
  std::uint64_t burstLeft_ = 0;  ///< frames
  std::vector<std::uint8_t> held_;
};

}  // namespace ovka
