#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "NoteOutput.h"
#include "SetupMarks.h"

namespace ovka {

/// The notes that a mapping left sounding, one for each of eight places of a set-up (a band, a
/// peak), so that they end when the place goes on elsewhere or stops. One thread at a time.
class HeldNotes {
 public:
  static constexpr std::size_t kPlaces = 8;
  /// `style` of a note that stays until it is replaced; other styles are the NOTEN of their slot.
  static constexpr std::int32_t kFixed = -1;
  /// The greatest NOTEN with which the engine lets a note that stays the same sound on.
  static constexpr std::int32_t kMostKeeping = 9;

  struct Note {
    std::int32_t note = -1;  ///< -1: none yet
    std::int32_t channel = 0;
    std::int32_t port = 0;
    std::int32_t style = kFixed;
  };

  HeldNotes(NoteOutput& notes, std::int32_t useQT) : notes_(notes), useQT_(useQT) {}

  /// The place is about to sound `next`. What it held ends first, unless it stays or the engine's
  /// slot will end it. True: the slot takes `next` for the note that it last started, but that one
  /// has ended since, so the caller must start it with a Note On of its own.
  [[nodiscard]] bool hold(std::size_t setup, std::size_t place, const Note& next) {
    // As the engine clamps them: numbers beyond the limits are the same note.
    const Note now{std::clamp(next.note, 0, 127), std::clamp(next.channel, 0, 15), next.port,
                   next.style};
    Held& held = held_[setup][place];
    const bool keeps = now.style <= kMostKeeping;
    const bool samePlace = held.note.channel == now.channel && held.note.port == now.port &&
                           held.note.style == now.style;
    const bool same = samePlace && held.note.note == now.note;
    if (same && keeps && held.sounding) return false;
    if (!samePlace || held.struck || now.style == kFixed) release(setup, place);
    held = {now, true, same && keeps && now.style != kFixed};
    setups_.insert(setup);
    return held.struck;
  }
  void release(std::size_t setup, std::size_t place) {
    Held& held = held_[setup][place];
    if (!held.sounding) return;
    held.sounding = false;
    notes_.MidiOutOff(held.note.note, static_cast<std::int32_t>(setup), held.note.channel,
                      held.note.port, useQT_);
  }
  void release(std::size_t setup) {
    if (!setups_.contains(setup)) return;
    for (std::size_t place = 0; place < kPlaces; ++place) release(setup, place);
    setups_.erase(setup);
  }
  /// Set-ups that may hold notes.
  [[nodiscard]] const SetupMask& setups() const { return setups_; }

 private:
  struct Held {
    Note note;
    bool sounding = false;
    bool struck = false;  ///< started past the engine's slot
  };

  NoteOutput& notes_;
  std::int32_t useQT_;
  std::array<std::array<Held, kPlaces>, midi::kSetups> held_{};
  SetupMask setups_;
};

}  // namespace ovka
