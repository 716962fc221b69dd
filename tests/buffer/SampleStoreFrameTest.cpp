#include <doctest/doctest.h>
#include <limits>
#include <string>
#include <vector>

#include "BufferBench.h"
#include "FrameWriter.h"
#include "bitRevRev8MK.h"

using namespace ovka;
using testing::BufferBench;

TEST_CASE("the end of the buffer: stop, loop, and what a recording asks of the application") {
  const std::string stop = "StopRecord2VideoandBrainwave";
  const std::string rewind = "gotoStartWhenLoopmodeAndEnd";
  struct Row {
    const char* name;
    std::int32_t mode, loop, autoSave, paused;
    std::int64_t from, to;  // the point before and after one frame; the capacity is 10
    std::int32_t pausedAfter, autoSaveAfter, loops;
    std::vector<std::string> calls;
  };
  const std::vector<Row> rows{
      {"on the way", 0, 0, 1, 0, 3, 4, 0, 1, 0, {}},
      {"stops", 0, 0, 1, 0, 9, 10, 1, 1, 0, {}},
      {"stays at the end", 0, 0, 0, 1, 10, 10, 1, 0, 0, {}},
      {"resumed at the end", 2, 0, 0, 0, 10, 10, 1, 0, 0, {}},
      {"paused by the user", 1, 0, 1, 1, 9, 9, 1, 1, 0, {}},
      {"paused while looping", 1, 1, 1, 1, 9, 9, 1, 1, 0, {}},
      {"behind a shrunk end", 0, 0, 0, 0, 40, 10, 1, 0, 0, {}},
      {"loops", 0, 1, 1, 0, 9, 2, 0, 1, 0, {}},
      {"recording stops", 1, 0, 0, 0, 9, 10, 1, 0, 0, {}},
      {"recording saves itself", 1, 0, 1, 0, 9, 10, 1, 0, 0, {"PauseMovie", stop}},
      {"recording loops", 1, 1, 0, 0, 9, 2, 0, 0, 0, {rewind}},
      {"recording loops and saves",
       1,
       1,
       1,
       0,
       9,
       2,
       0,
       1,
       1,
       {stop, rewind, "StartRecord2VideoandBrainwave"}},
  };
  for (const Row& row : rows) {
    CAPTURE(row.name);
    BufferBench bench(10);
    buffer::setRecModeX = row.mode;
    buffer::setLoopModeX = row.loop;
    buffer::AutoSaveX = row.autoSave;
    buffer::setPauseX = row.paused;
    buffer::ploopStart = 2;
    buffer::ploop = row.from;
    bench.store.storeFrame({});
    CHECK(buffer::ploop == row.to);
    CHECK(buffer::setPauseX == row.pausedAfter);
    CHECK(buffer::AutoSaveX == row.autoSaveAfter);
    CHECK(buffer::loopCount == row.loops);
    CHECK(bench.shell.log.texts() == row.calls);
  }
}

TEST_CASE("after the last point frames go on overwriting the point behind it") {
  BufferBench bench(5);
  for (std::int32_t n = 0; n < 9; ++n) {
    Frame frame;
    frame.set(1, n);
    bench.store.storeFrame(frame);
  }
  CHECK(buffer::ploop == 5);
  buffer::maxploop = 6;
  for (std::int32_t n = 0; n < 5; ++n) CHECK(bench.store.storedValue(1, n) == n);
  CHECK(bench.store.storedValue(1, 5) == 8);
}

TEST_CASE("the byte copy of a frame") {
  struct Row {
    std::int32_t value;
    std::uint8_t byte;
  };
  // 0 and what falls outside the byte collapse to 0; -3 and 3 truncate toward zero.
  const std::array<Row, 8> rows{
      {{-512, 0}, {0, 1}, {508, 255}, {512, 0}, {-516, 0}, {-508, 128}, {3, 1}, {-3, 1}}};
  for (const Row& row : rows) {
    CAPTURE(row.value);
    BufferBench bench(10);
    Frame frame;
    for (std::size_t channel = 0; channel < 5; ++channel) frame.set(channel, row.value);
    bench.store.storeFrame(frame);
    for (std::int32_t channel = 1; channel < 5; ++channel) {
      CHECK(bench.store.getCharFromBuffer(channel, 0) == row.byte);
    }
    CHECK(bench.store.getCharFromBuffer(0, 0) == 32);
  }
  CHECK(bitRevRev8MK(3) == 192);
  CHECK(bitRevRev8MK(254) == 127);
  CHECK(bitRevRev8MK(256) == 0);
  CHECK(bitRevRev8MK(-1) == 0);
}

TEST_CASE("byte copies are a quarter of what readers get, under every setting") {
  struct Row {
    std::uint32_t model;
    std::int32_t swap, reverse, polarity;
  };
  const std::vector<Row> rows{{0, 0, 0, 0}, {6, 0, 0, 0}, {6, 1, 0, 1}, {9, 0, 1, 0},
                              {4, 1, 1, 1}, {6, 2, 0, 0}, {5, 0, 2, 0}, {5, 0, 0, 0}};
  constexpr std::int32_t kBeyond = 84500;  // just outside the byte for the scaled models
  BufferBench bench(16);
  buffer::setLoopModeX = 1;
  std::int64_t wrong = 0;
  FrameWriter writer(bench.store);  // the settings change under it
  for (const Row& row : rows) {
    buffer::SelectDevice = row.model;
    buffer::LeftRightReverse = row.swap;
    buffer::ShowReverseWaveX = row.reverse;
    buffer::ReversPolarityX = row.polarity;
    for (std::int32_t value = -kBeyond; value <= kBeyond; ++value) {
      const std::int64_t point = buffer::ploop;
      Frame frame;
      for (std::size_t channel = 1; channel < 5; ++channel) frame.set(channel, value);
      frame.values[3] = value == 0 ? std::numeric_limits<std::int32_t>::min() : value / 100;
      writer.store(frame);
      for (std::int32_t channel = 1; channel < 5; ++channel) {
        const double sample = bench.store.getIntFromBuffer(channel, point);
        const auto quarter = static_cast<std::int64_t>(sample / 4);
        if (bench.store.getCharFromBuffer(channel, point) != bitRevRev8MK(quarter + 128)) ++wrong;
      }
    }
  }
  CHECK(wrong == 0);
}

TEST_CASE("every frame of a block is whole when it is stored") {
  BufferBench bench(10);
  FrameWriter writer(bench.store);
  for (std::int32_t n = 0; n < 10; ++n) {
    const std::uint64_t before = bench.store.writeGeneration();
    Frame frame;
    frame.set(2, 100 + n);
    writer.store(frame);
    CHECK(bench.store.writeGeneration() > before);
    CHECK(buffer::ploop == n + 1);
    CHECK(bench.store.storedValue(2, n) == 100 + n);
  }
}

TEST_CASE("the upload copy follows each frame") {
  BufferBench bench(3000);
  for (std::int64_t point = 0; point < 3000; ++point) {
    bench.store.putIntToBuffer(1, point, 4 * (point % 100));
    bench.store.putIntToBuffer(2, point, -4 * (point % 100));
  }
  const auto upload = [&](std::int64_t first) {
    buffer::ploopRockNet = first;
    bench.store.bufferLX.set(999, 77);
    bench.store.storeFrame({});
    return bench.store.bufferLX.get(999);
  };
  CHECK(upload(1) == 77);  // no upload runs
  buffer::UploadStartZ = 1;
  CHECK(upload(0) == 77);
  CHECK(upload(3000) == 77);
  CHECK(upload(2999) == bitRevRev8MK(99 + 128));  // held at the last point
  CHECK(upload(1050) == bitRevRev8MK(49 + 128));
  CHECK(bench.store.bufferRX.get(999) == bitRevRev8MK(-49 + 128));
}
