#include <algorithm>
#include <doctest/doctest.h>
#include <string>
#include <vector>

#include "HeapAddressSpace.h"
#include "ManualTime.h"

using namespace std::chrono_literals;
using ovka::ManualTime;
using std::chrono::nanoseconds;

namespace {

struct Log {
  explicit Log(ManualTime& of) : time(of) {}
  std::function<void()> entry(std::string name) {
    return [this, name = std::move(name)] {
      text += name + std::to_string(time.nanoseconds() / 1'000'000) + ' ';
    };
  }
  ManualTime& time;
  std::string text;
};

}  // namespace

TEST_CASE("bodies run in order of due times, ties in order of registration, the clock at each") {
  ManualTime time(1'000);
  Log log(time);
  CHECK_FALSE(time.nextDue().has_value());
  time.repeat("a", 20ms, log.entry("a"));
  time.addTimer(10ms, log.entry("b"));
  time.loop("c", [&]() -> nanoseconds {
    log.entry("c")();
    return 30ms;
  });
  time.once("d", log.entry("d"));
  CHECK(log.text.empty());
  CHECK(time.threads() == std::vector<std::string>{"a", "c", "d"});
  time.advance(0ms);
  CHECK(log.text == "c0 d0 ");
  CHECK(time.threads() == std::vector<std::string>{"a", "c"});
  time.advance(40ms);
  CHECK(log.text == "c0 d0 b10 a20 b20 b30 c30 a40 b40 ");
  CHECK(time.nanoseconds() == 40'000'000);
  CHECK(time.wallNanoseconds() == 40'001'000);
  CHECK(time.nextDue() == 50'000'000);
  time.advanceTo(10);  // not back
  time.advance(-5ms);
  CHECK(time.nanoseconds() == 40'000'000);
}

TEST_CASE(
    "a body that waits lets the threads run, is not entered again, and drops what it missed") {
  ManualTime time;
  Log log(time);
  time.repeat("slow", 10ms, [&] {
    log.entry("s")();
    if (time.nanoseconds() == 10'000'000) time.advance(25ms);
    log.entry("e")();
  });
  time.repeat("quick", 15ms, log.entry("q"));
  time.advance(50ms);
  CHECK(log.text == "s10 q15 q30 e35 s40 e40 q45 s50 e50 ");
}

TEST_CASE("a source performs once for several signals, never inside another callback of the loop") {
  ManualTime time;
  Log log(time);
  const auto source = time.addSource(log.entry("p"));
  time.signal(source + 1);  // nobody's
  time.addTimer(10ms, [&] {
    log.entry("t")();
    time.signal(source);
    time.signal(source);
    if (time.nanoseconds() == 10'000'000) time.advance(25ms);
    if (time.nanoseconds() == 50'000'000) time.removeSource(source);
    log.entry("u")();
  });
  time.advance(50ms);
  CHECK(log.text == "t10 u35 p35 t40 u40 p40 t50 u50 ");
}

TEST_CASE("a loop without sleep does not hold time still") {
  ManualTime time;
  int steps = 0;
  time.loop("busy", [&] { return nanoseconds(++steps * 0); });
  time.advance(1ms);
  CHECK(steps == 1001);
}

TEST_CASE("stopAll in a body ends everything, what comes later is not started") {
  ManualTime time;
  Log log(time);
  const auto source = time.addSource(log.entry("p"));
  time.repeat("a", 10ms, [&] {
    log.entry("a")();
    time.stopAll();
    time.once("late", log.entry("l"));
    time.signal(source);
  });
  time.repeat("b", 10ms, log.entry("b"));
  time.advance(100ms);
  CHECK(log.text == "a10 ");
  CHECK(time.nanoseconds() == 100'000'000);
  CHECK_FALSE(time.nextDue().has_value());
}
