#include <cmath>
#include <doctest/doctest.h>
#include <random>

#include "LatencyMeter.h"
#include "MidiBench.h"
#include "MidiInput.h"
#include "MidiTimeStamp.h"
#include "PacketLists.h"

using namespace ovka;
using ovka::testing::Bytes;
using ovka::testing::MidiBench;
using ovka::testing::packetList;

namespace {

struct Polls final : PortPolling {
  void getFromPortNew() override { ++count; }
  void getFromPort2New() override {}
  void getFromPort3New() override {}
  void getFromPort4New() override {}
  void putToData() override {}
  int count = 0;
};

}  // namespace

TEST_CASE(
    "incoming MIDI: a re-stamped copy reaches the main thread, when there is somewhere to go") {
  MidiBench b({"A"});
  Polls polls;
  std::vector<Bytes> heard;
  MidiInput input(b.time, polls, [&](const MidiMessage& m) { heard.push_back(m.bytes); });
  MidiEngine& e = b.start();
  midi::gChannel = 5;
  const auto original = packetList({{0x90, 60, 100, 0xF8, 61, 0}, {0xF0, 1, 0xF7, 0xC1, 7}});
  auto list = original;
  b.transport.feedInPort(list);
  b.transport.feedVirtualDestination(list);
  CHECK(list == original);
  CHECK(heard.empty());
  b.time.advance({});
  const std::vector<Bytes> once{{0x95, 60, 100}, {0x95, 61, 0}, {0xC5, 7}};
  CHECK(heard.size() == 6);
  CHECK(std::vector<Bytes>(heard.begin(), heard.begin() + 3) == once);
  CHECK(polls.count == 2);
  CHECK(b.transport.sent().empty());  // nothing is forwarded

  // No destination at the current channel's port: only the virtual destination is heard.
  e.SetChannel(3);
  midi::inputPortX.set(3, 7);
  heard.clear();
  b.transport.feedInPort(list);
  b.transport.feedVirtualDestination(list);
  b.time.advance({});
  CHECK(heard == once);
  e.close();
  MidiEngine::MyReadProcV(list.data(), &e, nullptr);
  heard.clear();
  b.time.advance({});
  CHECK(heard.empty());
}

TEST_CASE("the parser takes any bytes and gives whole messages only") {
  Polls polls;
  ChannelVoiceParser parser(polls);
  const struct {
    Bytes data;
    std::vector<Bytes> messages;
  } cases[] = {
      {{1, 2, 0x90, 60}, {}},
      {{0x90, 60, 1, 62, 2, 64}, {{0x90, 60, 1}, {0x90, 62, 2}}},
      {{0xC3, 5, 6, 0xD3, 7}, {{0xC3, 5}, {0xC3, 6}, {0xD3, 7}}},
      {{0x90, 60, 0xB0, 1, 2}, {{0xB0, 1, 2}}},
      {{0x90, 60, 1, 0xF2, 1, 2, 3, 4}, {{0x90, 60, 1}}},
      {{0xE0, 0xFE, 0, 0xF8, 64}, {{0xE0, 0, 64}}},
  };
  for (const auto& c : cases) {
    std::vector<Bytes> got;
    for (const MidiMessage& m : parser.messagesForPacket({9, c.data})) got.push_back(m.bytes);
    CHECK(got == c.messages);
  }
  std::mt19937 random(7);
  for (int i = 0; i < 2000; ++i) {
    Bytes data(random() % 40);
    for (auto& byte : data) byte = static_cast<std::uint8_t>(random());
    for (const MidiMessage& m : parser.messagesForPacket({0, data})) {
      const bool two = (m.bytes[0] & 0xE0) == 0xC0;
      CHECK(m.bytes.size() == (two ? 2U : 3U));
      CHECK((m.bytes[0] >= 0x80 && m.bytes[0] < 0xF0 && m.bytes[1] < 0x80));
    }
  }
}

TEST_CASE("time stamps of any number of seconds") {
  CHECK(timeStampOf(1.9) == 1);
  CHECK(timeStampOf(9223372036854775808.0) == std::uint64_t{1} << 63U);
  CHECK(timeStampOf(9223372036854777856.0) == (std::uint64_t{1} << 63U) + 2048);
  CHECK(timeStampOf(1e300) == UINT64_MAX);
  CHECK(timeStampOf(-1.0) == 0);
  CHECK(timeStampOf(std::nan("")) == 0);
}

TEST_CASE("the log tells what was sent, why, when and where to, and counts what it lost") {
  MidiBench b({"A \"1\"\n\xFF"}, true);
  MidiEngine& e = b.start();
  e.MidiOutOn(1, 1, 0, 0, 0, 0);  // off by default
  e.log().setOn(true);
  b.time.advance(std::chrono::microseconds(1250));
  e.because({MidiCause::Source::Band, 3, 1, 4711});
  e.MidiOutOn(60, 100, 3, 2, 0, 0);
  b.transport.sendResult = 11;
  e.because({});
  e.MidiCprogram(5, 0, 0, 0, 0);
  std::vector<std::string> lines;
  const auto collect = [&](std::string_view line) { lines.emplace_back(line); };
  CHECK(e.log().drain(collect) == 2);
  REQUIRE(lines.size() == 2);
  CHECK(lines[0] ==
        R"({"time_ns":1250000,"wall":"2023-11-14T22:13:20.001250Z","cause":"band","setup":3,)"
        R"("band":1,"sample":4711,"port":0,"to":"A \"1\"\u000a\ufffd","stamp":0,)"
        R"("bytes":[146,60,100],"error":0})");
  CHECK(lines[1].find(R"("cause":"none","setup":null,"band":null,"sample":null,"port":0)") !=
        std::string::npos);
  CHECK(lines[1].find(R"("bytes":[192,5],"error":11})") != std::string::npos);

  b.transport.sendResult = 0;
  const std::size_t more = MessageLog::kEntries + 10;
  for (std::size_t i = 0; i < more; ++i) e.MidiControlChange(1, 2, 0, 0, 0, 0);
  lines.clear();
  CHECK(e.log().drain(collect) == MessageLog::kEntries + 1);
  CHECK(lines.back() == R"({"dropped":10})");
  CHECK(e.log().drain(collect) == 0);
}

TEST_CASE("the latency histogram agrees with the sorted times to a part in 32") {
  LatencyMeter meter;
  CHECK(meter.median() == 0);
  std::mt19937_64 random(3);
  std::vector<std::int64_t> times{0, -5, INT64_MAX};
  for (int i = 0; i < 5000; ++i) {
    times.push_back(static_cast<std::int64_t>(random() >> (1 + random() % 63)));
  }
  for (std::int64_t& time : times) {
    meter.record(time);
    time = std::max<std::int64_t>(time, 0);
  }
  std::ranges::sort(times);
  CHECK(meter.count() == times.size());
  CHECK(meter.max() == INT64_MAX);
  for (const double part : {0.0, 0.5, 0.95, 0.99, 1.0}) {
    const auto rank = static_cast<std::size_t>(std::ceil(part * static_cast<double>(times.size())));
    const std::int64_t exact = times[rank == 0 ? 0 : rank - 1];
    CHECK(meter.percentile(part) >= exact);
    CHECK(meter.percentile(part) - exact <= exact / 32);
  }
  meter.reset();
  CHECK(meter.count() == 0);
}
