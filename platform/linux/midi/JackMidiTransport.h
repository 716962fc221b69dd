#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <thread>
#include <vector>

#include "MidiTransport.h"

namespace ovka {

class JackKeeper;
struct JackStatus;

/// A JACK server, jackd's or PipeWire's; which one says JACK_DEFAULT_SERVER. A server is never
/// started.
///
/// JACK knows no sending to a destination: the first one chosen gets the port "OVKA MIDI out port",
/// the next "OVKA MIDI out port 2" and so on, up to 63; they are made when the first message comes,
/// and connected. A colon in a name becomes a space, as it parts client and port in JACK; a client
/// name in use gets "-01" from the server. An endpoint is called as JACK calls it, "client:port",
/// and keeps its id over the server's death. An empty name of the in port or a virtual endpoint: it
/// is not made.
///
/// A message takes effect at the beginning of the next cycle, one with a time stamp at its sample.
/// At most 512 a cycle leave a port, the rest follows in the next ones.
///
/// Threads: "jackMidi" makes all calls of the library and looks for a server that went, once a
/// second; readers are called on "jackMidiIn"; both outlive close() when a server that hangs keeps
/// them, without ever calling a reader again. open() and close() wait for it for some seconds.
class JackMidiTransport final : public MidiTransport {
 public:
  JackMidiTransport();
  ~JackMidiTransport() override { JackMidiTransport::close(); }
  JackMidiTransport(const JackMidiTransport&) = delete;
  JackMidiTransport& operator=(const JackMidiTransport&) = delete;

  std::string name() const override { return "JACK"; }
  int open(const MidiNames& names, const MidiReaders& readers) override;
  std::string explanation() const override { return explanation_; }
  std::vector<MidiEndpoint> destinations() override;
  std::vector<MidiEndpoint> sources() override;
  std::vector<MidiDevice> devices() override;
  int connectSource(std::uint64_t source) override;
  int send(std::uint64_t destination, std::uint64_t timeStamp,
           std::span<const std::uint8_t> message) override;
  int received(std::uint64_t timeStamp, std::span<const std::uint8_t> message) override;
  void rescan() override;
  std::uint64_t changes() const override;
  bool connected() const override;
  std::uint64_t dropped() const override;
  void close() override;

 private:
  [[nodiscard]] int push(std::size_t slot, std::uint64_t timeStamp,
                         std::span<const std::uint8_t> message);

  std::string explanation_;
  const std::shared_ptr<JackStatus> status_;
  std::shared_ptr<JackKeeper> keeper_;  ///< shared with its threads
  std::thread keeping_;
  std::thread reading_;
};

}  // namespace ovka
