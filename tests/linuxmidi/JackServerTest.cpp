#include <atomic>
#include <cerrno>
#include <cstdio>

#include "MidiGrounds.h"
#include "OutgoingMidi.h"

namespace {

using namespace ovka::testing;
using namespace std::chrono_literals;

bool there(const Ground& ground) {
  if (ground.missing.empty()) return true;
  std::printf("skipped: %s\n", ground.missing.c_str());
  return false;
}

std::unique_ptr<ovka::MidiTransport> openSender() {
  auto sender = ovka::makeMidiTransport("JACK");
  REQUIRE(sender->open({}, {}) == 0);
  return sender;
}

std::uint64_t await(ovka::MidiTransport& sender, const std::string& name) {
  std::uint64_t id = 0;
  CHECK(comesTrue([&] { return (id = idOf(sender.destinations(), name)) != 0; }));
  return id;
}

TEST_CASE("JACK: others see the ports under their names, connected once they are used") {
  const Ground ground = jackGround(true);
  if (!there(ground)) return;
  Listener listener(ground);
  const auto sender = openSender();
  const std::string name = ground.endpoint(listener.client, "OVKA");
  const std::uint64_t destination = await(*sender, name);
  REQUIRE(sender->send(destination, 0, MidiBytes{0x90, 1, 1}) == 0);
  CHECK(comesTrue([&] { return listener.heard.count(1) == 1; }));
  const std::string seen = Child({"jack_lsp", "-c"}).rest();
  for (const char* port :
       {"OVKA MIDI:OVKA MIDI in port\n", "OVKA MIDI:OVKA\n", "OVKA MIDI:from OVKA\n"}) {
    CAPTURE(seen);
    CHECK(seen.find(port) != std::string::npos);
  }
  CHECK(seen.find("OVKA MIDI:OVKA MIDI out port\n   " + name + "\n") != std::string::npos);
}

TEST_CASE("JACK: a server that dies and returns while notes are played") {
  const Ground ground = jackGround();
  if (!there(ground)) return;
  Listener listener(ground);
  const auto sender = openSender();
  const std::string name = ground.endpoint(listener.client, "OVKA");
  const std::uint64_t destination = await(*sender, name);
  const std::string source = ground.endpoint("OVKA MIDI", "from OVKA");
  auto& hearing = *listener.transport;
  REQUIRE(comesTrue([&] { return idOf(hearing.sources(), source) != 0; }));
  REQUIRE(hearing.connectSource(idOf(hearing.sources(), source)) == 0);
  // A user's own connection, made by hand.
  Child({"jack_connect", source, name}).rest();
  std::this_thread::sleep_for(1s);

  std::atomic<bool> stop{false};
  std::thread player([&] {
    for (std::size_t n = 0; !stop; ++n, std::this_thread::sleep_for(1ms)) {
      static_cast<void>(sender->send(destination, 0, burstMessage(n)));
      static_cast<void>(sender->received(0, burstMessage(n)));
    }
  });
  for (const int death : {SIGKILL, SIGTERM}) {
    CAPTURE(death);
    const std::uint64_t before = sender->changes();
    CHECK(comesTrue([&] { return listener.heard.count(1) > 20; }));
    ground.server->end(death);
    CHECK(comesTrue([&] { return !sender->connected() && !hearing.connected(); }));
    CHECK(comesTrue([&] { return sender->dropped() > 20; }));
    CHECK(comesTrue([&] { return sender->changes() > before; }));
    CHECK(sender->destinations().empty());
    REQUIRE(ground.server->start());
    CHECK(comesTrue([&] { return sender->connected() && hearing.connected(); }));
    // The same id, and the connections that were.
    const std::size_t direct = listener.heard.count(1);
    const std::size_t published = listener.heard.count(0);
    CHECK(comesTrue([&] { return listener.heard.count(1) > direct + 50; }));
    CHECK(comesTrue([&] { return listener.heard.count(0) > published + 50; }));
    CHECK(idOf(sender->destinations(), name) == destination);
    const auto joined = [&] {
      return Child({"jack_lsp", "-c", source}).rest().find(name) != std::string::npos;
    };
    CHECK(comesTrue(joined));
    std::this_thread::sleep_for(1s);
  }
  stop = true;
  player.join();
}

TEST_CASE("JACK: a time stamp ahead is kept to the sample, one of another clock means now") {
  const Ground ground = jackGround(true);
  if (!there(ground)) return;
  Listener listener(ground);
  const auto sender = openSender();
  const std::uint64_t destination = await(*sender, ground.endpoint(listener.client, "OVKA"));
  REQUIRE(sender->send(destination, 1'750'000'000, MidiBytes{0xC0, 1}) == 0);  // seconds of 1970
  REQUIRE(sender->send(destination, ~std::uint64_t{0}, MidiBytes{0xC0, 2}) == 0);
  REQUIRE(comesTrue([&] { return listener.heard.count(1) == 2; }));

  // Within three samples at one of many tries: a loaded machine delays whole cycles.
  constexpr std::int64_t kStep = 3'000'000;
  constexpr std::int64_t kSample = 1'000'000'000 / 48'000;
  bool exact = false;
  for (int attempt = 0; attempt < 60 && !exact; ++attempt) {
    const std::size_t before = listener.heard.count(1);
    const std::uint64_t due = ovka::monotonicNanoseconds() + 100'000'000;
    REQUIRE(sender->send(destination, due + kStep, MidiBytes{0x90, 2, 1}) == 0);
    REQUIRE(sender->send(destination, due, MidiBytes{0x90, 1, 1}) == 0);
    REQUIRE(sender->send(destination, 0, MidiBytes{0x90, 0, 1}) == 0);
    REQUIRE(comesTrue([&] { return listener.heard.count(1) == before + 3; }));
    CHECK(ovka::monotonicNanoseconds() >= due);
    const auto heard = listener.heard.virtualDestination();
    for (std::size_t i = 0; i < 3; ++i) CHECK(heard[before + i].bytes[1] == i);
    const auto stamp = [&](std::size_t i) {
      return static_cast<std::int64_t>(heard[before + i].timeStamp);
    };
    exact = std::abs(stamp(2) - stamp(1) - kStep) <= 3 * kSample &&
            std::abs(stamp(1) - static_cast<std::int64_t>(due)) <= 3 * kSample;
  }
  CHECK(exact);
}

TEST_CASE("JACK: a server that hangs keeps nobody waiting") {
  const Ground ground = jackGround();
  if (!there(ground)) return;
  Listener listener(ground);
  const auto sender = openSender();
  const std::uint64_t destination = await(*sender, ground.endpoint(listener.client, "OVKA"));
  ground.server->signal(SIGSTOP);
  int refused = 0;
  for (std::size_t n = 0; n < 40'000; ++n) {
    refused += sender->send(destination, 0, burstMessage(n)) == EAGAIN ? 1 : 0;
  }
  CHECK(refused > 0);
  CHECK(sender->dropped() >= static_cast<std::uint64_t>(refused));
  auto late = ovka::makeMidiTransport("JACK");
  CHECK(late->open({}, {}) == ETIMEDOUT);
  sender->close();
  ground.server->signal(SIGCONT);
}

}  // namespace
