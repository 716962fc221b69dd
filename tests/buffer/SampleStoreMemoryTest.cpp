#include <atomic>
#include <bit>
#include <cstring>
#include <doctest/doctest.h>
#include <thread>
#include <vector>

#include "BufferBench.h"
#include "MaximumTime.h"

using namespace ovka;
using testing::BufferBench;

namespace {

std::vector<std::int32_t> valuesOf(const std::vector<std::uint8_t>& block) {
  std::vector<std::int32_t> values(block.size() / sizeof(std::int32_t));
  std::memcpy(values.data(), block.data(), values.size() * sizeof(std::int32_t));
  return values;
}

}  // namespace

TEST_CASE("growth keeps contents; a refused one says so and changes nothing") {
  BufferBench bench(100);
  CHECK(bench.printed.empty());
  CHECK(std::bit_cast<std::uint32_t>(bench.store.PPvolt.get()) == 0x433851ECU);
  bench.store.putIntToBuffer(4, 99, 5);
  for (int nth = 1; nth <= 10; ++nth) {
    CAPTURE(nth);
    bench.space.refuseOpen = nth;
    bench.printed.clear();
    CHECK_FALSE(setMaxTime(bench.store, 9));
    CHECK(bench.printed ==
          "Error allocating the sample buffer: 10368000 points need 259 MB, the old length of 100 "
          "points is kept - Cannot allocate memory(12).\n");
    CHECK(buffer::maxploop == 100);
    CHECK(buffer::MaxTimeActionX == 4);
    bench.store.putIntToBuffer(4, 1000000, 6);
    CHECK(bench.store.getIntFromBuffer(4, 1000000) == 5.0);
  }
  CHECK(bench.store.initMalloc(buffer::MAXbuffer + 5));
  CHECK(buffer::maxploop == buffer::MAXbuffer);
  const auto last = static_cast<std::int64_t>(buffer::MAXbuffer) - 1;
  for (std::int32_t channel = 0; channel < 5; ++channel) {
    bench.store.putIntToBuffer(channel, last, 7 + channel);
    CHECK(bench.store.getIntFromBuffer(channel, last) == 7 + channel);
  }
  CHECK(bench.store.getIntFromBuffer(4, 99) == 5.0);
}

TEST_CASE("without any memory every operation is harmless") {
  buffer::resetVariables();
  testing::GuardedAddressSpace space;
  space.refuseReserve = 4;
  testing::RecordingShell shell;
  std::string printed;
  const PrintSink before = setPrintSink([&](std::string_view text) { printed += text; });
  {
    SampleStore store(space, shell.recording, shell.annotations);
    CHECK_FALSE(store.initMalloc(10));
    CHECK(printed.find("10 points") != std::string::npos);
    store.putIntToBuffer(1, 0, 5);
    store.storeFrame({});
    store.recCleare();
    store.cleanData();
    store.sinwaveTest(3.0F, 90);
    CHECK(store.getIntFromBuffer(1, 0) == 0.0);
    CHECK(store.getDataFromBuffer(1, 0, 5).empty());
  }
  CHECK(space.blocks == 0);
  setPrintSink(before);
}

TEST_CASE("readers and the writer go on while the capacity grows and shrinks") {
  BufferBench bench(64);
  buffer::setLoopModeX = 1;
  std::atomic<bool> stop{false};
  std::thread writer([&] {
    for (std::int32_t n = 0; !stop; ++n) {
      Frame frame;
      for (std::size_t channel = 0; channel < 5; ++channel) frame.set(channel, n);
      bench.store.storeFrame(frame);
    }
  });
  std::atomic<bool> sane{true};
  std::thread reader([&] {
    std::vector<double> block(512);
    while (!stop) {
      const std::int64_t now = buffer::ploop;
      bench.store.readBlock(2, now - 512, block);
      for (const double sample : block) sane = sane && sample >= 0.0;
    }
  });
  for (std::uint64_t round = 0; round < 200; ++round) {
    bench.store.initMalloc(64 + round * (round % 2 == 0 ? 500 : 3));
  }
  stop = true;
  writer.join();
  reader.join();
  CHECK(sane);
}

TEST_CASE("blocks out of the store and back, with their oddities") {
  BufferBench bench(6);
  for (std::int64_t point = 0; point <= 6; ++point) {
    for (std::int32_t channel = 0; channel < 5; ++channel) {
      bench.store.putIntToBuffer(channel, point, 10 * channel + point);
    }
  }
  using Values = std::vector<std::int32_t>;
  SampleStore& store = bench.store;
  CHECK(valuesOf(store.getDataFromBuffer(1, 0, 3)) == Values{10, 11, 12});
  CHECK(valuesOf(store.getDataFromBuffer(1, 2, 4)) ==
        Values{12, 13, 14, 15});  // stated twice as long
  CHECK(valuesOf(store.getDataFromBuffer(2, 2, 4)) == Values{22, 23});
  CHECK(valuesOf(store.getDataFromBuffer(3, -4, 99)) == Values{30, 31, 32, 33, 34, 35});
  CHECK(store.getDataFromBuffer(3, 4, 2).empty());

  const std::vector<std::uint8_t> big{0, 0, 1, 2, 255, 255, 255, 254, 9};
  buffer::ploopStart = 4;
  store.putDataToBuffer(3, 0, big, 1);
  CHECK(valuesOf(store.getDataFromBuffer(3, 0, 6)) == Values{30, 31, 32, 33, 258, -2});
  buffer::ploopStart = 5;  // room for one value
  store.putDataToBuffer(3, 0, big, 1);
  CHECK(valuesOf(store.getDataFromBuffer(3, 4, 6)) == Values{258, 258});
  CHECK(store.storedValue(3, 6) == 258);
  CHECK(bench.printed == "process putDataToBuffer process putDataToBuffer ");

  Values recording(5000);
  for (std::size_t i = 0; i < recording.size(); ++i) recording[i] = static_cast<std::int32_t>(i);
  std::vector<std::uint8_t> block(recording.size() * 4);
  std::memcpy(block.data(), recording.data(), block.size());
  store.putDataToBuffer(2, 0, block, 0);
  CHECK(buffer::maxploop == 5000);
  CHECK(valuesOf(store.getDataFromBuffer(2, 0, 5000)) == recording);
}

TEST_CASE("clearing") {
  BufferBench bench(3000);
  SampleStore& store = bench.store;
  const auto scribble = [&] {
    for (std::int32_t channel = 0; channel < 5; ++channel) {
      for (std::int64_t point = 0; point < 3000; ++point) {
        store.putIntToBuffer(channel, point, 7);
        store.putCharToBuffer(channel, point, 7);
      }
    }
  };
  const auto values = [&](std::int64_t point) {
    std::array<int, 5> all{};
    for (std::int32_t c = 0; c < 5; ++c)
      all[static_cast<std::size_t>(c)] = store.storedValue(c, point);
    return all;
  };
  using All = std::array<int, 5>;
  scribble();
  store.recCleareX(2000);
  CHECK(values(1999) == All{7, 7, 7, 7, 7});
  CHECK(values(2000) == All{49, 0, 0, 0, 0});
  CHECK(store.getCharFromBuffer(3, 2999) == 32);
  store.recCleare0();
  CHECK(values(0) == All{49, 7, 7, 7, 7});
  CHECK(store.getCharFromBuffer(0, 0) == 32);
  CHECK(store.getCharFromBuffer(1, 0) == 7);
  scribble();
  buffer::ploop = 2500;
  store.cleanData();
  CHECK(values(2500) == All{7, 0, 0, 0, 0});
  CHECK(values(477) == All{7, 0, 0, 0, 0});
  CHECK(values(476) == All{7, 7, 7, 7, 7});
  CHECK(values(2501) == All{7, 7, 7, 7, 7});
}

TEST_CASE("maximum time and sample speed") {
  BufferBench bench(100);
  CHECK(setMaxTime(bench.store, "setMaxTime3mAction:"));
  CHECK(buffer::maxploop == 21600);
  CHECK(buffer::MaxTimeActionX == 0);
  CHECK(bench.store.storedValue(0, 21599) == 49);  // the grown tail is clean
  CHECK(bench.store.getCharFromBuffer(4, 21599) == 32);
  CHECK_FALSE(setMaxTime(bench.store, "setMaxTime7hAction:"));
  CHECK_FALSE(setMaxTime(bench.store, 10));

  std::uint32_t sent = 0;
  const SampleSpeedSender send = [&](std::uint32_t speed) { return sent = speed; };
  CHECK(setSamplingMode(bench.store, 2, send));
  CHECK(sent == 512);
  CHECK(buffer::SampleSpeed == 512);
  CHECK(buffer::samplingModeX == 2);
  CHECK(buffer::maxploop == 180 * 512);
  CHECK(bench.printed == "maxploop in the setsamplingF = 92160\n");
  CHECK_FALSE(setSamplingMode(bench.store, 12, send));
  buffer::SampleSpeedX = 0;
  CHECK_FALSE(setSamplingMode(bench.store, 11, send));
  // The longest recording: near it already, so that little is left to clear.
  CHECK(bench.store.initMalloc(buffer::MAXbuffer - 10));
  buffer::SampleSpeedX = 1000000;
  CHECK(setSamplingMode(bench.store, 11, send));
  CHECK(buffer::maxploop == buffer::MAXbuffer);
}

TEST_CASE("texts") {
  BufferBench bench(10);
  CHECK(bench.store.getcurrentPointTextStrX(1234) == "00000001234::");
  struct Row {
    std::int64_t point;
    const char* text;
  };
  for (const Row& row : {Row{432000, "01:00:00.00"}, Row{130, "00:00:01.83"},
                         Row{239, "00:00:01.991"}, Row{-60, "00:00:00.00"}}) {
    buffer::ploop = row.point;
    CHECK(bench.store.getcurrentTimePointTextStrX() == row.text);
  }
  CHECK(bench.printed == "01:00:00.00\n00:00:01.00\n00:00:01.00\n00:00:00.00\n");
}

TEST_CASE("the test signal delays the right-hand channels by the angle") {
  BufferBench bench(400);
  SampleStore& store = bench.store;
  struct Row {
    std::int32_t degrees;
    std::int64_t delay;
  };
  // trunc(0.8 * 20 * k)
  for (const Row& row :
       {Row{0, 0}, Row{30, 10}, Row{45, 16}, Row{70, 24}, Row{90, 32}, Row{360, 128}, Row{91, 0}}) {
    CAPTURE(row.degrees);
    store.sinwaveTest(20.0F, row.degrees);
    for (std::int64_t n = 0; n < 400; ++n) {
      const std::int32_t left = store.storedValue(1, n);
      CHECK(store.storedValue(0, n) == left);
      const std::int32_t right = n < row.delay ? 0 : store.storedValue(3, n - row.delay);
      CHECK(store.storedValue(2, n) == right);
      CHECK(store.storedValue(4, n) == right);
    }
  }
  CHECK(store.storedValue(1, 31) == 184);  // sin(1.55) * 184.32
  CHECK(store.storedValue(1, 94) == -184);
  store.sinwaveTestPower(60.0F);
  CHECK(store.storedValue(1, 31) == 368);
  store.sinwaveTest(0.0F, 90);  // no number anywhere: silence, not a crash
  CHECK(store.storedValue(1, 0) == 0);
}
