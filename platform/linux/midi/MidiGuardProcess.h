#pragma once

#include <sys/types.h>

#include "SoundingNotes.h"

namespace ovka {

/// A small process that outlives this one, whatever it dies of: when this process is gone without
/// having called finish(), it opens a client of its own on the systems used, ends the notes that
/// the shared table says are sounding, and ends.
///
/// It is forked and not a program of its own, so it must be started while this process has one
/// thread and no library of a MIDI system has been used. It has a session of its own: an interrupt
/// typed at the terminal does not reach it. It keeps none of this process's descriptors, and is
/// called "ovka-midi-guard". One thread.
class MidiGuardProcess {
 public:
  MidiGuardProcess() = default;
  /// As finish().
  ~MidiGuardProcess() { finish(); }
  MidiGuardProcess(const MidiGuardProcess&) = delete;
  MidiGuardProcess& operator=(const MidiGuardProcess&) = delete;

  /// 0 or an errno; then notes() is a table of this process's own and nobody guards it. EBUSY: this
  /// process has threads already.
  [[nodiscard]] int start();
  /// The table that the guard watches; lives as long as this.
  [[nodiscard]] SoundingNotes& notes();
  /// The guard's process, -1 when there is none.
  [[nodiscard]] pid_t process() const { return process_; }
  /// The orderly end: the guard ends without doing anything. Waits until it has.
  void finish();

 private:
  void* memory_ = nullptr;
  pid_t process_ = -1;
  pid_t owner_ = -1;
  int alive_ = -1;  ///< its end tells the guard
};

/// Note Offs for every note of the table, and All Notes Off for what was on its way, on the systems
/// and to the destinations the table names. For a table whose writer is dead. Returns how many
/// Note Offs were sent.
int endSoundingNotes(const SoundingNotes& notes);

}  // namespace ovka
