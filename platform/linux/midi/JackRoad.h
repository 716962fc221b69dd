#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <jack/jack.h>
#include <limits>
#include <span>

#include "ByteRing.h"
#include "OutgoingMidi.h"
#include "SendRing.h"
#include "Shared.h"
#include "Wake.h"

namespace ovka {

/// The road between the senders, JACK's real-time thread and the thread that reads: nobody on it
/// waits for anybody, nothing on it allocates.
///
/// JACK has no sending to a destination: every chosen destination gets an output port of its own, a
/// slot. Slot 0 is the virtual source.
class JackRoad {
 public:
  static constexpr std::size_t kSlots = 64;
  static constexpr std::size_t kVirtualSource = 0;
  /// More in one cycle makes some servers drop the whole cycle without a word.
  static constexpr std::size_t kMostACycle = 512;

  enum class State : std::uint8_t {
    Opening,  ///< its port is not connected yet: messages wait
    Ready,
    Gone  ///< its destination is away: messages are dropped
  };
  struct Slot {
    std::atomic<std::uint64_t> destination{0};  ///< 0: free
    std::atomic<State> state{State::Opening};
    std::atomic<jack_port_t*> port{nullptr};
  };
  /// In front of the bytes in `input`.
  struct InputHeader {
    std::uint64_t time = 0;  ///< monotonic nanoseconds
    std::uint32_t size = 0;
    std::uint32_t port = 0;  ///< 0: in port, 1: virtual destination
  };
  static constexpr std::size_t kInputBytes = std::size_t{1} << 18U;

  explicit JackRoad(Counter& dropped);

  // Senders, any thread.

  /// The destination's slot, claimed if it has none yet; kSlots when all are taken.
  [[nodiscard]] std::size_t slotOf(std::uint64_t destination) noexcept;
  /// False when too much waits.
  [[nodiscard]] bool push(const OutgoingMidi& toSlot) noexcept { return ring_.push(toSlot); }
  /// Nothing waits any more, and what was written is a whole cycle old.
  [[nodiscard]] bool delivered() const noexcept;

  // The thread that keeps the client, while no cycle runs.

  void attach(jack_client_t* client, std::int64_t clockOffset) noexcept;
  /// Drops what waits. Counted.
  void discard() noexcept;

  /// JACK's real-time thread.
  static int process(jack_nframes_t frames, void* road);

  std::array<Slot, kSlots> slots;
  std::array<std::atomic<jack_port_t*>, 2> inputs{};
  ByteRing input{kInputBytes};
  Wake inputWake;
  Counter& dropped;

 private:
  static constexpr std::uint16_t kNone = std::numeric_limits<std::uint16_t>::max();
  static constexpr std::size_t kNodes = 16384;

  struct Node {
    OutgoingMidi message;
    std::uint16_t next = kNone;
  };
  struct List {
    std::uint16_t first = kNone;
    std::uint16_t last = kNone;
  };
  /// A cycle in JACK's microseconds.
  struct Cycle {
    jack_nframes_t frames = 0;
    jack_nframes_t start = 0;
    std::uint64_t begins = 0;
    std::uint64_t ends = 0;
  };

  [[nodiscard]] Cycle cycleOf(jack_nframes_t frames) const noexcept;
  void run(jack_nframes_t frames) noexcept;
  void hear(const Cycle& cycle) noexcept;
  void takeIn() noexcept;
  void append(List& list, std::uint16_t node) noexcept;
  void insertByTime(List& list, std::uint16_t node) noexcept;
  void releaseFirst(List& list) noexcept;
  void writeSlot(std::size_t slot, const Cycle& cycle) noexcept;
  /// Offset in the cycle, or `frames` when it is due later.
  [[nodiscard]] jack_nframes_t offsetOf(std::uint64_t due, const Cycle& cycle) const noexcept;

  SendRing<OutgoingMidi, 8192> ring_;
  std::atomic<std::size_t> waiting_{0};  ///< in the lists below
  std::atomic<unsigned> idleCycles_{0};

  // The real-time thread's; the keeper's while no cycle runs.
  jack_client_t* client_ = nullptr;
  std::int64_t clockOffset_ = 0;  ///< monotonic - JACK's, microseconds
  std::array<Node, kNodes> nodes_{};
  std::uint16_t free_ = kNone;
  std::array<List, kSlots> now_{};
  std::array<List, kSlots> later_{};
};

}  // namespace ovka
