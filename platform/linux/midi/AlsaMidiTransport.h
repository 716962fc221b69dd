#pragma once

#include <alsa/asoundlib.h>
#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <thread>
#include <vector>

#include "AlsaWriter.h"
#include "EndpointTable.h"
#include "MidiTransport.h"
#include "Shared.h"

namespace ovka {

/// The kernel's MIDI sequencer: one client holds both ports and both virtual endpoints.
///
/// Messages go straight to the chosen port; the out port is connected to it besides, because the
/// kernel opens a device only for a connection. An endpoint is called "client name: port name", a
/// second one of that name gets " #2". Messages are written by the thread "alsaMidiOut", readers
/// are called on "alsaMidiIn". An empty name of the two virtual endpoints or the in port: it is not
/// made. The sequencer cannot go away while it is in use, so it counts as connected until close().
class AlsaMidiTransport final : public MidiTransport {
 public:
  AlsaMidiTransport() = default;
  ~AlsaMidiTransport() override { AlsaMidiTransport::close(); }
  AlsaMidiTransport(const AlsaMidiTransport&) = delete;
  AlsaMidiTransport& operator=(const AlsaMidiTransport&) = delete;

  std::string name() const override { return "ALSA sequencer"; }
  int open(const MidiNames& names, const MidiReaders& readers) override;
  std::string explanation() const override;
  std::vector<MidiEndpoint> destinations() override { return destinations_.endpoints(); }
  std::vector<MidiEndpoint> sources() override { return sources_.endpoints(); }
  std::vector<MidiDevice> devices() override;
  int connectSource(std::uint64_t source) override;
  int send(std::uint64_t destination, std::uint64_t timeStamp,
           std::span<const std::uint8_t> message) override;
  int received(std::uint64_t timeStamp, std::span<const std::uint8_t> message) override;
  void rescan() override;
  std::uint64_t changes() const override { return changes_; }
  bool connected() const override { return open_; }
  std::uint64_t dropped() const override { return static_cast<std::uint64_t>(dropped_.get()); }
  void close() override;

 private:
  [[nodiscard]] int makePorts(const MidiNames& names);
  [[nodiscard]] int fail(int error, const char* step);
  [[nodiscard]] int push(std::uint64_t destination, std::uint64_t timeStamp,
                         std::span<const std::uint8_t> message);
  /// Reads the list of endpoints anew. Any thread of ours.
  void enumerate();
  void listen();
  void hear();

  std::string explanation_;
  std::atomic<bool> open_{false};
  std::atomic<std::uint64_t> changes_{0};
  Counter dropped_;
  EndpointTable destinations_;
  EndpointTable sources_;

  snd_seq_t* sequencer_ = nullptr;
  int inPort_ = -1;
  int virtualDestination_ = -1;
  int announcements_ = -1;
  AlsaWriter::Ports outs_;
  MidiReaders readers_;
  std::mutex enumerating_;
  int stopEvent_ = -1;
  snd_midi_event_t* decoder_ = nullptr;
  std::unique_ptr<AlsaWriter> writer_;
  std::thread listener_;
};

}  // namespace ovka
