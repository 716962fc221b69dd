#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "MidiVariables.h"

namespace ovka {

/// The note engine's memory of what was asked for, a set-up at a time. The engine's lock guards it.
/// Allocated once. Numbers: set-up and note 0 to 127, channel 0 to 15, port 0 to 25 (24: the
/// synthesizer behind a full port list; 25: every port that does not exist).
class NoteBooks {
 public:
  static constexpr std::int32_t kNoPort = midi::kPorts + 1;
  static constexpr std::int32_t kPortSlots = kNoPort + 1;

  /// OnRecord: a Note On of the set-up has not been ended.
  [[nodiscard]] bool onRecord(std::int32_t note, std::int32_t setup, std::int32_t channel,
                              std::int32_t port) const {
    return (on_[word(note, setup, channel, port)] & bit(note)) != 0;
  }
  void setOnRecord(std::int32_t note, std::int32_t setup, std::int32_t channel, std::int32_t port,
                   bool on) {
    std::uint64_t& to = on_[word(note, setup, channel, port)];
    to = on ? to | bit(note) : to & ~bit(note);
  }
  /// Calls visit(port, channel, note) for every note of the set-up; `visit` may clear.
  template <typename Visit>
  void forEachOnRecord(std::int32_t setup, Visit&& visit) const {
    const std::size_t first = word(0, setup, 0, 0);
    for (std::size_t i = 0; i < kPortSlots * kPortWords; ++i) {
      if (on_[first + i] == 0) continue;
      const auto port = static_cast<std::int32_t>(i / kPortWords);
      const auto channel = static_cast<std::int32_t>(i % kPortWords / 2);
      for (std::int32_t note = i % 2 == 0 ? 0 : 64, end = note + 64; note < end; ++note) {
        if (onRecord(note, setup, channel, port)) visit(port, channel, note);
      }
    }
  }
  void clearOnRecord() {
    std::ranges::fill(on_, 0);
    std::ranges::fill(synthesizer_, 0);
  }
  /// The set-up's note was also started on the synthesizer.
  [[nodiscard]] bool onSynthesizer(std::int32_t note, std::int32_t setup,
                                   std::int32_t channel) const {
    return (synthesizer_[synthesizerWord(note, setup, channel)] & bit(note)) != 0;
  }
  void setOnSynthesizer(std::int32_t note, std::int32_t setup, std::int32_t channel, bool on) {
    std::uint64_t& to = synthesizer_[synthesizerWord(note, setup, channel)];
    to = on ? to | bit(note) : to & ~bit(note);
  }

  /// A slot of noteOld and velocityOld: set-up x 1152 + channel x 72 + port x 3 + NOTEN. A NOTEN
  /// above 2 lands in a neighbour's slots, on purpose; the table has room behind its end for a
  /// NOTEN up to 127 of the last set-up, and a NOTEN outside 0 to 127 counts as the nearest.
  [[nodiscard]] static std::size_t slot(std::int32_t setup, std::int32_t channel, std::int32_t port,
                                        std::int32_t NOTEN) {
    return static_cast<std::size_t>(setup * kSetupSlots + channel * 72 + port * 3 +
                                    std::clamp(NOTEN, 0, 127));
  }
  [[nodiscard]] std::int32_t noteOld(std::size_t slot) const { return noteOld_[slot]; }
  [[nodiscard]] std::int32_t velocityOld(std::size_t slot) const { return velocityOld_[slot]; }
  void store(std::size_t slot, std::int32_t note, std::int32_t velocity) {
    noteOld_[slot] = note;
    velocityOld_[slot] = velocity;
  }
  /// Set-ups 0 to 7 only, as the engine's set-up does; the others keep their last notes.
  void clearFirstSlots() {
    std::fill_n(noteOld_.begin(), 8 * kSetupSlots, 0);
    std::fill_n(velocityOld_.begin(), 8 * kSetupSlots, 0);
  }

 private:
  static constexpr std::int32_t kSetupSlots = midi::kChannels * 72;
  static constexpr std::size_t kSlots = std::size_t{midi::kSetups} * kSetupSlots + 136;
  static constexpr std::size_t kPortWords = std::size_t{midi::kChannels} * 2;

  [[nodiscard]] static std::size_t word(std::int32_t note, std::int32_t setup, std::int32_t channel,
                                        std::int32_t port) {
    return (static_cast<std::size_t>(setup * kPortSlots + port) * kPortWords) +
           static_cast<std::size_t>(channel * 2 + (note >> 6));
  }
  [[nodiscard]] static std::size_t synthesizerWord(std::int32_t note, std::int32_t setup,
                                                   std::int32_t channel) {
    return static_cast<std::size_t>(setup) * kPortWords +
           static_cast<std::size_t>(channel * 2 + (note >> 6));
  }
  [[nodiscard]] static std::uint64_t bit(std::int32_t note) {
    return std::uint64_t{1} << (static_cast<unsigned>(note) & 63U);
  }

  std::vector<std::uint64_t> on_ =
      std::vector<std::uint64_t>(std::size_t{midi::kSetups} * kPortSlots * kPortWords);
  std::vector<std::uint64_t> synthesizer_ =
      std::vector<std::uint64_t>(std::size_t{midi::kSetups} * kPortWords);
  std::vector<std::int32_t> noteOld_ = std::vector<std::int32_t>(kSlots);
  std::vector<std::int32_t> velocityOld_ = std::vector<std::int32_t>(kSlots);
};

}  // namespace ovka
