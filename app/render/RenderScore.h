#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <utility>

#include "Clock.h"
#include "OfflineSynthesizer.h"
#include "StandardMidiFileWriter.h"

namespace ovka {

/// Takes every message that is played, at the time the clock shows: into the MIDI file, one track a
/// receiver and channel, and to the synthesizer. One thread.
class RenderScore {
 public:
  /// Time counts from where `clock` stands. `sound` may be nullptr: nothing is rendered.
  RenderScore(const Clock& clock, StandardMidiFileWriter::Settings settings,
              OfflineSynthesizer* sound);

  /// A message of the MIDI system to a destination of that name. False: no channel message.
  bool toDestination(const std::string& name, std::span<const std::uint8_t> message);
  /// A message to the synthesizer, unless a destination got the same one at this moment.
  void toSynthesizer(std::span<const std::uint8_t> message);
  /// The synthesizer ends every sound.
  void silence();

  /// Nanoseconds since the beginning.
  [[nodiscard]] std::int64_t time() const { return clock_.nanoseconds() - begin_; }
  [[nodiscard]] StandardMidiFileWriter& file() { return file_; }

 private:
  using Bytes = std::array<std::uint8_t, 3>;

  bool add(const std::string& receiver, std::span<const std::uint8_t> message);

  const Clock& clock_;
  std::int64_t begin_;
  StandardMidiFileWriter file_;
  OfflineSynthesizer* sound_;
  std::map<std::pair<std::string, int>, std::size_t> tracks_;
  Bytes last_{};  // to a destination, at lastTime_
  std::int64_t lastTime_ = -1;
};

}  // namespace ovka
