#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace ovka {

/// A destination or source of the machine's MIDI system.
struct MidiEndpoint {
  std::uint64_t id = 0;  ///< never 0; the same endpoint keeps it until the MIDI system goes
  std::string name;
};

/// A device of the machine's MIDI system; texts are empty where the system knows none.
struct MidiDevice {
  std::string name;
  std::string manufacturer;
  std::string model;
};

/// Receives a packet list: a 4-byte packet count, then per packet an 8-byte time stamp, a 2-byte
/// length and that many data bytes, all in the machine's byte order. Called on a thread of the
/// transport that may lock and allocate.
using MidiReadProc = void (*)(const std::uint8_t* packetList, void* readContext,
                              void* sourceContext);

/// What a client calls itself and its own endpoints. An endpoint or port without a name is not
/// made.
struct MidiNames {
  std::string client = "OVKA MIDI";
  std::string inPort = "OVKA MIDI in port";
  std::string outPort = "OVKA MIDI out port";
  std::string virtualDestination = "OVKA";  ///< other programs can send to it
  std::string virtualSource = "from OVKA";  ///< other programs can listen to it
};

/// Who hears what comes in.
struct MidiReaders {
  MidiReadProc inPort = nullptr;              ///< from the connected sources
  MidiReadProc virtualDestination = nullptr;  ///< sent by other programs to our own endpoint
  void* context = nullptr;                    ///< handed to both; outlives close()
};

/// A MIDI system: one client with its ports and virtual endpoints. `send` and `received` may be
/// called from any thread, but not while open() or close() runs; they never block, lock against the
/// system's real-time thread or allocate. The rest is called by one thread at a time. A system that
/// goes away while open is looked for again by the transport itself until close(); meanwhile sends
/// are dropped and counted.
class MidiTransport {
 public:
  virtual ~MidiTransport() = default;
  /// For the user: "ALSA sequencer", "JACK".
  [[nodiscard]] virtual std::string name() const = 0;
  /// 0 or an errno; explanation() then says what failed.
  [[nodiscard]] virtual int open(const MidiNames& names, const MidiReaders& readers) = 0;
  /// One line for a person about the last failure, with what to do; empty when there was none.
  [[nodiscard]] virtual std::string explanation() const = 0;
  /// Endpoints of other programs and devices, in the system's own order; never our own.
  [[nodiscard]] virtual std::vector<MidiEndpoint> destinations() = 0;
  [[nodiscard]] virtual std::vector<MidiEndpoint> sources() = 0;
  [[nodiscard]] virtual std::vector<MidiDevice> devices() = 0;
  /// Devices known to the system but not connected to this machine; most systems have none.
  [[nodiscard]] virtual std::vector<MidiDevice> externalDevices() { return {}; }
  /// Lets the in port hear a source. 0 or an errno.
  [[nodiscard]] virtual int connectSource(std::uint64_t source) = 0;
  /// Sends one whole message of 1 to 3 bytes from the out port to one destination. A time stamp is
  /// nanoseconds of the monotonic clock; 0 means now, as does one in the past or another clock's
  /// far ahead. Destination 0 goes nowhere. 0 or an errno; a message that was refused is dropped
  /// and counted (EAGAIN: the system takes no more at the moment, ENODEV: the system is away,
  /// ENXIO: the destination is; EINVAL: not a whole message, not counted).
  [[nodiscard]] virtual int send(std::uint64_t destination, std::uint64_t timeStamp,
                                 std::span<const std::uint8_t> message) = 0;
  /// Publishes one message on the virtual source, as if a device had sent it.
  [[nodiscard]] virtual int received(std::uint64_t timeStamp,
                                     std::span<const std::uint8_t> message) = 0;
  /// Asks the system to look for devices again.
  virtual void rescan() = 0;
  /// Grows whenever an endpoint comes or goes, or the system itself does. Any thread.
  [[nodiscard]] virtual std::uint64_t changes() const = 0;
  /// Whether the system is there at the moment. Any thread.
  [[nodiscard]] virtual bool connected() const = 0;
  /// Messages dropped since open(). Any thread.
  [[nodiscard]] virtual std::uint64_t dropped() const = 0;
  virtual void close() = 0;
};

}  // namespace ovka
