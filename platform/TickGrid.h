#pragma once

#include <chrono>
#include <cstdint>

namespace ovka {

/// Between looks whether what was paused goes on: nobody sees or hears that it does so this much
/// later, and the ticks of a paused program are most of what it costs.
inline constexpr std::chrono::nanoseconds kRest = std::chrono::milliseconds(50);

/// The grid rule of repeating timers: the due time that follows `due` once its tick has ended at
/// `now`. Points that passed while the tick ran are left out, and those of the next kRest if it
/// rests; the grid itself never shifts, so a timer does not drift. Nanoseconds; an interval below 1
/// counts as 1.
[[nodiscard]] constexpr std::int64_t nextOnGrid(std::int64_t due, std::int64_t interval,
                                                std::int64_t now, bool rests = false) noexcept {
  if (rests) now += kRest.count();
  if (interval < 1) interval = 1;
  const std::int64_t next = due + interval;
  if (next >= now) return next;
  const std::int64_t missed = (now - next + interval - 1) / interval;
  return next + missed * interval;
}

}  // namespace ovka
