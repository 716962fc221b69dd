#pragma once

#include <alsa/asoundlib.h>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <limits>
#include <memory>
#include <set>
#include <thread>

#include "EndpointTable.h"
#include "OutgoingMidi.h"
#include "SendRing.h"
#include "Shared.h"
#include "Wake.h"

namespace ovka {

/// Hands messages to the sequencer on a thread of its own: the kernel's call may take a lock or
/// wait for a receiver, the senders must not.
class AlsaWriter {
 public:
  /// Destination that stands for everybody who listens to the virtual source.
  static constexpr std::uint64_t kListeners = std::numeric_limits<std::uint64_t>::max();
  struct Ports {
    int out = -1;
    int virtualSource = -1;
  };

  /// All outlive the writer. `changes` grows when the destinations do.
  AlsaWriter(snd_seq_t* sequencer, Ports ports, const EndpointTable& destinations,
             const std::atomic<std::uint64_t>& changes, Counter& dropped);
  /// Sends what waits, for at most kFarewell.
  ~AlsaWriter();
  AlsaWriter(const AlsaWriter&) = delete;
  AlsaWriter& operator=(const AlsaWriter&) = delete;

  /// False when too much waits. Any thread; does not wait, lock or allocate.
  bool push(const OutgoingMidi& message) noexcept;

 private:
  static constexpr std::chrono::milliseconds kFarewell{300};
  /// How long a receiver that takes no more holds the others up, once.
  static constexpr std::chrono::milliseconds kPatience{50};
  static constexpr int kClients = 192;  // the sequencer's own limit

  /// What is known about a receiving client.
  struct Receiver {
    std::size_t budget = 0;  ///< events it surely takes
    std::uint64_t asked = 0;
    bool stuck = false;
  };

  void run();
  void write(const OutgoingMidi& message);
  [[nodiscard]] bool address(const OutgoingMidi& message, snd_seq_event_t& event);
  void schedule(const OutgoingMidi& message, snd_seq_event_t& event);
  /// Opens the way to a device: the kernel drops what is sent to one that nobody is connected to.
  void connect(std::uint32_t address);
  [[nodiscard]] bool hasRoom(int client);
  [[nodiscard]] bool hand(snd_seq_event_t& event);
  [[nodiscard]] int queue();
  [[nodiscard]] bool pause(std::chrono::steady_clock::time_point until) const;

  snd_seq_t* sequencer_;
  Ports ports_;
  const EndpointTable& destinations_;
  const std::atomic<std::uint64_t>& changes_;
  Counter& dropped_;
  SendRing<OutgoingMidi, 16384> ring_;
  Wake wake_;
  std::atomic<bool> stop_{false};
  std::atomic<std::chrono::steady_clock::rep> farewell_{0};

  // The writing thread's.
  snd_midi_event_t* coder_ = nullptr;
  int descriptor_ = -1;
  int queue_ = -1;
  bool noQueue_ = false;
  std::set<std::uint32_t> connected_;
  std::uint64_t connectedAt_ = 0;
  std::array<Receiver, kClients> receivers_{};

  std::thread thread_;
};

}  // namespace ovka
