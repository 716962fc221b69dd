#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "MidiTransport.h"
#include "RenderScore.h"
#include "Synthesizer.h"

namespace ovka {

/// A MIDI system whose destinations write into a score. Nothing comes in. One thread.
class RenderTransport final : public MidiTransport {
 public:
  /// Destinations: the port numbers of set-ups, but the last, which is the synthesizer's.
  static constexpr std::uint64_t kDestinations = 23;

  /// `score` outlives it.
  explicit RenderTransport(RenderScore& score) : score_(score) {}

  [[nodiscard]] std::string name() const override { return "MIDI file"; }
  [[nodiscard]] int open(const MidiNames& names, const MidiReaders& readers) override;
  [[nodiscard]] std::string explanation() const override { return {}; }
  /// "MIDI port 1" to "MIDI port 23".
  [[nodiscard]] std::vector<MidiEndpoint> destinations() override;
  [[nodiscard]] std::vector<MidiEndpoint> sources() override { return {}; }
  [[nodiscard]] std::vector<MidiDevice> devices() override { return {}; }
  [[nodiscard]] int connectSource(std::uint64_t source) override;
  /// Time stamps do not count: a score knows its own time.
  [[nodiscard]] int send(std::uint64_t destination, std::uint64_t timeStamp,
                         std::span<const std::uint8_t> message) override;
  /// Nobody listens besides the destination that got the message as well.
  [[nodiscard]] int received(std::uint64_t timeStamp,
                             std::span<const std::uint8_t> message) override;
  void rescan() override {}
  [[nodiscard]] std::uint64_t changes() const override { return 0; }
  [[nodiscard]] bool connected() const override { return open_; }
  [[nodiscard]] std::uint64_t dropped() const override { return dropped_; }
  void close() override { open_ = false; }

 private:
  RenderScore& score_;
  bool open_ = false;
  std::uint64_t dropped_ = 0;
};

/// The synthesizer of a rendering as the engine sees it: starting and stopping it leaves the
/// rendering as it is. One thread.
class RenderSynthesizer final : public Synthesizer {
 public:
  /// `score` outlives it.
  explicit RenderSynthesizer(RenderScore& score) : score_(score) {}

  [[nodiscard]] std::string name() const override { return "rendering"; }
  [[nodiscard]] int start() override;
  [[nodiscard]] std::string explanation() const override { return {}; }
  [[nodiscard]] bool started() const override { return started_; }
  void message(std::span<const std::uint8_t> bytes) override;
  void silence() override { score_.silence(); }
  void stop() override { started_ = false; }

 private:
  RenderScore& score_;
  bool started_ = false;
};

}  // namespace ovka
