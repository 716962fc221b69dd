#include <doctest/doctest.h>
#include <random>

#include "JournalBench.h"
#include "JournalCursor.h"

using namespace ovka;
using namespace ovka::testing;
using namespace std::chrono_literals;

namespace {

using Ranges = std::vector<std::pair<std::int64_t, std::int64_t>>;

/// The files as they are now, apart from the acquisition that goes on.
FakeDisk copyOf(FakeDisk& disk) {
  return disk.afterPowerCut(std::string::npos / 2);
}

}  // namespace

TEST_CASE("a recording comes back as it was: samples, speed, positions, model, settings") {
  std::vector<std::string> parts;
  FakeDisk disk;
  {
    JournalBench bench;
    buffer::SampleSpeed = 480;
    buffer::SelectDevice = 3;
    buffer::DeviceConfig = 2;
    bench.acquire(3s);
    buffer::setPauseX = 1;
    bench.acquire(1s);
    buffer::setPauseX = 0;
    bench.nextFrame = 1000 + buffer::ploop;  // what the pause overwrote is no part of it
    bench.acquire(2s + 30ms);
    CHECK(bench.sessions().empty());  // it runs
    CHECK(bench.journal.flush() == 0);
    parts = namesOn(bench.disk);
    disk = copyOf(bench.disk);
    CHECK(bench.printed.empty());
  }
  CHECK(parts == std::vector<std::string>{"/disk/20240307-150409-1.part1.ovkajournal"});
  Recovered back(disk, parts);
  CHECK(back.problem == "");
  CHECK(buffer::ploop == 2414);
  CHECK(wrongPoints(back.store, 0, 2414, 1000) == 0);
  CHECK(back.store.storedValue(1, 2414) == 0);
  CHECK(back.store.storedValue(0, 2414) == 49);
  CHECK(buffer::maxploop == 100'000);
  CHECK(buffer::SampleSpeed == 480);
  CHECK(buffer::samplingModeX == 6);
  CHECK(buffer::SelectDevice == 3);
  CHECK(buffer::DeviceConfig == 2);
  CHECK(buffer::setRecModeX == 0);
  CHECK(back.session.missingPoints == 0);
  CHECK(describe(back.session).starts_with("00:00:05, 480 samples a second, 0.0 MB"));
}

TEST_CASE("the cursor names every point that was written") {
  struct Row {
    const char* what;
    JournalPositions before, after;
    Ranges ranges{}, apart{};
  };
  const std::vector<Row> rows{
      {"frames", {10, 0, 100, false, 0}, {15, 0, 100, false, 5}, {{10, 15}}},
      {"a pause", {10, 0, 100, false, 0}, {10, 0, 100, false, 50}},
      {"a person moves", {10, 0, 100, false, 7}, {90, 0, 100, false, 7}},
      {"the end", {95, 0, 100, false, 0}, {100, 0, 100, false, 5}, {{95, 100}}},
      {"a wrap", {90, 20, 100, true, 0}, {21, 20, 100, true, 11}, {{90, 100}, {20, 21}}},
      {"a round", {50, 20, 100, true, 0}, {60, 20, 100, true, 90}, {{60, 100}, {20, 60}}},
      {"back", {5000, 0, 9000, false, 0}, {3, 0, 9000, false, 6}, {{0, 3}}, {{5000, 5070}}},
      {"on", {0, 0, 9000, false, 0}, {8000, 0, 9000, false, 6}, {{7930, 8000}}, {{0, 70}}},
  };
  for (const Row& row : rows) {
    CAPTURE(row.what);
    JournalCursor cursor;
    cursor.reset(row.before);
    const JournalCursor::Found found = cursor.look(row.after);
    const auto pairs = [](const std::vector<PointRange>& from) {
      Ranges to;
      for (const PointRange& range : from) to.emplace_back(range.first, range.end);
      return to;
    };
    CHECK(pairs(found.apart) == row.apart);
    CHECK(pairs(found.ranges) == row.ranges);
  }
  JournalCursor cursor;
  cursor.reset({5000, 0, 9000, false, 0});
  CHECK(cursor.look({100, 0, 100, false, 6}).apart.empty());  // a smaller capacity
}

TEST_CASE("looping, a new capacity and points behind a loaded document are followed") {
  for (const bool grows : {false, true}) {
    CAPTURE(grows);
    FakeDisk disk;
    std::vector<std::int32_t> expected;
    std::int64_t position = 0;
    {
      JournalBench bench(2000);
      for (std::int64_t point = 0; point < 700; ++point) {
        for (std::int32_t channel = 0; channel < 5; ++channel) {
          bench.store.putIntToBuffer(channel, point, -point - channel);
        }
      }
      bench.journal.newRecording();
      buffer::ploop = 700;
      buffer::ploopStart = 500;
      buffer::setLoopModeX = 1;
      bench.acquire(100ms);
      bench.acquire(25s);  // 3000 frames: two wraps of 1500 points
      if (grows) {
        REQUIRE(bench.store.initMalloc(5000));
        bench.store.recCleareX(2000);
        bench.acquire(20s);
      }
      REQUIRE(bench.journal.flush() == 0);
      disk = copyOf(bench.disk);
      position = buffer::ploop;
      for (std::int64_t p = 0; p < (grows ? 5000 : 2000); ++p) {
        for (std::int32_t c = 0; c < 5; ++c) expected.push_back(bench.store.storedValue(c, p));
      }
    }
    Recovered back(disk, namesOn(disk));
    CHECK(buffer::ploop == position);
    CHECK(buffer::ploopStart == 500);
    CHECK(back.session.wrapped);
    CHECK(buffer::setLoopModeX == 1);
    REQUIRE(buffer::maxploop == (grows ? 5000 : 2000));
    std::int64_t wrong = 0;
    for (std::size_t i = 0; i < expected.size(); ++i) {
      const auto point = static_cast<std::int64_t>(i / 5);
      wrong += back.store.storedValue(static_cast<std::int32_t>(i % 5), point) != expected[i];
    }
    CHECK(wrong == 0);
  }
}

TEST_CASE("clearing is honoured, rewritten points and late channels are journaled again") {
  FakeDisk disk;
  {
    JournalBench bench;
    bench.acquire(2s);
    buffer::setPauseX = 1;
    buffer::ploop = 0;
    bench.store.recCleare();
    bench.journal.noteCleared();
    buffer::setPauseX = 0;
    bench.nextFrame = 5000;
    bench.acquire(1s);
    bench.store.putIntToBuffer(2, 40, 4711);
    bench.journal.noteRewritten(40, 41);
    buffer::SelectDevice = 1;
    bench.acquire(1s);
    bench.journal.writeNow();
    bench.store.putIntToBuffer(2, 239, 4712);  // its byte came behind that of channel 1
    REQUIRE(bench.journal.flush() == 0);
    disk = copyOf(bench.disk);
  }
  Recovered back(disk, namesOn(disk));
  CHECK(buffer::ploop == 240);
  CHECK(back.store.storedValue(2, 40) == 4711);
  CHECK(back.store.storedValue(2, 239) == 4712);
  CHECK(wrongPoints(back.store, 0, 240, 5000) == 2);
}

TEST_CASE("a power cut at any moment costs at most a second") {
  std::mt19937 random(1);
  JournalBench bench;
  buffer::SampleSpeed = 960;
  for (int round = 0; round < 60; ++round) {
    bench.acquire(std::chrono::milliseconds(1 + random() % 300));
    const std::int64_t stored = buffer::ploop;
    if (stored < 960) continue;
    FakeDisk left = bench.disk.afterPowerCut(random() % 200);
    FakeLocks dead;
    const auto found = JournalCatalogue(left, dead, bench.folders).sessions(&left.error);
    REQUIRE(found.size() == 1);
    CHECK(found[0].ploop >= stored - 960);
  }
}

TEST_CASE("whichever call fails, recording goes on and nothing is missing afterwards") {
  for (const int failures : {1, 30}) {
    int failFrom = 1;
    for (bool reached = true; reached; ++failFrom) {
      CAPTURE(failures);
      CAPTURE(failFrom);
      FakeDisk disk;
      std::string printed;
      {
        JournalBench bench;
        bench.disk.failFrom = failFrom;
        bench.disk.failures = failures;
        bench.acquire(3s);
        bench.disk.failFrom = std::min(failFrom, bench.disk.calls + 1);
        bench.acquire(3s);
        reached = bench.disk.calls >= failFrom;
        // The disk works again; the journal tries it by itself.
        bench.disk.failFrom = 0;
        bench.acquire(6s);
        CHECK(bench.journal.status().error == 0);
        CHECK(bench.journal.status().waiting < 30);
        bench.acquire(500ms);
        bench.journal.stop();
        printed = bench.printed;
        disk = copyOf(bench.disk);
      }
      REQUIRE(buffer::ploop == 1500);
      Recovered back(disk, namesOn(disk));
      CHECK(back.problem == "");
      CHECK(buffer::ploop == 1500);
      CHECK(wrongPoints(back.store, 0, 1500, 1000) == 0);
      CHECK(std::count(printed.begin(), printed.end(), '\n') <= 2 * failures);
      if (failFrom > 500) FAIL("the calls never end");
    }
    CHECK(failFrom > 20);
  }
}

TEST_CASE("a full disk: one line, then silence, then one line") {
  JournalBench bench;
  bench.disk.room = 20'000;
  bench.acquire(60s);
  CHECK(bench.printed ==
        "Warning: the disk of /disk has 0 MB left, room for 0 minutes of this recording.\n"
        "Error writing the journal /disk/20240307-150409-1.part1.ovkajournal; recording goes on in "
        "memory and the journal is tried again every 5 seconds - No space left on device(28).\n");
  CHECK(bench.journal.status().error == ENOSPC);
  CHECK(bench.journal.status().waiting > 5000);
  bench.printed.clear();
  bench.disk.room = 100'000'000'000;
  bench.acquire(10s);
  CHECK(bench.printed ==
        "The journal of this recording goes on in /disk/20240307-150409-1.part2.ovkajournal.\n");
  CHECK(bench.journal.status().waiting < 30);
  CHECK_FALSE(bench.journal.status().spaceLow);
  bench.journal.stop();
  FakeDisk disk = copyOf(bench.disk);
  Recovered back(disk, namesOn(disk));
  CHECK(wrongPoints(back.store, 0, 8400, 1000) == 0);
}

TEST_CASE("room is warned of in good time, once") {
  JournalBench bench;
  bench.disk.room = 250'000'000;  // 27 hours at 120 frames a second
  bench.acquire(20s);
  CHECK(bench.printed.empty());
  CHECK(bench.journal.status().minutesLeft > 20 * 60);
  buffer::SampleSpeed = 100'000;  // 2 MB a second: 9 minutes less than 3
  bench.acquire(300ms);
  buffer::setPauseX = 1;
  bench.acquire(50ms);
  buffer::setPauseX = 0;
  buffer::ploop = 0;
  bench.time.advance(10s);
  CHECK(bench.printed.find(" MB left, room for ") != std::string::npos);
  CHECK(bench.journal.status().spaceLow);
  const std::string once = bench.printed;
  bench.time.advance(60s);
  CHECK(bench.printed == once);
}

TEST_CASE("files go only when a document holds everything") {
  const std::string document = "/notes/one.ovka";
  JournalBench bench;
  JournalWriter& journal = bench.journal;
  bench.acquire(2s);
  CHECK(journal.documentSaved(document, buffer::ploop) == ENOENT);
  bench.disk.contents[document];
  CHECK(journal.documentSaved(document, buffer::ploop) == ENODATA);
  bench.disk.contents[document] = "{}";

  SUBCASE("saved while recording goes on, the rest never") {
    CHECK(journal.documentSaved(document, buffer::ploop) == 0);
    bench.acquire(1s);
    journal.stop();
    bench.locks.held.clear();
    const auto found = bench.sessions();
    REQUIRE(found.size() == 1);
    CHECK(found[0].endedInOrder);
    CHECK(found[0].savedEnd == 240);
    CHECK(describe(found[0]).find("saved up to 00:00:02 in /notes/one.ovka") != std::string::npos);
  }
  SUBCASE("saved, then ended") {
    CHECK(journal.documentSaved(document, buffer::ploop) == 0);
    buffer::setPauseX = 1;
    bench.acquire(1s);
    CHECK(namesOn(bench.disk).size() == 2);
    journal.newRecording();
    CHECK(namesOn(bench.disk) == std::vector<std::string>{document});
  }
  SUBCASE("a document that was cut short") {
    CHECK(journal.documentSaved(document, buffer::ploop - 1) == 0);
    journal.stop();
    CHECK(journal.documentSaved(document, 239) == 0);
    CHECK(namesOn(bench.disk).size() == 2);
    CHECK(bench.sessions().empty());  // this program still minds it
    CHECK(journal.documentSaved(document, 240) == 0);
    CHECK(namesOn(bench.disk) == std::vector<std::string>{document});
  }
  SUBCASE("two recordings in one second: each has its name, the first stays as it was") {
    const std::string first = namesOn(bench.disk).front();
    journal.newRecording();
    const std::string bytes = bench.disk.contents[first];
    buffer::ploop = 0;
    bench.acquire(1s);
    journal.stop();
    CHECK(bench.disk.contents[first] == bytes);
    bench.locks.held.clear();
    const auto found = bench.sessions();
    REQUIRE(found.size() == 2);
    journal.adopt(found[0].parts, found[0].end);
    CHECK(bench.sessions().size() == 1);
    CHECK(journal.documentSaved(document, found[0].end) == 0);
    CHECK(namesOn(bench.disk) == std::vector<std::string>{document});
  }
  SUBCASE("the user does not want it") {
    journal.discard();
    CHECK(namesOn(bench.disk) == std::vector<std::string>{document});
  }
}

TEST_CASE("a program that runs is known by its lock, or by its name where locks tell nothing") {
  JournalBench bench;
  bench.locks.working = false;
  bench.acquire(1s);
  bench.journal.writeNow();
  CHECK(bench.sessions().empty());
  bench.locks.running.clear();
  CHECK(bench.sessions().size() == 1);
}

TEST_CASE("the annotation track comes back, even after the disk was away") {
  using journalformat::Annotation;
  using journalformat::AnnotationChange;
  JournalBench bench;
  const auto texts = [&bench] {
    bench.journal.flush();
    FakeDisk disk = copyOf(bench.disk);
    FakeLocks locks;
    std::string all;
    const auto session = JournalCatalogue(disk, locks, bench.folders).read(namesOn(disk));
    for (const auto& [id, text] : session->annotations) {
      all += std::to_string(text.point) + " " + text.text + "; ";
    }
    return all;
  };
  bench.journal.annotate({AnnotationChange::Set, 1, 5, "first"});
  bench.acquire(1s);
  bench.journal.annotate({AnnotationChange::Set, 2, 70, "second"});
  bench.journal.annotate({AnnotationChange::Set, 1, 6, "moved"});
  CHECK(texts() == "6 moved; 70 second; ");
  bench.disk.failFrom = 1;
  bench.disk.failures = 1'000'000;
  bench.journal.annotate({AnnotationChange::Remove, 2, 0, ""});
  bench.acquire(3s);
  bench.disk.failFrom = 0;
  CHECK(texts() == "6 moved; ");
}
