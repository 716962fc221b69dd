#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace ovka {

/// The device's end of a serial line: what an amplifier sees of the host. Used by one thread. No
/// call blocks, prints or throws.
class ByteChannel {
 public:
  virtual ~ByteChannel() = default;
  /// The path under which a host opens the line; empty while hung up.
  [[nodiscard]] virtual std::string path() const = 0;
  /// Whether a host has the line open now.
  [[nodiscard]] virtual bool hostPresent() = 0;
  /// Reads what the host sent, at most the span's size; 0 when there is nothing.
  [[nodiscard]] virtual std::size_t read(std::span<std::uint8_t> bytes) = 0;
  /// Hands over as many bytes as fit and returns their number; the rest is the caller's to drop, as
  /// a UART without flow control would.
  [[nodiscard]] virtual std::size_t write(std::span<const std::uint8_t> bytes) = 0;
  /// Forgets what was written and not yet read, so that the next host starts afresh.
  virtual void discardUnread() = 0;
  /// The device goes away: the host's end reports a hang-up.
  virtual void hangUp() = 0;
  /// The device returns, perhaps under another path. Returns 0 or an errno.
  [[nodiscard]] virtual int comeBack() = 0;
};

}  // namespace ovka
