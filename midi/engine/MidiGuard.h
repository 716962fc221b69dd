#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>

#include "Clock.h"
#include "MidiEngine.h"
#include "Shared.h"
#include "ThreadLauncher.h"

namespace ovka {

/// Ends the notes when the thread that plays them hangs: the MIDI thread beats; when no beat came
/// for 2 s while notes sound, the guard's own thread sends their Note Offs. It watches from the
/// first beat on; what plays without a beating thread (a test note of a window) is left alone.
class MidiGuard {
 public:
  static constexpr std::chrono::nanoseconds kPatience = std::chrono::seconds(2);
  static constexpr std::chrono::nanoseconds kPeriod = std::chrono::milliseconds(250);

  MidiGuard(MidiEngine& engine, const Clock& clock) : engine_(engine), clock_(clock) {}

  /// The MIDI thread, with every tick; nothing else than one store.
  void beat() noexcept { last_.store(clock_.nanoseconds(), std::memory_order_release); }
  /// The MIDI thread ends on purpose: nothing is watched until the next beat.
  void rest() noexcept { last_.store(kNone, std::memory_order_release); }
  /// Starts the guard's thread, "midiGuard".
  void run(ThreadLauncher& threads);
  /// One look. The guard's thread.
  void look();
  /// How often notes were ended for want of a beat. Any thread.
  [[nodiscard]] long long rescues() const noexcept { return rescues_.get(); }

 private:
  static constexpr std::int64_t kNone = INT64_MIN;

  MidiEngine& engine_;
  const Clock& clock_;
  std::atomic<std::int64_t> last_{kNone};
  std::int64_t handled_ = kNone;  // the beat after which notes were ended; the guard's thread
  Counter rescues_;
};

}  // namespace ovka
