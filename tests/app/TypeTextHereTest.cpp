#include <algorithm>
#include <atomic>
#include <chrono>
#include <doctest/doctest.h>
#include <string>
#include <thread>
#include <vector>

#include "BufferVariables.h"
#include "ManualTime.h"
#include "TypeTextHere.h"

using namespace ovka;
using namespace std::chrono_literals;

namespace {

struct Bench {
  Bench() { buffer::resetVariables(); }
  ~Bench() { buffer::resetVariables(); }
  ManualTime time;
  TypeTextHere track{time};
};

std::vector<std::string> linesOf(const std::vector<TimedText>& texts) {
  std::vector<std::string> lines;
  for (const TimedText& text : texts) lines.push_back(std::to_string(text.point) + " " + text.text);
  return lines;
}

using Lines = std::vector<std::string>;

}  // namespace

TEST_CASE("the playback clock plays, holds, jumps and loops") {
  Bench bench;
  TypeTextHere& track = bench.track;
  track.play();
  bench.time.advance(2500ms);
  CHECK(track.getLengthofTime() == 300);
  track.pause();
  bench.time.advance(10s);
  CHECK(track.getLengthofTime() == 300);
  track.seek(-5);
  track.play();
  bench.time.advance(1s);
  CHECK(track.getLengthofTime() == 120);

  track.loop(60, 180);
  bench.time.advance(499ms);  // 59.88 points on
  CHECK(track.getLengthofTime() == 179);
  bench.time.advance(1ms);
  CHECK(track.getLengthofTime() == 60);
  bench.time.advance(10s + 500ms);  // ten rounds and a half
  CHECK(track.getLengthofTime() == 120);
  track.loop(0, 0);
  bench.time.advance(1s);
  CHECK(track.getLengthofTime() == 240);
  track.loop(60, 180);  // already behind it
  bench.time.advance(1s);
  CHECK(track.getLengthofTime() == 360);
  buffer::ploopStart = 17;
  track.gotoStartWhenLoopmodeAndEnd();
  CHECK(track.getLengthofTime() == 17);
  CHECK(track.playing());
}

TEST_CASE("texts go to the current point, stay in order and within bounds") {
  Bench bench;
  TypeTextHere& track = bench.track;
  buffer::setRecModeX = 1;
  buffer::ploop = 500;
  const auto eyes = track.add("eyes closed");
  buffer::setRecModeX = 0;
  track.seek(100);
  const auto start = track.add("start\nhere\x01");
  REQUIRE((eyes && start));
  REQUIRE(track.addAt(500, "same point"));
  CHECK(linesOf(track.list()) == Lines{"100 start here ", "500 eyes closed", "500 same point"});
  CHECK(linesOf(track.between(101, 501)) == Lines{"500 eyes closed", "500 same point"});
  CHECK(track.between(101, 500).empty());
  CHECK(track.between(9, 3).empty());

  CHECK(track.edit(*eyes, "eyes open"));
  CHECK(track.move(*start, 900));
  CHECK_FALSE(track.edit(77, "nobody"));
  CHECK_FALSE(track.edit(*eyes, ""));
  CHECK(linesOf(track.list()) == Lines{"500 eyes open", "500 same point", "900 start here "});
  CHECK(track.remove(*eyes));
  CHECK_FALSE(track.remove(*eyes));

  CHECK_FALSE(track.add("").has_value());
  // 999 bytes and a character of two: it does not fit and is not halved.
  track.removeAll();
  track.addAt(-3, std::string(999, 'x') + "\xC3\xA9");
  CHECK(track.list().front().text == std::string(999, 'x'));
  CHECK(track.list().front().point == 0);
  while (track.addAt(5, "more")) {
  }
  CHECK(track.list().size() == TypeTextHere::kMostTexts);
}

TEST_CASE("the track goes into an array of texts and comes back") {
  Bench bench;
  TypeTextHere& track = bench.track;
  track.addAt(240, "second; \"quoted\" \xE8\x84\xB3");
  track.addAt(120, "first");
  const Lines array = track.texts();
  CHECK(array == Lines{"5", "120", "first", "240", "second; \"quoted\" \xE8\x84\xB3"});
  TypeTextHere other(bench.time);
  other.addAt(1, "replaced");
  CHECK(other.put(array));
  CHECK(other.texts() == array);
  CHECK(other.put({"1"}));
  CHECK(other.list().empty());

  struct Row {
    Lines array;
    Lines kept;
  };
  for (const Row& row : std::vector<Row>{{{}, {}},
                                         {{"5", "120", "a"}, {"120 a"}},
                                         {{"4", "120", "a", "240"}, {"120 a"}},
                                         {{"5", "-1", "a", "12x", "b"}, {}},
                                         {{"3", "", "a"}, {}}}) {
    CHECK_FALSE(other.put(row.array));
    CHECK(linesOf(other.list()) == row.kept);
  }
}

TEST_CASE("whoever listens can keep a copy of the track, whatever threads change it") {
  Bench bench;
  TypeTextHere& track = bench.track;
  std::vector<TimedText> copy;  // guarded by the rule of one call at a time
  track.setListener([&](TypeTextHere::Change change, const TimedText& text) {
    std::erase_if(copy, [&](const TimedText& old) {
      return change == TypeTextHere::Change::RemovedAll || old.id == text.id;
    });
    if (change == TypeTextHere::Change::Set) copy.push_back(text);
  });
  std::atomic<bool> done = false;
  std::thread acquisition([&] {
    while (!done) {
      static_cast<void>(track.getLengthofTime());
      track.gotoStartWhenLoopmodeAndEnd();
    }
  });
  std::vector<std::thread> users;
  for (int user = 0; user < 3; ++user) {
    users.emplace_back([&track, user] {
      for (int i = 0; i < 200; ++i) {
        const auto id = track.addAt(i, "user " + std::to_string(user));
        if (i % 3 == 0) track.remove(*id);
        if (i % 3 == 1) track.move(*id, 1000 - i);
      }
    });
  }
  for (std::thread& user : users) user.join();
  done = true;
  acquisition.join();
  std::sort(copy.begin(), copy.end(), [](const TimedText& a, const TimedText& b) {
    return a.point != b.point ? a.point < b.point : a.id < b.id;
  });
  CHECK(linesOf(copy) == linesOf(track.list()));
  CHECK(copy.size() == 3 * 133);
}
