#include <doctest/doctest.h>
#include <random>

#include "MidiBench.h"

using namespace ovka;
using ovka::testing::Bytes;
using ovka::testing::MidiBench;

namespace {

using Sent = std::vector<std::pair<int, Bytes>>;

/// The bookkeeping as it is told, over plain maps.
class PlainBooks {
 public:
  Sent sent;

  void on(int note, int velocity, int setup, int channel, int port) {
    put({0x90, channel, note, velocity}, port);
    onRecord[{note, setup, channel, port}] = true;
  }
  void off(int note, int setup, int channel, int port) {
    if (!onRecord[{note, setup, channel, port}]) return;
    put({0x80, channel, note, 0}, port);
    onRecord[{note, setup, channel, port}] = false;
  }
  void offOn(int note, int velocity, int setup, int channel, int port, int noten) {
    int& old = noteOld[setup * 1152 + channel * 72 + port * 3 + noten];
    if (noten > 9 || old != note) {
      put({0x80, channel, old, 0}, port);
      onRecord[{old, setup, channel, port}] = false;
      put({0x90, channel, note, velocity}, port);
    }
    old = note;
    onRecord[{note, setup, channel, port}] = true;
  }
  void onOff(int note, int velocity, int setup, int channel, int port, int noten) {
    if (noten <= 9 && noteOld[setup * 1152 + channel * 72 + port * 3 + noten] == note) return;
    put({0x90, channel, note, velocity}, port);
    put({0x80, channel, note, 0}, port);
    onRecord[{note, setup, channel, port}] = false;
  }
  std::map<std::tuple<int, int, int, int>, bool> onRecord;

 private:
  void put(const std::array<int, 4>& m, int port) {
    if (port > 1) return;  // no destination there
    sent.push_back({port, Bytes{static_cast<std::uint8_t>(m[0] | m[1]),
                                static_cast<std::uint8_t>(m[2]), static_cast<std::uint8_t>(m[3])}});
  }
  std::map<int, int> noteOld;
};

}  // namespace

TEST_CASE("every message: bytes, clamps, and what is printed of it") {
  MidiBench b;
  MidiEngine& e = b.start();
  using M = MidiEngine&;
  const struct {
    void (*ask)(M);
    Sent sent{};
    const char* printed = "";
  } cases[] = {
      {[](M m) { m.WriteVNote(60, 1, 100, 0, 2, 0, 0); }, {{0, {0x92, 60, 100}}}},
      {[](M m) { m.WriteVNote(60, 0, 100, 0, 2, 0, 0); }, {{0, {0x82, 60, 0}}}},
      {[](M m) { m.MidiOutOn(128, 300, 500, 20, 0, 0); }, {{0, {0x9F, 127, 127}}}},
      {[](M m) { m.MidiOutOn(-1, -5, -1, -3, 0, 0); }, {{0, {0x90, 0, 0}}}},
      {[](M m) { m.MidiControlChange(7, 300, 0, 20, 0, 0); }, {{0, {0xBF, 7, 127}}}, "BF 07 7F \n"},
      {[](M m) { m.MidiCpitch(-9, 0, 3, 0, 0); }, {{0, {0xE3, 0, 0}}}, "E3 00 00 \n"},
      {[](M m) { m.MidiCprogram(200, 0, 1, 0, 0); }, {{0, {0xC1, 127}}}, "C1 7F \n"},
      {[](M m) { m.MidiOutOn(60, 1, 0, 0, 99, 0); }},  // no port
      {[](M m) { m.MidiOutOffOn(60, 1, 0, 0, INT32_MIN, -7, 0); }},
      {[](M m) { m.MidiStart(0), m.MidiCont(0), m.MidiStop(0), m.MidiShutDown(); }},
  };
  for (const auto& c : cases) {
    CAPTURE(&c - cases);
    c.ask(e);
    CHECK(b.sent() == c.sent);
    e.tick();
    CHECK(b.printed.take() == c.printed);
  }
  for (Shared<std::int32_t>* off : {&midi::MIDIuseX, &midi::coreMidi}) {
    *off = 0;
    for (const auto& c : cases) c.ask(e);
    CHECK(b.sent().empty());
    *off = 1;
  }
}

TEST_CASE("a set-up that changes its channel or port leaves no note behind") {
  MidiBench b;
  MidiEngine& e = b.start();
  e.MidiOutOn(60, 1, 3, 0, 0, 0);
  e.MidiOutOn(61, 1, 3, 15, 1, 0);
  e.MidiOutOn(60, 1, 4, 5, 0, 0);
  b.transport.forget();
  e.endNotesOf(3);
  CHECK(b.sent() == Sent{{0, {0x80, 60, 0}}, {1, {0x8F, 61, 0}}});
  e.endNotesOf(3);
  CHECK(b.sent().empty());
  CHECK(b.transport.sounding().size() == 1);
}

TEST_CASE("the last port also goes out on the virtual source, and its notes end there too") {
  MidiBench b({"A", "B", "C"});
  MidiEngine& e = b.start();
  e.MidiOutOn(60, 1, 0, 0, 2, 0);
  e.MidiControlChange(1, 2, 0, 0, 1, 0);
  CHECK(b.published() == std::vector<Bytes>{{0x90, 60, 1}});
  CHECK(b.sent().size() == 2);
  // A fourth destination comes: the listener would wait for its Note Off in vain.
  b.transport.addDestination("D");
  e.tick();
  CHECK(b.published() == std::vector<Bytes>{{0x80, 60, 0}});
  CHECK(b.sent().empty());
}

TEST_CASE("time: the wall clock once, then without jumps; stamps as they are") {
  MidiBench b;
  MidiEngine& e = b.start();
  b.time.advance(std::chrono::microseconds(1'500'007));
  CHECK(e.mtimeatMIDIs() == 1'700'000'001.0 + 500'007 * 1e-6);
  e.MidiOutOn(60, 1, 0, 0, 0, 0);
  midi::TimeStampON = 1;
  e.MidiOutOn(60, 1, 0, 0, 0, 0);
  CHECK(b.transport.sent()[0].timeStamp == 0);
  CHECK(b.transport.sent()[1].timeStamp == 1'700'000'001);
}

TEST_CASE("random requests: the same bytes as the plain books, and silence after a shutdown") {
  MidiBench b;
  MidiEngine& e = b.start();
  PlainBooks plain;
  std::mt19937 random(20240501);
  const auto pick = [&](const std::vector<int>& from) { return from[random() % from.size()]; };
  // Few values, so that slots meet; the corners of the tables among them.
  const std::vector<int> notes{0, 1, 60, 63, 64, 127};
  const std::vector<int> setups{0, 1, 126, 127};
  const std::vector<int> channels{0, 1, 14, 15};
  const std::vector<int> ports{0, 1, 5, 23};
  const std::vector<int> slots{0, 1, 2, 9, 10, 12, 127};
  for (int i = 0; i < 20'000; ++i) {
    const int note = pick(notes), setup = pick(setups), channel = pick(channels);
    const int port = pick(ports), noten = pick(slots), velocity = pick(notes);
    const auto which = random() % 4;
    if (which == 0) e.MidiOutOn(note, velocity, setup, channel, port, 0);
    if (which == 0) plain.on(note, velocity, setup, channel, port);
    if (which == 1) e.MidiOutOff(note, setup, channel, port, 0);
    if (which == 1) plain.off(note, setup, channel, port);
    if (which == 2) e.MidiOutOffOn(note, velocity, setup, channel, port, noten, 0);
    if (which == 2) plain.offOn(note, velocity, setup, channel, port, noten);
    if (which == 3) e.MidiOutOnOff(note, velocity, setup, channel, port, noten, 0);
    if (which == 3) plain.onOff(note, velocity, setup, channel, port, noten);
  }
  CHECK(b.sent() == plain.sent);
  for (const auto& [key, on] : plain.onRecord) {
    const auto [note, setup, channel, port] = key;
    if (e.onRecord(note, setup, channel, port) != on) FAIL_CHECK("onRecord differs");
  }
  CHECK(!b.transport.sounding().empty());
  for (const int setup : setups) {
    for (const int channel : channels) {
      for (const int port : ports) {
        for (int note = 0; note < 128; ++note) e.MidiOutOff(note, setup, channel, port, 0);
      }
    }
  }
  CHECK(b.transport.sounding().empty());
  CHECK(!e.sounding().anySounds());
}
