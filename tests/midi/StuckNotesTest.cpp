#include <cstdlib>
#include <doctest/doctest.h>
#include <new>
#include <random>

#include "LinuxThreadLauncher.h"
#include "MidiBench.h"
#include "MidiGuard.h"

using namespace ovka;
using ovka::testing::Bytes;
using ovka::testing::MidiBench;

TEST_CASE("a destination goes and returns: port numbers stay, its notes are ended on return") {
  for (const bool newId : {false, true}) {
    CAPTURE(newId);
    MidiBench b({"A", "B", "C"});
    MidiEngine& e = b.start();
    e.MidiOutOn(60, 1, 0, 2, 0, 0);
    e.MidiOutOn(61, 1, 0, 2, 2, 0);
    b.transport.forget();
    b.transport.vanish("A", newId);
    e.tick();
    CHECK(midi::findPortCountE == 3);
    CHECK(e.owedNoteOffs() == 1);
    e.MidiOutOn(62, 1, 0, 2, 2, 0);
    CHECK(b.sent().size() == 1);  // C is still port 2
    e.MidiOutOff(60, 0, 2, 0, 0);
    e.MidiOutOn(65, 1, 0, 2, 0, 0);  // into the void: nothing to end later
    e.MidiOutOff(65, 0, 2, 0, 0);
    CHECK(b.sent().empty());

    const std::uint64_t id = b.transport.addDestination("A");
    e.tick();
    CHECK(e.owedNoteOffs() == 0);
    REQUIRE(b.transport.sent().size() == 1);
    CHECK(b.transport.sent()[0].destination == id);
    CHECK(b.transport.sent()[0].bytes == Bytes{0x82, 60, 0});
    b.transport.addDestination("D");  // a new one comes behind the last
    e.tick();
    CHECK(e.convertPortNameToInt("D") == 3);
  }
}

TEST_CASE("a whole MIDI system goes and returns") {
  MidiBench b;
  MidiEngine& e = b.start();
  e.MidiOutOn(60, 1, 0, 0, 0, 0);
  e.MidiOutOn(61, 1, 0, 0, 1, 0);
  b.transport.setConnected(false);
  e.MidiOutOff(60, 0, 0, 0, 0);  // before anybody noticed
  e.tick();
  CHECK(e.refused().get() == 1);
  b.transport.setConnected(true);
  e.tick();
  CHECK(b.transport.sounding().empty());
}

TEST_CASE("a Note Off that is refused is sent later, unless the note was started again") {
  MidiBench b;
  MidiEngine& e = b.start();
  e.MidiOutOn(60, 1, 0, 0, 0, 0);
  e.MidiOutOn(61, 1, 0, 0, 0, 0);
  b.transport.sendResult = EAGAIN;
  e.MidiOutOff(60, 0, 0, 0, 0);
  e.MidiOutOff(61, 0, 0, 0, 0);
  e.MidiOutOn(62, 1, 0, 0, 0, 0);  // refused: never sounded
  e.tick();
  b.transport.sendResult = 0;
  e.MidiOutOn(61, 1, 0, 0, 0, 0);
  b.transport.forget();
  e.tick();
  CHECK(b.sent() == std::vector<std::pair<int, Bytes>>{{0, {0x80, 60, 0}}});
  CHECK(b.transport.sounding().size() == 1);
}

TEST_CASE("switches turned off while notes sound: the slow tick ends them") {
  for (Shared<std::int32_t>* off : {&midi::MIDIuseX, &midi::coreMidi}) {
    MidiBench b;
    MidiEngine& e = b.start();
    e.MidiOutOn(60, 1, 0, 0, 0, 0);
    *off = 0;
    e.MidiOutOff(60, 0, 0, 0, 0);
    CHECK(b.transport.sounding().size() == 1);
    e.tick();
    CHECK(b.transport.sounding().empty());
  }
}

TEST_CASE("panic reaches every destination that was used, and only those") {
  MidiBench b({"A", "B", "C"}, true);
  MidiEngine& e = b.start();
  e.MidiOutOn(60, 1, 0, 0, 0, 0);
  e.MidiOutOn(60, 1, 0, 5, 1, 0);
  e.MidiOutOff(60, 0, 5, 1, 0);
  b.transport.forget();
  midi::MIDIuseX = 0;
  e.panic();
  const auto sent = b.sent();
  CHECK(sent.size() == 1 + 2 * 32);
  CHECK(sent[0] == std::pair<int, Bytes>{0, {0x80, 60, 0}});
  CHECK(sent[1].second == Bytes{0xB0, 123, 0});
  CHECK(sent[2].second == Bytes{0xB0, 120, 0});
  CHECK(sent.back() == std::pair<int, Bytes>{1, {0xBF, 120, 0}});
  CHECK(b.synthesizer.silences() == 1);
  CHECK(!e.onRecord(60, 0, 0, 0));
}

TEST_CASE("the table of sounding notes is a plain block that another process understands") {
  alignas(SoundingNotes) static unsigned char memory[sizeof(SoundingNotes)];
  CHECK(SoundingNotes::at(memory) == nullptr);
  MidiBench b({"Keys"}, true);
  b.parts.sounding = SoundingNotes::make(memory);
  MidiEngine& e = b.start();
  e.MidiOutOn(127, 1, 0, 15, 0, 0);
  const SoundingNotes* seen = SoundingNotes::at(memory);
  REQUIRE(seen != nullptr);
  std::string found;
  seen->forEach([&](std::size_t row, unsigned channel, unsigned note) {
    found += std::string(seen->row(row).transport) + "/" + seen->row(row).destination + "/" +
             std::to_string(channel) + "/" + std::to_string(note);
    CHECK(seen->row(row).id.load() == b.ids[0]);
  });
  CHECK(found == "recording/Keys/15/127");
  e.close();
  CHECK(!seen->anySounds());
}

TEST_CASE("the guard ends notes 2 s after the last beat, and only then") {
  MidiBench b;
  MidiEngine& e = b.start();
  MidiGuard guard(e, b.time);
  guard.run(b.time);
  e.MidiOutOn(60, 1, 0, 0, 0, 0);
  e.MidiOutOn(61, 1, 0, 0, 1, 0);
  b.transport.vanish("B");
  e.tick();
  b.time.advance(std::chrono::seconds(10));
  CHECK(b.transport.sounding().size() == 2);  // nobody beats: a test note
  for (int i = 0; i < 50; ++i) {
    guard.beat();
    b.time.advance(std::chrono::milliseconds(100));
  }
  CHECK(guard.rescues() == 0);
  b.time.advance(std::chrono::milliseconds(1700));
  CHECK(guard.rescues() == 0);
  b.time.advance(std::chrono::milliseconds(400));
  CHECK(guard.rescues() == 1);
  CHECK(b.transport.sounding().size() == 1);  // B's waits for its return
  CHECK(!e.onRecord(60, 0, 0, 0));
  b.time.advance(std::chrono::seconds(10));
  CHECK(guard.rescues() == 1);
}

TEST_CASE("requests of several threads amid restarts, changes and panics: no note stays") {
  MidiBench b({"A", "B", "C"}, true);
  MidiEngine& e = b.start();
  e.log().setOn(true);
  std::atomic<int> running{3};
  LinuxThreadLauncher threads;
  for (int t = 0; t < 3; ++t) {
    threads.once("player", [&e, &running, t] {
      std::mt19937 random(static_cast<unsigned>(t));
      const auto under = [&](int n) { return static_cast<std::int32_t>(random() % n); };
      for (int i = 0; i < 4000; ++i) {
        const std::int32_t setup = under(128), channel = under(16), port = under(5);
        e.because({MidiCause::Source::Test, setup, t, i});
        e.MidiOutOn(under(128), 1 + under(127), setup, channel, port, 1);
        e.MidiOutOffOn(under(128), under(128), setup, channel, port, under(20), 1);
        e.MidiOutOff(under(128), setup, channel, port, 1);
        e.MidiControlChange(under(128), 5, setup, channel, port, 1);
      }
      --running;
    });
  }
  for (int i = 0; running > 0; ++i) {
    if (i % 2 == 0) b.transport.vanish("B");
    if (i % 2 == 1) b.transport.addDestination("B");
    e.tick();
    if (i % 5 == 0) e.panic();
    if (i % 7 == 0) e.restart();
    e.log().drain([](std::string_view) {});
    static_cast<void>(b.printed.take());
    static_cast<void>(e.portNames());
  }
  threads.stopAll();
  b.transport.vanish("B");
  b.transport.addDestination("B");
  e.tick();
  e.close();
  CHECK(b.transport.sounding().empty());
  CHECK(b.synthesizer.sounding().empty());
  CHECK(!e.sounding().anySounds());
}
