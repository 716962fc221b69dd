#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>

#include "BoundedRing.h"
#include "NoteOutput.h"

namespace ovka {

/// A message that was handed to a receiver.
struct SentMessage {
  std::int64_t time = 0;        ///< nanoseconds of the clock, since the log's start
  std::uint64_t timeStamp = 0;  ///< the packet's time stamp; 0: now
  MidiCause cause;
  std::int32_t port = -1;  ///< index into the port list; -1: no port (synthesizer, virtual source)
  std::int32_t error = 0;  ///< 0, or the errno with which it was refused
  std::uint8_t size = 0;
  std::array<std::uint8_t, 3> bytes{};
  std::array<char, 96> name{};  ///< the receiver's, cut
};

/// What was sent, when, where to and why: senders push without waiting or allocating, a caller
/// takes the entries as JSON lines. A full log drops the newest and counts them. Off until
/// setOn(true), so that nobody pays for a log that nobody reads.
class MessageLog {
 public:
  static constexpr std::size_t kEntries = 16384;

  /// `wallStart`: nanoseconds since 1970-01-01 UTC at which the entries' time is 0.
  explicit MessageLog(std::int64_t wallStart) : wallStart_(wallStart), ring_(kEntries) {}

  /// Any thread.
  void setOn(bool on) noexcept { on_.store(on, std::memory_order_release); }
  [[nodiscard]] bool on() const noexcept { return on_.load(std::memory_order_acquire); }
  /// Entries that did not fit. Any thread.
  [[nodiscard]] std::uint64_t dropped() const noexcept { return ring_.dropped(); }

  /// One thread at a time.
  void push(const SentMessage& message) noexcept {
    if (on()) ring_.push(message);
  }
  /// Hands every waiting entry to `line` as one line of JSON without its end; then, when entries
  /// were dropped since the last time, one line {"dropped":N}. Returns the lines. Any thread.
  std::size_t drain(const std::function<void(std::string_view)>& line);

  /// The line of an entry: {"time_ns":..,"wall":"..","cause":"band","setup":0,"band":2,
  /// "sample":1234,"port":0,"to":"..","stamp":0,"bytes":[144,60,100],"error":0}; null where there
  /// is no set-up, band, sample or port. `wall` is UTC with microseconds.
  [[nodiscard]] std::string format(const SentMessage& message) const;

 private:
  const std::int64_t wallStart_;
  std::atomic<bool> on_{false};
  BoundedRing<SentMessage> ring_;
  std::mutex drainLock_;  // guards droppedTold_ and the popping side
  std::uint64_t droppedTold_ = 0;
};

}  // namespace ovka
