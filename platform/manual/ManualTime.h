#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Clock.h"
#include "RunLoop.h"
#include "ThreadLauncher.h"

namespace ovka {

/// Time moved by hand: clock, threads and main run loop in one scheduler without a thread of its
/// own.
///
/// `advance` runs every body that falls due, on the caller's thread, in the order of due times
/// (ties: in the order of registration), the clock showing each body's due time while it runs. The
/// same registrations and advances give the same calls in the same order on every run and machine:
/// replays of captures and tests stand on that.
///
/// A body may register, signal, remove, stop, and advance (as a body that waits does: the other
/// threads go on meanwhile; the body itself, and for a callback of the run loop every other one of
/// the loop, waits until it returned). Registering and signalling are safe from any thread; one
/// thread advances, removes and stops.
class ManualTime final : public Clock, public ThreadLauncher, public RunLoop {
 public:
  /// A loop that asks for less sleep than this gets this much, so that no loop holds time still.
  static constexpr std::chrono::nanoseconds kShortestSleep = std::chrono::microseconds(1);

  /// `wallStart`: the wall-clock time (nanoseconds since 1970) at which this clock reads 0.
  explicit ManualTime(std::int64_t wallStart = 0) : wallStart_(wallStart) {}

  /// Moves time forward by `duration` (not back: a negative one counts as 0). `advance({})` runs
  /// what is due now: threads just started, sources just signalled.
  void advance(std::chrono::nanoseconds duration);
  /// Moves time to `nanoseconds`; a time already passed counts as now.
  void advanceTo(std::int64_t nanoseconds);
  /// When the next body falls due (never before now); nothing when none waits.
  [[nodiscard]] std::optional<std::int64_t> nextDue() const;

  [[nodiscard]] std::int64_t nanoseconds() const noexcept override { return now_.load(); }
  [[nodiscard]] std::int64_t wallNanoseconds() const noexcept override {
    return wallStart_ + now_.load();
  }

  void repeat(std::string_view name, std::chrono::nanoseconds interval,
              std::function<void()> tick) override;
  void loop(std::string_view name, std::function<std::chrono::nanoseconds()> step) override;
  void once(std::string_view name, std::function<void()> body) override;
  /// Ends everything: threads, timers and sources; what is registered afterwards never runs.
  void stopAll() override;

  void addTimer(std::chrono::nanoseconds interval, std::function<void()> tick) override;
  Source addSource(std::function<void()> perform) override;
  void signal(Source source) override;
  void removeSource(Source source) override;

  /// Names of the threads that have not ended, in the order of their start.
  [[nodiscard]] std::vector<std::string> threads() const;

 private:
  enum class Kind : std::uint8_t { Repeat, Loop, Once, Timer, Source };
  struct Entry {
    Kind kind = Kind::Once;
    std::string name;
    std::int64_t interval = 0;
    std::function<std::chrono::nanoseconds()> body;  // the sleep counts for loops only
    std::int64_t due = 0;
    bool waiting = true;  // false: runs right now, or a source without a signal
    bool ended = false;
    Source source = 0;
  };
  using EntryPtr = std::shared_ptr<Entry>;

  [[nodiscard]] static bool ofRunLoop(const Entry& entry) noexcept {
    return entry.kind == Kind::Timer || entry.kind == Kind::Source;
  }
  EntryPtr add(Kind kind, std::string_view name, std::chrono::nanoseconds interval,
               std::function<std::chrono::nanoseconds()> body);
  [[nodiscard]] EntryPtr next() const;
  [[nodiscard]] EntryPtr takeDue(std::int64_t until);
  void reschedule(Entry& entry, std::chrono::nanoseconds sleep);

  std::int64_t wallStart_;
  std::atomic<std::int64_t> now_{0};
  mutable std::mutex lock_;  // guards what follows; never held while a body runs
  std::vector<EntryPtr> entries_;
  Source lastSource_ = 0;
  bool runLoopBusy_ = false;
  bool stopped_ = false;
};

}  // namespace ovka
