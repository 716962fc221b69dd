#include <algorithm>
#include <chrono>
#include <cstdint>
#include <doctest/doctest.h>
#include <string>
#include <vector>

#include "CapturedPrint.h"
#include "MidiEngine.h"
#include "MidiVariables.h"
#include "RenderSession.h"
#include "SynthBench.h"
#include "TemporaryFolder.h"

using namespace ovka;
using namespace ovka::testing;
using namespace std::chrono_literals;

namespace {

/// A small piece through the real note engine: two destinations, the synthesizer by set-up and by
/// port, a controller, a note that nobody ends.
std::string render(const RenderChoice& choice, std::chrono::nanoseconds step) {
  const CapturedPrint console;
  midi::resetVariables();
  ManualTime time(1'700'000'000'000'000'000);
  time.advance(3s);
  RenderSession session(time);
  if (std::string problem = session.open(choice); !problem.empty()) return problem;
  MidiEngine engine({{&session.transport()}, &session.synthesizer(), nullptr, {}, {}}, time);
  static_cast<void>(engine.mainMidi());
  engine.setGetOutMIDIPort();
  CHECK(engine.portCount() == 24);
  midi::UseQTMIDIX.set(2, 1);
  engine.log().setOn(session.logs());
  const auto line = [&](std::string_view text) { session.logLine(text); };
  int beat = 0;
  time.repeat("music", 125ms, [&] {
    const std::int32_t note = 60 + beat % 12;
    engine.because({MidiCause::Source::Band, 2, beat % 8, 1000 + beat});
    if (beat == 1) engine.MidiCprogram(73, 2, 3, 1, 0);
    if (beat == 2) engine.MidiControlChange(7, 90, 2, 0, 0, 0);
    engine.MidiOutOffOn(note, 100, 2, 0, 0, 127, 1);          // to port 0 and the synthesizer
    if (beat % 4 == 0) engine.MidiOutOn(72, 80, 2, 3, 1, 0);  // never ended by the music
    engine.MidiOutOnOff(40, 90, 2, 9, 23, 127, 0);            // the synthesizer's own port
    ++beat;
  });
  std::chrono::nanoseconds left = 2s;
  std::string problem = session.run([&](std::chrono::nanoseconds most) {
    const auto next = std::min({step, most, left});
    time.advance(next);
    left -= next;
    engine.log().drain(line);
    return left > 0ns;
  });
  engine.close();
  engine.log().drain(line);
  if (problem.empty()) problem = session.finish();
  if (problem.empty()) CHECK(session.length() == 2s);
  return problem;
}

std::size_t count(const std::string& text, const std::string& part) {
  std::size_t found = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
    ++found;
  return found;
}

}  // namespace

TEST_CASE("a rendering is whole, heard, and the same on every run") {
  if (!soundFontHere()) return;
  const TemporaryFolder folder;
  std::vector<std::string> files;
  for (const auto step : {100ms, 33ms}) {
    RenderChoice choice;
    choice.midiFile = folder.at("a.mid");
    choice.soundFile = folder.at("a.wav");
    choice.logFile = folder.at("a.jsonl");
    choice.title = "Piece";
    REQUIRE(render(choice, step) == "");
    for (const std::string& path : {choice.midiFile, choice.soundFile, choice.logFile})
      files.push_back(contentsOf(path));
  }
  for (std::size_t i = 0; i < 3; ++i) CHECK(files[i] == files[i + 3]);

  const std::string& song = files[0];
  CHECK(song.substr(0, 4) == "MThd");
  for (const char* track :
       {"Piece", "MIDI port 1, channel 1", "MIDI port 2, channel 4", "Synthesizer, channel 10"})
    CHECK(count(song, track) == 1);
  // What went to port 1 and the synthesizer at once is there once.
  CHECK(count(song, std::string("\x90\x3E\x64", 3)) == 2);
  // The note that the music left sounding is ended at the end.
  CHECK(count(song, std::string("\x83\x48\x00", 3)) >= 1);

  const std::string& sound = files[1];
  CHECK(sound.size() > 44 + 2 * 48000 * 6);
  CHECK(std::any_of(sound.begin() + 44 + 48000 * 6, sound.end(), [](char c) { return c != 0; }));
  CHECK(count(files[2], "\"cause\":\"band\"") > 40);
  CHECK(count(files[2], "\n") > 40);
}

TEST_CASE("a rendering that cannot be written leaves nothing behind") {
  const TemporaryFolder folder;
  RenderChoice choice;
  choice.midiFile = folder.at("a.mid");
  choice.logFile = folder.at("none/a.jsonl");
  CHECK(render(choice, 100ms).find("none/a.jsonl") != std::string::npos);
  CHECK(std::filesystem::is_empty(folder.path()));
  choice.logFile = "/dev/full";
  CHECK(render(choice, 100ms) != "");
}
