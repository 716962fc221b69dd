#include <chrono>
#include <cstdio>
#include <doctest/doctest.h>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "BufferVariables.h"
#include "CapturedPrint.h"
#include "LinuxAddressSpace.h"
#include "LiveSession.h"
#include "PlainLineRules.h"
#include "ReplaySession.h"

using namespace ovka;

namespace {

using testing::PlainLineRules;
using Bytes = PlainLineRules::Bytes;

std::vector<Bytes> blocksAfterGreeting(const std::string& path) {
  FileSource source;
  REQUIRE(source.open(path) == 0);
  CaptureReader reader(source);
  REQUIRE(reader.begin());
  std::vector<Bytes> blocks;
  CaptureRecord record;
  long greeting = 0;
  while (reader.next(record)) {
    if (record.head.kind != CaptureKind::Block) continue;
    if (greeting < 2) {
      for (const std::uint8_t byte : record.payload) greeting += byte == '\r' ? 1 : 0;
      continue;
    }
    blocks.emplace_back(record.payload.begin(), record.payload.end());
  }
  REQUIRE_MESSAGE(reader.error().empty(), reader.error());
  return blocks;
}

/// Batches of four reads, as the port thread hands them on; the opening may have decoded the first
/// block at once.
PlainLineRules rulesOver(const std::vector<Bytes>& blocks, std::size_t decodedAtOnce) {
  PlainLineRules rules;
  for (std::size_t i = 0; i < decodedAtOnce; ++i) rules.takeBlock(blocks[i]);
  for (std::size_t i = decodedAtOnce; i + 4 <= blocks.size(); i += 4) {
    Bytes batch;
    for (std::size_t k = i; k < i + 4; ++k)
      batch.insert(batch.end(), blocks[k].begin(), blocks[k].end());
    rules.takeBlock(batch);
  }
  return rules;
}

std::int32_t code24(const Bytes& line, std::size_t at) {
  return line[at] * 65536 + line[at + 1] * 256 + line[at + 2];
}

/// What a 24-bit code becomes in the buffer, without offsets and gains.
std::int32_t stored24(std::int32_t code) {
  return static_cast<std::int32_t>((code - 0x800000) * 1.25);
}

bool storeHolds(SampleStore& store, const std::vector<Bytes>& samples) {
  if (buffer::ploop != static_cast<std::int64_t>(samples.size())) return false;
  constexpr std::array<std::int32_t, 5> kChannelAt{1, 2, 3, 4, 0};
  for (std::size_t n = 0; n < samples.size(); ++n) {
    for (std::size_t c = 0; c < 5; ++c) {
      const std::int32_t value = store.storedValue(kChannelAt[c], static_cast<std::int64_t>(n));
      if (value != stored24(code24(samples[n], 3 * c))) return false;
    }
  }
  return true;
}

struct Recording {
  std::string path = "nothing-lost-" +
                     std::to_string(std::chrono::steady_clock::now().time_since_epoch().count()) +
                     ".cap";
  ~Recording() { std::remove(path.c_str()); }
};

LiveChoice sequenceAt1920(const std::string& capture) {
  LiveChoice choice;
  choice.demo = true;
  choice.amplifier.signal = SignalKind::Sequence;
  choice.capture = capture;
  choice.assignments = {"SelectDevice=6", "DeviceConfig=3", "SampleSpeed=1920"};
  return choice;
}

/// Runs a live session for a while, then holds store and counters against the plain rules over the
/// bytes that were received.
void checkLiveAgainstRules(const LiveChoice& choice, std::chrono::seconds duration) {
  const testing::CapturedPrint quiet;
  LiveSession session;
  const LiveSession::Opened opened = session.open(choice);
  REQUIRE_MESSAGE(opened.explanation.empty(), opened.explanation);
  std::this_thread::sleep_for(duration);
  CHECK(session.close() == "");
  CHECK(session.captureLostBlocks() == 0);

  const std::vector<Bytes> blocks = blocksAfterGreeting(choice.capture);
  REQUIRE(blocks.size() > 8);
  PlainLineRules rules = rulesOver(blocks, 0);
  Engine& engine = session.engine();
  if (!storeHolds(engine.store(), rules.samples)) rules = rulesOver(blocks, 1);
  CHECK(storeHolds(engine.store(), rules.samples));
  CHECK(engine.losses().wrongLengthLines.get() == rules.wrongLength);
  CHECK(engine.losses().longLines.get() == rules.tooLong);
  CHECK(engine.losses().stagingBytes.get() == 0);
  const auto expected = static_cast<double>(1920 * duration.count());
  CHECK(static_cast<double>(rules.samples.size()) > 0.7 * expected);
}

}  // namespace

TEST_CASE("60 s at 1920 samples/s: every frame that the line rules keep is stored, in order") {
  const Recording recording;
  checkLiveAgainstRules(sequenceAt1920(recording.path), std::chrono::seconds(60));
}

TEST_CASE("the same with dropped, doubled and corrupted bytes, stalls and bursts") {
  const Recording recording;
  LiveChoice choice = sequenceAt1920(recording.path);
  choice.amplifier.faults.dropRate = 0.0005;
  choice.amplifier.faults.duplicateRate = 0.0005;
  choice.amplifier.faults.corruptRate = 0.0005;
  choice.amplifier.faults.burstsPerMinute = 20;
  checkLiveAgainstRules(choice, std::chrono::seconds(10));
}

TEST_CASE("fixed framing loses no frame, and a replay gives the same samples") {
  const Recording recording;
  std::vector<std::int32_t> live;
  {
    const testing::CapturedPrint quiet;
    LiveChoice choice = sequenceAt1920(recording.path);
    choice.assignments.emplace_back("FixedFramingX=1");
    LiveSession session;
    const LiveSession::Opened opened = session.open(choice);
    REQUIRE_MESSAGE(opened.explanation.empty(), opened.explanation);
    std::this_thread::sleep_for(std::chrono::seconds(5));
    CHECK(session.close() == "");
    SampleStore& store = session.engine().store();
    const std::int64_t points = buffer::ploop;
    CHECK(points > 1920 * 4);
    for (std::int64_t n = 0; n < points; ++n) live.push_back(store.storedValue(1, n));
    for (std::size_t n = 1; n < live.size(); ++n) {
      // The sequence counts up by one code a frame.
      REQUIRE(live[n] - live[n - 1] >= 1);
      REQUIRE(live[n] - live[n - 1] <= 2);
    }
    CHECK(session.engine().losses().wrongLengthLines.get() == 0);
  }
  const testing::CapturedPrint quiet;
  const auto holdsTheSame = [&live](SampleStore& store) {
    bool same = buffer::ploop == static_cast<std::int64_t>(live.size());
    for (std::size_t n = 0; n < live.size() && same; ++n)
      same = store.storedValue(1, static_cast<std::int64_t>(n)) == live[n];
    return same;
  };
  {
    LinuxAddressSpace space;
    ReplaySession replay(space);
    REQUIRE(replay.open(recording.path, {}).explanation.empty());
    replay.run();
    CHECK(replay.damage() == "");
    CHECK(holdsTheSame(replay.engine().store()));
  }
  // At its own speed; at its end the session pauses.
  const auto start = std::chrono::steady_clock::now();
  LiveChoice choice;
  choice.replay = recording.path;
  LiveSession session;
  const LiveSession::Opened opened = session.open(choice);
  REQUIRE_MESSAGE(opened.explanation.empty(), opened.explanation);
  const auto elapsed = [&start] { return std::chrono::steady_clock::now() - start; };
  while (!session.replayEnded() && elapsed() < std::chrono::seconds(60))
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  CHECK(session.replayEnded());
  CHECK(elapsed() > std::chrono::milliseconds(4500));
  CHECK(buffer::setPauseX == 1);
  CHECK(session.replayDamage() == "");
  CHECK(session.close() == "");
  CHECK(holdsTheSame(session.engine().store()));
}

TEST_CASE("a capture that cannot be replayed says why, a cut one ends early and says so") {
  const testing::CapturedPrint quiet;
  const Recording recording;
  {
    LiveChoice choice = sequenceAt1920(recording.path);
    LiveSession session;
    REQUIRE(session.open(choice).explanation.empty());
    std::this_thread::sleep_for(std::chrono::milliseconds(1200));
    CHECK(session.close() == "");
  }
  LiveChoice choice;
  for (const auto& [path, text] : {std::pair<std::string, std::string>{"none.cap", "cannot read"},
                                   {"/dev/null", "not a capture"}}) {
    choice.replay = path;
    LiveSession session;
    const LiveSession::Opened opened = session.open(choice);
    CHECK(opened.problem == LiveSession::Problem::File);
    CHECK(opened.explanation.find(text) != std::string::npos);
  }
  std::filesystem::resize_file(recording.path, std::filesystem::file_size(recording.path) - 1000);
  choice.replay = recording.path;
  LiveSession session;
  REQUIRE(session.open(choice).explanation.empty());
  for (int i = 0; i < 3000 && !session.replayEnded(); ++i)
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  CHECK(session.replayDamage().find("cut off at byte") != std::string::npos);
  CHECK(buffer::ploop > 1000);
}
