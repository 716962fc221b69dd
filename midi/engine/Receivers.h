#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include "Clock.h"
#include "MessageLog.h"
#include "MidiTransport.h"
#include "SoundingNotes.h"
#include "Synthesizer.h"

namespace ovka {

/// Everything that can receive messages, a row each in the table of sounding notes, and the last
/// door through which a message leaves: here it is booked what sounds at the receiver, so that
/// nothing is left sounding by anything that happens above. A Note Off that could not be delivered
/// (refused, receiver gone) is owed and sent when it can be.
///
/// A receiver's note is on or off, however many Note Ons came: one Note Off ends it. The engine's
/// lock guards everything; nothing waits, only the constructor allocates.
class Receivers {
 public:
  using Row = std::uint32_t;
  static constexpr Row kVirtualSource = 0;
  static constexpr Row kSynthesizer = 1;
  static constexpr Row kNowhere = SoundingNotes::kRows;

  /// A null table means one of its own. All outlive this object.
  Receivers(std::span<MidiTransport* const> transports, Synthesizer* synthesizer,
            SoundingNotes* sounding, MessageLog& log, const Clock& clock);

  // Who is there.

  /// The row of a destination: one that waits for its return under that name, or a new one.
  [[nodiscard]] Row take(MidiTransport* transport, std::string_view name);
  /// The receiver is there from now on.
  void bind(Row row, std::uint64_t id);
  /// The receiver is not there; notes that sound are owed their Note Off.
  void lose(Row row);
  void loseDestinations();
  [[nodiscard]] bool there(Row row) const { return row < kNowhere && places_[row].there; }
  /// Whether `take` gave the row to this receiver.
  [[nodiscard]] bool isFor(Row row, const MidiTransport* transport, std::string_view name) const;
  /// Whether the virtual source publishes on that MIDI system.
  void setOpen(std::size_t transport, bool open) { open_[transport] = open ? 1 : 0; }

  // Sending.

  /// 0, or the errno of the receiver; ENXIO when it is not there.
  int deliver(Row row, std::int32_t port, std::uint64_t timeStamp,
              std::span<const std::uint8_t> bytes, const MidiCause& cause);
  /// Note Offs for all that sounds at a receiver; what fails stays owed.
  void endNotes(Row row, const MidiCause& cause);
  void endChannel(Row row, std::int32_t channel, const MidiCause& cause);
  void endAllNotes(const MidiCause& cause);
  /// Sends the Note Offs that are owed to receivers that are there.
  void payDebts();
  /// To every receiver that was ever sent to: Note Offs for what sounds, then controllers 123 (all
  /// notes off) and 120 (all sound off) on all channels; the synthesizer is silenced besides.
  void panic(const MidiCause& cause);

  [[nodiscard]] const SoundingNotes& sounding() const { return *sounding_; }
  /// Note Offs that wait for their receiver.
  [[nodiscard]] std::size_t owed() const;

 private:
  struct Place {
    MidiTransport* transport = nullptr;
    std::uint64_t id = 0;
    bool there = false;
    bool used = false;  ///< something was sent to it
    std::array<std::array<std::uint64_t, 2>, 16> owed{};
  };

  [[nodiscard]] int hand(Row row, std::uint64_t timeStamp, std::span<const std::uint8_t> bytes);
  [[nodiscard]] int publish(std::uint64_t timeStamp, std::span<const std::uint8_t> bytes);
  void sendOff(Row row, unsigned channel, unsigned note, const MidiCause& cause);
  void write(Row row, std::int32_t port, std::uint64_t timeStamp,
             std::span<const std::uint8_t> bytes, const MidiCause& cause, int error);
  void started(Row row, unsigned channel, unsigned note, int error, bool before);
  void ended(Row row, unsigned channel, unsigned note, int error);
  void allEnded(Row row, unsigned channel);
  [[nodiscard]] static bool isOwed(const Place& place, unsigned channel, unsigned note);
  static void setOwed(Place& place, unsigned channel, unsigned note, bool owed);

  const std::vector<MidiTransport*> transports_;
  Synthesizer* const synthesizer_;
  const std::unique_ptr<SoundingNotes> own_;
  SoundingNotes* const sounding_;
  MessageLog& log_;
  const Clock& clock_;
  const std::int64_t start_;
  std::vector<char> open_;
  std::array<Place, SoundingNotes::kRows> places_{};
};

}  // namespace ovka
