#pragma once

#include <memory>

#include "CapturedPrint.h"
#include "ManualTime.h"
#include "MidiEngine.h"
#include "MidiVariables.h"
#include "RecordingSynthesizer.h"
#include "RecordingTransport.h"

namespace ovka::testing {

using Bytes = std::vector<std::uint8_t>;

/// A note engine over a recording MIDI system and synthesizer, on a manual clock that starts at
/// 2023-11-14 22:13:20 UTC.
struct MidiBench {
  explicit MidiBench(const std::vector<std::string>& destinations = {"A", "B"},
                     bool withSynthesizer = false) {
    midi::resetVariables();
    for (const std::string& name : destinations) ids.push_back(transport.addDestination(name));
    parts.transports = {&transport};
    if (withSynthesizer) parts.synthesizer = &synthesizer;
  }
  ~MidiBench() {
    engine.reset();
    midi::resetVariables();
  }

  /// As the system does, with everything that is printed and played thereby.
  MidiEngine& setUp() {
    engine = std::make_unique<MidiEngine>(parts, time);
    engine->mainMidi();
    engine->setGetOutMIDIPort();
    return *engine;
  }
  MidiEngine& start() {
    setUp();
    static_cast<void>(printed.take());
    synthesizer.forget();
    return *engine;
  }
  /// Messages that reached destinations since the last call: bytes behind the destination's index.
  std::vector<std::pair<int, Bytes>> sent() {
    std::vector<std::pair<int, Bytes>> all;
    for (const SentMidi& message : transport.sent()) {
      const auto found = std::ranges::find(ids, message.destination);
      all.emplace_back(static_cast<int>(found - ids.begin()), message.bytes);
    }
    transport.forget();
    return all;
  }
  /// The same for the virtual source.
  std::vector<Bytes> published() {
    std::vector<Bytes> all;
    for (const SentMidi& message : transport.published()) all.push_back(message.bytes);
    return all;
  }

  CapturedPrint printed;
  ManualTime time{1'700'000'000'000'000'000};
  RecordingTransport transport{"recording", &time};
  RecordingSynthesizer synthesizer;
  std::vector<std::uint64_t> ids;
  MidiEngineParts parts;
  std::unique_ptr<MidiEngine> engine;
};

}  // namespace ovka::testing
