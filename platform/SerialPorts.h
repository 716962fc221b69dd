#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace ovka {

/// Outcome of one serial step.
struct SerialResult {
  /// The descriptor, byte count or line bits asked for; 0 where there is none.
  std::int64_t value = 0;
  /// 0 when done, else an errno.
  int error = 0;
};

/// What waiting for input found.
enum class SerialWait : std::uint8_t { Ready, TimedOut, HungUp };

/// The line attributes that the system looks at or changes. An adapter keeps the rest of a line's
/// attributes itself and restores them all on close.
struct SerialAttributes {
  std::int32_t inputSpeed = 0;     ///< baud
  std::int32_t outputSpeed = 0;    ///< baud
  std::uint32_t controlFlags = 0;  ///< SerialControl bits
};

/// Control flags as the system ORs them in; the adapter maps them to its driver's.
namespace SerialControl {
inline constexpr std::uint32_t kCS8 = 1U << 0U;  ///< eight data bits
inline constexpr std::uint32_t kPARODD = 1U
                                         << 1U;  ///< odd parity, without effect while parity is off
inline constexpr std::uint32_t kCCTS_OFLOW = 1U << 2U;  ///< output flow control by CTS
inline constexpr std::uint32_t kCRTS_IFLOW = 1U << 3U;  ///< input flow control by RTS
}  // namespace SerialControl

/// Modem line bits, in the values the system prints.
namespace SerialLines {
inline constexpr int kDTR = 2;
inline constexpr int kRTS = 4;
inline constexpr int kCTS = 32;
inline constexpr int kDSR = 256;
}  // namespace SerialLines

/// A serial device as enumeration finds it.
struct SerialDevice {
  std::string path;    ///< the path to open; the stable name where the system has one
  std::string name;    ///< what to show a person ("FTDI FT232R USB UART")
  std::string device;  ///< the kernel's own path ("/dev/ttyUSB0")
};

/// Serial lines, one call an opening step. No call prints or throws; each may be called from any
/// thread, but a descriptor is closed only when no other call uses it.
///
/// A control that the driver does not have (a pseudo-terminal has no modem lines) counts as done;
/// one that exists and fails reports its errno.
class SerialPorts {
 public:
  virtual ~SerialPorts() = default;

  /// Devices in a stable order. `error` (when not null) receives 0 or the errno of a failed
  /// look-up.
  [[nodiscard]] virtual std::vector<SerialDevice> devices(int* error) = 0;

  /// The group that may use a device ("dialout"); empty when unknown.
  [[nodiscard]] virtual std::string ownerGroup(const std::string& path) {
    static_cast<void>(path);
    return {};
  }

  /// Opens read-write, non-blocking, without becoming the controlling terminal. A path that is no
  /// terminal gives ENOTTY.
  [[nodiscard]] virtual SerialResult open(const std::string& path) = 0;
  [[nodiscard]] virtual SerialResult claimExclusive(int descriptor) = 0;
  [[nodiscard]] virtual SerialResult clearNonBlocking(int descriptor) = 0;
  /// Reads the attributes, keeps them for close, and readies the line: it starts raw, so every byte
  /// value passes both ways unchanged.
  [[nodiscard]] virtual SerialResult getAttributes(int descriptor,
                                                   SerialAttributes& attributes) = 0;
  /// Applies speed and control flags at once. value: the input speed that the line really runs at
  /// (baud), 0 when the driver does not tell.
  [[nodiscard]] virtual SerialResult setAttributes(int descriptor,
                                                   const SerialAttributes& attributes) = 0;
  [[nodiscard]] virtual SerialResult assertDTR(int descriptor) = 0;
  [[nodiscard]] virtual SerialResult clearDTR(int descriptor) = 0;
  /// Sets the modem lines to `lines` (SerialLines bits).
  [[nodiscard]] virtual SerialResult setHandshakeLines(int descriptor, int lines) = 0;
  /// value: the modem lines. A driver without them reports what was set last.
  [[nodiscard]] virtual SerialResult getHandshakeLines(int descriptor) = 0;
  [[nodiscard]] virtual SerialResult setReadLatency(int descriptor, int microseconds) = 0;
  /// A speed beyond the standard list. value: as setAttributes.
  [[nodiscard]] virtual SerialResult setSpeed(int descriptor, int baud) = 0;

  /// Waits for input; a timeout of 0 only looks.
  [[nodiscard]] virtual SerialWait waitReadable(int descriptor, int timeoutMilliseconds) = 0;
  /// Reads what is there, at most the span's size. value 0 with error 0: the far end is gone.
  [[nodiscard]] virtual SerialResult read(int descriptor, std::span<std::uint8_t> bytes) = 0;
  /// Writes all of `bytes` within a bounded time (ETIMEDOUT when the far end does not take them).
  [[nodiscard]] virtual SerialResult write(int descriptor, std::span<const std::uint8_t> bytes) = 0;
  /// Waits, for a bounded time, until the output has left.
  [[nodiscard]] virtual SerialResult drain(int descriptor) = 0;
  /// Restores the attributes kept by getAttributes and closes.
  virtual void close(int descriptor) = 0;
};

}  // namespace ovka
