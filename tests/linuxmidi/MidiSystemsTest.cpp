#include <algorithm>
#include <cerrno>
#include <cstdio>

#include "LiveMidi.h"
#include "MidiGrounds.h"

namespace {

using namespace ovka::testing;
using namespace std::chrono_literals;

struct Play {
  Listener listener;
  Child player;

  explicit Play(const Ground& ground)
      : listener(ground),
        player(
            {MIDI_PLAYER, ground.system, ground.endpoint(listener.client, "OVKA"), "OVKA player"}) {
    const std::string greeting = player.line();
    REQUIRE_MESSAGE(greeting.starts_with("ready "), greeting);
    guard = std::stoi(greeting.substr(6));
    REQUIRE(player.ask("find") == "0");
  }
  pid_t guard = -1;
};

/// True when the ground is there; prints why not.
bool there(const Ground& ground) {
  if (ground.missing.empty()) return true;
  std::printf("skipped: %s\n", ground.missing.c_str());
  return false;
}

void everyKindArrives(const Ground& ground) {
  if (!there(ground)) return;
  Play play(ground);
  const auto expected = everyKindOfMessage();

  CHECK(play.player.ask("kinds") == "0");
  CHECK(comesTrue([&] { return play.listener.heard.count(1) >= expected.size(); }));
  CHECK(play.listener.heard.bytes(1) == expected);
  CHECK(play.listener.heard.count(0) == 0);

  // Published, it reaches those who listen, at their in port.
  const std::string source = ground.endpoint("OVKA player", "from OVKA");
  auto& transport = *play.listener.transport;
  REQUIRE(comesTrue([&] { return idOf(transport.sources(), source) != 0; }));
  const std::uint64_t before = transport.changes();
  REQUIRE(transport.connectSource(idOf(transport.sources(), source)) == 0);
  std::this_thread::sleep_for(500ms);
  CHECK(play.player.ask("publish") == "0");
  CHECK(comesTrue([&] { return play.listener.heard.count(0) >= expected.size(); }));
  CHECK(play.listener.heard.bytes(0) == expected);
  CHECK(play.listener.heard.count(1) == expected.size());

  // Its own endpoints are not offered to it; those of a program that ends go.
  CHECK(idOf(transport.destinations(), ground.endpoint(play.listener.client, "OVKA")) == 0);
  CHECK(idOf(transport.destinations(), ground.endpoint("OVKA player", "OVKA")) != 0);
  play.player.say("quit");
  CHECK(comesTrue([&] { return idOf(transport.sources(), source) == 0; }));
  CHECK(transport.changes() > before);
  CHECK(transport.connectSource(4711) == ENOENT);
  CHECK(transport.dropped() == 0);
}

void burstArrives(const Ground& ground) {
  if (!there(ground)) return;
  constexpr std::size_t kMessages = 5000;
  Play play(ground);
  CHECK(play.player.ask("burst " + std::to_string(kMessages)) == "0");
  CHECK(comesTrue([&] { return play.listener.heard.count(1) >= kMessages; }));
  const auto heard = play.listener.heard.bytes(1);
  REQUIRE(heard.size() == kMessages);
  std::size_t wrong = 0;
  for (std::size_t i = 0; i < kMessages; ++i) wrong += heard[i] != burstMessage(i) ? 1 : 0;
  CHECK(wrong == 0);
}

bool contains(const std::vector<MidiBytes>& all, const MidiBytes& one) {
  return std::find(all.begin(), all.end(), one) != all.end();
}

/// The guard's children are init's; gone is when nobody answers, or nothing but an entry is left.
bool gone(pid_t process) {
  if (::kill(process, 0) != 0) return true;
  Child state({"sh", "-c", "cut -d' ' -f3 /proc/" + std::to_string(process) + "/stat 2>/dev/null"});
  const std::string letter = state.line();
  return letter.empty() || letter == "Z";
}

void guardEndsNotes(const Ground& ground) {
  if (!there(ground)) return;
  struct Row {
    const char* what;
    int death;
    bool ends;
  };
  const Row rows[] = {{"killed", SIGKILL, true}, {"crashed", SIGSEGV, true}, {"orderly", 0, false}};
  for (const Row& row : rows) {
    CAPTURE(std::string(row.what));
    Play play(ground);
    auto& heard = play.listener.heard;
    REQUIRE(play.player.ask("hold") == "0");
    REQUIRE(comesTrue([&] { return heard.count(1) >= heldNotes().size(); }));
    // What a terminal and a shutdown send to every process must not reach it.
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) ::kill(play.guard, signal);
    std::this_thread::sleep_for(100ms);
    REQUIRE_FALSE(gone(play.guard));
    if (row.ends) {
      play.player.end(row.death);
      const MidiBytes last{0xBF, 123, 0};
      CHECK(comesTrue([&] { return contains(heard.bytes(1), last); }));
    } else {
      play.player.say("quit");
    }
    CHECK(comesTrue([&] { return gone(play.guard); }));
    const auto all = heard.bytes(1);
    for (const auto& [channel, note] : heldNotes()) {
      CAPTURE(channel);
      CAPTURE(note);
      const MidiBytes off{static_cast<std::uint8_t>(0x80U | channel),
                          static_cast<std::uint8_t>(note), 0};
      CHECK(contains(all, off) == row.ends);
    }
    if (!row.ends) CHECK(all.size() == heldNotes().size());
  }
}

TEST_CASE("JACK: every kind of message arrives byte for byte") {
  everyKindArrives(jackGround(true));
}
TEST_CASE("ALSA: every kind of message arrives byte for byte") {
  everyKindArrives(alsaGround());
}
TEST_CASE("JACK: a burst arrives whole and in order") {
  burstArrives(jackGround(true));
}
TEST_CASE("ALSA: a burst arrives whole and in order") {
  burstArrives(alsaGround());
}
TEST_CASE("JACK: the guard ends what sounds when the player dies") {
  guardEndsNotes(jackGround(true));
}
TEST_CASE("ALSA: the guard ends what sounds when the player dies") {
  guardEndsNotes(alsaGround());
}

TEST_CASE("where no system is there, one that comes later is found when MIDI is restarted") {
  Ground ground{"JACK", ":", "", std::make_unique<JackServer>(false)};
  ovka::LiveMidi midi;
  ovka::LiveMidiChoice choice;
  choice.waits = true;
  choice.synthesizer = false;
  const auto& transports = midi.choose(choice).transports;
  if (midi.systems()[0].available || midi.systems()[1].available) {
    CHECK(transports.size() == 1);
    std::printf("skipped: a MIDI system is there already\n");
    return;
  }
  REQUIRE(transports.size() == midi.systems().size());
  if (!ground.server->start()) {
    std::printf("skipped: no jackd on this machine (package jackd2)\n");
    return;
  }
  ovka::MidiTransport& jack = *transports[1];
  CHECK_FALSE(jack.connected());
  CHECK(jack.open({}, {}) == 0);
  CHECK(jack.connected());
  jack.close();
}

TEST_CASE("a system that is not there says what to do") {
  ::setenv("JACK_DEFAULT_SERVER", "ovka-no-such-server", 1);
  const auto systems = ovka::openMidiTransports("all");
  REQUIRE(systems.size() == 2);
  CHECK(systems[0].name == "ALSA sequencer");
  CHECK(systems[1].name == "JACK");
  for (const auto& system : systems) {
    CHECK(system.available == system.trouble.reason.empty());
    CHECK((system.transport != nullptr) == system.available);
    CHECK((system.available || !system.trouble.mend.empty()));
  }
  CHECK_FALSE(systems[1].available);
  if (auto jack = ovka::makeMidiTransport("JACK")) {
    CHECK(jack->open({}, {}) == ENOENT);
    CHECK(jack->explanation().find("no JACK server is running") != std::string::npos);
    CHECK_FALSE(jack->connected());
    CHECK(jack->send(1, 0, MidiBytes{0x90, 1, 1}) == ENODEV);
    CHECK(jack->send(1, 0, MidiBytes{0x90, 1}) == EINVAL);
    CHECK(jack->destinations().empty());
  }
}

}  // namespace
