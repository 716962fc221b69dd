#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace ovka::terminal {

/// Measures how many sample points arrive a second, from the positions seen now and then over the
/// last ten seconds. Points arrive in batches; a line fitted through all positions evens that out.
/// Allocates nothing. One thread.
class RateMeter {
 public:
  /// Takes the number of points so far at a time (ns, any start); times do not go back.
  void take(std::int64_t nanoseconds, std::int64_t points);
  /// Points a second; 0 until a second has been seen.
  [[nodiscard]] double rate() const;
  void reset() { count_ = 0; }

 private:
  struct Sighting {
    std::int64_t nanoseconds;
    std::int64_t points;
  };
  static constexpr std::int64_t kWindow = 10'000'000'000;
  static constexpr std::int64_t kShortest = 1'000'000'000;
  /// Sightings closer together than this are left out, so that ten seconds always fit.
  static constexpr std::int64_t kApart = 90'000'000;

  [[nodiscard]] const Sighting& at(std::size_t age) const;

  std::array<Sighting, 128> ring_{};
  std::size_t next_ = 0;
  std::size_t count_ = 0;
};

}  // namespace ovka::terminal
