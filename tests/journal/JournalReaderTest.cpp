#include <doctest/doctest.h>
#include <random>

#include "JournalBench.h"

using namespace ovka;
using namespace ovka::testing;
using namespace std::chrono_literals;

namespace {

const std::string kPath = "/disk/one.part1.ovkajournal";

/// A small journal: 2 seconds in 13 chunks or so, with a text and without an end.
std::string smallJournal() {
  JournalBench bench;
  buffer::SampleSpeed = 240;
  bench.acquire(1s);
  bench.journal.annotate({journalformat::AnnotationChange::Set, 1, 7, "here"});
  bench.acquire(1s);
  bench.journal.flush();
  return bench.disk.contents.begin()->second;
}

std::optional<JournalSession> read(const std::string& bytes) {
  FakeDisk disk;
  disk.contents[kPath] = bytes;
  FakeLocks locks;
  const FixedFolder folders;
  return JournalCatalogue(disk, locks, folders).read({kPath});
}

/// Points that do not hold the frame of their number; channel 0 of an unwritten point holds 49.
std::int64_t strayPoints(const SampleStore& store, std::int64_t end) {
  std::int64_t stray = 0;
  for (std::int64_t point = 0; point < end; ++point) {
    const bool empty = store.storedValue(0, point) == 49 && store.storedValue(1, point) == 0;
    stray += empty || wrongPoints(store, point, point + 1, 1000 + point) == 0 ? 0 : 1;
  }
  return stray;
}

}  // namespace

TEST_CASE("cut at any byte: everything before the cut chunk is there, nothing else") {
  const std::string whole = smallJournal();
  REQUIRE(read(whole)->ploop == 480);
  std::int64_t last = 0;
  for (std::size_t length = 0; length <= whole.size(); ++length) {
    CAPTURE(length);
    const auto session = read(whole.substr(0, length));
    const std::int64_t now = session ? session->ploop : 0;
    REQUIRE(now >= last);
    REQUIRE(now - last <= 60);  // a chunk of 200 ms, or two
    if (session) REQUIRE(session->damagedPlaces + session->missingPoints == 0);
    last = now;
  }
  CHECK(last == 480);
}

TEST_CASE("damaged at any byte: one chunk is missing at most, and is said to be") {
  const std::string whole = smallJournal();
  std::mt19937 random(7);
  for (std::size_t at = 0; at < whole.size(); ++at) {
    CAPTURE(at);
    std::string damaged = whole;
    damaged[at] = static_cast<char>(damaged[at] ^ (1 << random() % 8));
    const auto session = read(damaged);
    REQUIRE(session.has_value());
    REQUIRE(session->ploop >= 480 - 60);
    const bool lastChunk = session->ploop < 480;
    REQUIRE(session->missingPoints <= 60);
    // Behind the magic every byte counts; the last chunk is as if it were cut off.
    if (at >= 8 && !lastChunk) REQUIRE(session->damagedPlaces == 1);
    REQUIRE(session->SampleSpeed == 240);
    if (at % 40 != 0) continue;
    FakeDisk disk;
    disk.contents[kPath] = damaged;
    const Recovered back(disk, {kPath});
    REQUIRE(strayPoints(back.store, 480) == 0);
  }
}

TEST_CASE("other damage: torn out, doubled, other journals' blocks, zeros, noise") {
  const std::string whole = smallJournal();
  std::string other = smallJournal();
  const std::string zeros(5000, '\0');
  std::mt19937 random(3);
  std::string noise(100'000, ' ');
  std::generate(noise.begin(), noise.end(), [&] { return static_cast<char>(random()); });
  struct Row {
    const char* what;
    std::string bytes;
    std::int64_t least = 480;  ///< of the current point
  };
  const std::vector<Row> rows{
      {"zeros behind", whole + zeros},
      {"zeros before", zeros + whole},
      {"zeros in the middle", whole.substr(0, 4000) + zeros + whole.substr(4000)},
      {"torn out", whole.substr(0, 3000) + whole.substr(6000)},
      {"doubled", whole + whole},
      {"noise around", noise + whole + noise},
      {"the front is gone", whole.substr(5000)},
      {"only noise", noise, 0},
      {"nothing", "", 0},
  };
  for (const Row& row : rows) {
    CAPTURE(row.what);
    const auto session = read(row.bytes);
    CHECK(session.has_value() == (row.least > 0));
    if (!session) continue;
    CHECK(session->ploop == row.least);
    CHECK(session->end == 480);
    CHECK(session->SampleSpeed == 240);
  }
  const auto torn = read(rows[3].bytes);
  CHECK(torn->missingPoints > 0);
  CHECK(describe(*torn).find("points are missing; damaged at 1 place") != std::string::npos);
}

TEST_CASE("sound chunks with senseless contents change nothing") {
  using namespace journalformat;
  Bytes payload;
  std::uint64_t sequence = 1'000'000;
  const std::string whole = smallJournal();
  const auto add = [&](ChunkKind kind, std::string& to) {
    const auto head = headAt(View(reinterpret_cast<const std::uint8_t*>(whole.data()) + 8, 40));
    REQUIRE(head.has_value());
    Bytes chunk;
    ChunkHead next = *head;
    next.kind = kind;
    next.sequence = sequence++;
    appendChunk(chunk, next, payload);
    to.append(chunk.begin(), chunk.end());
  };
  std::string bytes = whole;
  State state;
  state.maxploop = buffer::MAXbuffer + 1;
  state.SampleSpeed = 1;
  encode(state, payload);
  add(ChunkKind::State, bytes);
  for (const std::int64_t first : {std::int64_t{-1}, std::int64_t{buffer::MAXbuffer},
                                   std::numeric_limits<std::int64_t>::max()}) {
    Frames frames;
    frames.first = first;
    frames.count = 1;
    frames.SampleSpeed = 1;
    encode(frames, payload);
    add(ChunkKind::Frames, bytes);
  }
  payload.resize(10);
  add(ChunkKind::Mark, bytes);
  add(ChunkKind::Annotation, bytes);
  add(ChunkKind::Session, bytes);
  add(ChunkKind::End, bytes);
  add(static_cast<ChunkKind>(200), bytes);  // a later program's: left alone
  const auto session = read(bytes);
  CHECK(session->damagedPlaces == 8);
  CHECK(session->ploop == 480);
  CHECK(session->capacity == 100'000);
  CHECK(session->annotations.size() == 1);
  CHECK_FALSE(session->endedInOrder);
}
