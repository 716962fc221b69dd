#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace ovka {

/// A look-ahead peak limiter for two channels that share one gain, so that the stereo picture
/// stays.
///
/// With x the larger magnitude of the two channels and c the ceiling, each sample asks for the gain
/// g(t) = min(1, c / x(t)). The smallest g of the last L + 1 samples is held (monotonic queue: D.
/// Lemire, "Streaming maximum-minimum filter using no more than three comparisons per element",
/// Nordic Journal of Computing 13, 2006), released exponentially, and smoothed by the mean over
/// L + 1 samples; the sound is delayed by L samples. Every value in the mean over t - L ... t was
/// held at or below g(t - L), so the delayed sample is never above c (design as in D. Giannoulis,
/// M. Massberg, J. Reiss, "Digital Dynamic Range Compressor Design", J. Audio Eng. Soc. 60, 2012,
/// with a mean in place of the attack filter). Gains are whole numbers of 2^-30, so the running sum
/// stays exact for ever.
///
/// It limits samples, not the curve between them; leave a ceiling of -1 dB for that. One thread;
/// process() neither allocates nor blocks.
class PeakLimiter {
 public:
  struct Settings {
    double sampleRate = 48000;  ///< samples a second, 1000 to 768000
    double ceiling = -1;        ///< dB of full scale, -60 to 0
    double lookAhead = 0.0015;  ///< seconds the sound is delayed, up to 0.1
    double release = 0.08;      ///< seconds until a reduction has faded to 1/e, up to 10
  };

  /// Settings out of range, or not numbers, are held at their limits.
  explicit PeakLimiter(const Settings& settings);

  /// Limits both channels in place (the shorter length counts). What is not finite becomes 0.
  void process(std::span<float> left, std::span<float> right) noexcept;
  /// Forgets the sound under way.
  void reset() noexcept;

  /// L: samples by which the sound comes out later.
  [[nodiscard]] std::size_t delay() const { return window_ - 1; }
  /// The ceiling as a magnitude, 1 is full scale.
  [[nodiscard]] float ceiling() const { return ceiling_; }

 private:
  [[nodiscard]] std::uint32_t wantedGain(float left, float right) const noexcept;
  [[nodiscard]] std::uint32_t smallestGain(std::uint32_t gain) noexcept;
  [[nodiscard]] double smoothed(std::uint32_t held) noexcept;

  struct Candidate {
    std::uint64_t time = 0;
    std::uint32_t gain = 0;
  };

  float ceiling_;
  double releaseStep_;
  std::size_t window_;  // L + 1
  std::vector<float> left_;
  std::vector<float> right_;
  std::vector<std::uint32_t> gains_;
  std::vector<Candidate> candidates_;  // a ring; gains rise from its first to its last
  std::size_t firstCandidate_ = 0;
  std::size_t candidateCount_ = 0;
  std::uint64_t time_ = 0;
  std::size_t place_ = 0;
  std::uint32_t released_ = 0;
  std::uint64_t sum_ = 0;
};

}  // namespace ovka
