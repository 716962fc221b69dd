#include <doctest/doctest.h>
#include <random>

#include "JournalBench.h"
#include "JournalRing.h"

using namespace ovka;
using namespace ovka::testing;
using namespace std::chrono_literals;

namespace {

constexpr std::int64_t kCapacity = 40'000;

std::size_t bytesOn(const FakeDisk& disk) {
  std::size_t bytes = 0;
  for (const auto& [path, content] : disk.contents) bytes += content.size();
  return bytes;
}

/// What a power cut leaves, and what the buffer held then.
struct Moment {
  Moment(JournalBench& bench, std::size_t extra)
      : disk(bench.disk.afterPowerCut(extra)), ploop(buffer::ploop) {
    for (std::int64_t point = 0; point < kCapacity; ++point)
      frames.push_back(bench.store.storedValue(0, point));
  }
  FakeDisk disk;
  std::int64_t ploop;
  std::vector<std::int32_t> frames;
};

/// Everything but the newest second must be back as it was, and nothing be called missing.
void checkRecovery(Moment& moment, std::int64_t speed) {
  Recovered back(moment.disk, namesOn(moment.disk));
  CHECK(back.problem == "");
  CHECK(back.session.missingPoints == 0);
  CHECK(back.session.wrapped);
  const std::int64_t position = buffer::ploop;
  CHECK((moment.ploop - position + kCapacity) % kCapacity <= speed);
  std::int64_t wrong = 0;
  for (std::int64_t point = 0; point < kCapacity; ++point) {
    // Between the two positions there is the round before.
    const bool lost = (point - position + kCapacity) % kCapacity <
                      (moment.ploop - position + kCapacity) % kCapacity;
    const std::int32_t frame = moment.frames[static_cast<std::size_t>(point)];
    if (!lost) wrong += back.store.storedValue(0, point) != frame;
    if (!lost) wrong += back.store.storedValue(3, point) != sampleOf(frame, 3);
  }
  CHECK(wrong == 0);
}

}  // namespace

TEST_CASE("a loop takes bounded room, and a kill at any moment leaves the whole round") {
  std::vector<Moment> moments;
  std::size_t greatest = 0;
  double aRound = 0;
  {
    std::mt19937 random(7);
    JournalBench bench(kCapacity);
    buffer::SampleSpeed = 1920;
    buffer::setLoopModeX = 1;
    bench.acquire(40s);
    for (int round = 0; round < 300; ++round) {
      bench.acquire(std::chrono::milliseconds(100 + random() % 700));
      greatest = std::max(greatest, bytesOn(bench.disk));
      if (round % 30 == 0) moments.emplace_back(bench, random() % 300);
    }
    const JournalStatus status = bench.journal.status();
    aRound = static_cast<double>(status.bytes) / static_cast<double>(status.frames) * kCapacity;
    CHECK(status.frames > 6 * kCapacity);
    // In order to its end, the document takes all of it away.
    bench.journal.stop();
    bench.disk.contents["/disk/a.ovkanote"] = "a document";
    CHECK(bench.journal.documentSaved("/disk/a.ovkanote", kCapacity) == 0);
    CHECK(bench.disk.contents.size() == 1);
  }
  CHECK(static_cast<double>(greatest) < 1.5 * aRound);
  for (Moment& moment : moments) checkRecovery(moment, 1920);
}

TEST_CASE("points that looping never reaches do not hold old parts for ever") {
  std::vector<Moment> moments;
  std::size_t most = 0;
  {
    JournalBench bench(kCapacity);
    buffer::SampleSpeed = 1920;
    bench.acquire(5s);  // 9600 points before the loop
    buffer::ploopStart = 8000;
    buffer::setLoopModeX = 1;
    for (int round = 0; round < 150; ++round) {
      bench.acquire(1s);
      most = std::max(most, bench.disk.contents.size());
    }
    moments.emplace_back(bench, 0);
  }
  CHECK(most < 20);
  Recovered back(moments[0].disk, namesOn(moments[0].disk));
  CHECK(back.session.missingPoints == 0);
  for (std::int64_t point = 0; point < 8000; ++point)
    REQUIRE(back.store.storedValue(0, point) == moments[0].frames[static_cast<std::size_t>(point)]);
}

TEST_CASE("going round, whichever call fails, the round is whole afterwards") {
  for (int failFrom = 30; failFrom < 500; failFrom += 23) {
    for (const int failures : {1, 30}) {
      CAPTURE(failFrom);
      CAPTURE(failures);
      std::vector<Moment> moments;
      {
        JournalBench bench(kCapacity);
        buffer::SampleSpeed = 1920;
        buffer::setLoopModeX = 1;
        bench.disk.failFrom = failFrom;
        bench.disk.failures = failures;
        bench.acquire(60s);
        bench.disk.failFrom = 0;
        bench.acquire(8s);
        CHECK(bench.journal.status().error == 0);
        REQUIRE(bench.journal.flush() == 0);
        moments.emplace_back(bench, 0);
      }
      checkRecovery(moments[0], 1920);
    }
  }
}

TEST_CASE("what is only looked at is not journaled, until it is kept") {
  FakeDisk kept;
  {
    JournalBench bench(kCapacity);
    buffer::setRecModeX = 2;
    buffer::setLoopModeX = 1;
    bench.acquire(20s);
    CHECK(bench.disk.contents.empty());
    buffer::setRecModeX = 0;
    buffer::setPauseX = 1;
    bench.journal.takeBuffer(buffer::ploop);
    REQUIRE(bench.journal.flush() == 0);
    kept = bench.disk.afterPowerCut(0);
    bench.journal.takeBuffer(10);  // once
    REQUIRE(bench.journal.flush() == 0);
    CHECK(bench.journal.status().frames == 2400);
  }
  {
    Recovered back(kept, namesOn(kept));
    CHECK(buffer::ploop == 2400);
    CHECK(wrongPoints(back.store, 0, 2400, 1000) == 0);
  }
  // A recording that the system goes on acquiring after its end stays one.
  JournalBench bench;
  bench.acquire(1s);
  buffer::setRecModeX = 2;
  bench.acquire(2s);
  REQUIRE(bench.journal.flush() == 0);
  CHECK(bench.journal.status().frames == 360);
}

TEST_CASE("the ring knows what each part alone holds") {
  JournalRing ring;
  ring.begin(0);
  ring.wrote({0, 100});
  ring.wrote({100, 150});
  ring.wrote({40, 60});
  CHECK(ring.left().size() == 1);
  ring.begin(150);
  ring.wrote({0, 60});
  CHECK(ring.spare() == 0);
  ring.synced({20, 30}, 0);  // of the first part itself
  CHECK(ring.left().size() == 1);
  ring.synced({20, 30}, 1);
  REQUIRE(ring.left().size() == 2);
  CHECK(ring.left()[1].first == 30);
  ring.synced({0, 150}, 1);
  CHECK(ring.spare() == 1);
  CHECK(ring.framesBefore(1) == 150);
  ring.drop(1);
  ring.synced({0, 60}, 1);
  CHECK(ring.newest() == 1);
  CHECK(ring.spare() == 0);  // the newest stays
}
