#include "MidiGuard.h"

#include "Print.h"

namespace ovka {

void MidiGuard::run(ThreadLauncher& threads) {
  threads.repeat("midiGuard", kPeriod, [this] { look(); });
}

void MidiGuard::look() {
  const std::int64_t last = last_.load(std::memory_order_acquire);
  // Once a stall: a note whose receiver has gone stays marked until it returns.
  if (last == kNone || last == handled_) return;
  if (clock_.nanoseconds() - last < kPatience.count()) return;
  if (!engine_.sounding().anySounds()) return;
  // Busy at this moment: the next look tries again.
  if (!engine_.tryEndAllNotes()) return;
  handled_ = last;
  rescues_.add(1);
  Print("The MIDI thread has not moved for %.1f s; the sounding notes were ended.\n",
        static_cast<double>(clock_.nanoseconds() - last) * 1e-9);
}

}  // namespace ovka
