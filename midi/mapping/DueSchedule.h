#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "SetupMarks.h"

namespace ovka {

/// When each set-up has to be looked at next, so that a tick touches only those whose time has
/// come. A heap of fixed size: nothing allocates. One thread at a time.
class DueSchedule {
 public:
  DueSchedule() noexcept { clear(); }

  void clear() noexcept;
  /// Looks at `setup` once the time (seconds) reaches `time`, instead of what was said before.
  void at(std::size_t setup, double time) noexcept;
  /// The same, or as soon as samples come.
  void atOrWithSamples(std::size_t setup, double time) noexcept;
  void remove(std::size_t setup) noexcept;
  /// Moves those whose time has come into `due`.
  void take(double now, SetupMask& due) noexcept;
  [[nodiscard]] bool empty() const noexcept { return size_ == 0; }
  /// Samples came: moves those that wait for them into `due`.
  void takeWaiting(SetupMask& due) noexcept;

  /// The earliest time at which now - `last` < `interval` may turn false, whatever the rounding.
  [[nodiscard]] static double earliest(double last, double interval) noexcept;

 private:
  static constexpr std::size_t kSize = midi::kSetups;
  static constexpr std::size_t kNowhere = kSize;

  void place(std::size_t position, std::size_t setup) noexcept;
  void rise(std::size_t position) noexcept;
  void sink(std::size_t position) noexcept;

  std::array<std::uint8_t, kSize> heap_{};      // set-ups, the earliest first
  std::array<std::size_t, kSize> positions_{};  // of a set-up in the heap
  std::array<double, kSize> times_{};           // of a set-up
  std::size_t size_ = 0;
  SetupMask waiting_;
};

}  // namespace ovka
