#include <bit>
#include <doctest/doctest.h>
#include <limits>
#include <random>
#include <vector>

#include "BufferBench.h"

using namespace ovka;
using testing::BufferBench;

namespace {

constexpr std::int64_t kFarthest = std::numeric_limits<std::int64_t>::max();

}  // namespace

TEST_CASE("points are clamped: reads to the last point, writes one further") {
  BufferBench bench(100);
  SampleStore& store = bench.store;
  store.putIntToBuffer(3, 0, 11);
  store.putIntToBuffer(3, 99, 12);
  store.putIntToBuffer(3, 110, 13);
  CHECK(store.getIntFromBuffer(3, -5) == 11.0);
  CHECK(store.getIntFromBuffer(3, 100) == 12.0);
  CHECK(store.getIntFromBuffer(3, kFarthest) == 12.0);
  buffer::maxploop = 101;
  CHECK(store.getIntFromBuffer(3, 100) == 13.0);
  store.putIntToBuffer(3, -kFarthest, 0x1'0000'0005);  // the low 32 bits
  CHECK(store.getIntFromBuffer(3, 0) == 5.0);
  store.putCharToBuffer(1, 5000, 9);
  CHECK(store.getCharFromBuffer(1, 101) == 9);
  for (const std::int32_t unknown : {-1, 5}) {
    store.putIntToBuffer(unknown, 0, 1);
    store.putCharToBuffer(unknown, 0, 1);
    CHECK(store.getIntFromBuffer(unknown, 0) == 0.0);
    CHECK(store.getCharFromBuffer(unknown, 0) == 0);
  }
  // A capacity that nobody opened memory for stays within what is open.
  buffer::maxploop = std::numeric_limits<std::uint64_t>::max();
  store.putIntToBuffer(1, kFarthest, 7);
  CHECK(store.getIntFromBuffer(1, kFarthest) == 0.0);
}

TEST_CASE("mapping, sign and scale of a read") {
  BufferBench bench(10);
  for (std::int32_t channel = 0; channel < 5; ++channel) {
    bench.store.putIntToBuffer(channel, 4, 16384 + channel);
  }
  struct Row {
    std::int32_t swap, polarity, reverse;
    std::uint32_t model;
    std::array<double, 5> sample;  // of the stored 16384 + n, by requested channel
  };
  constexpr double kDivisor = std::bit_cast<double>(0x40647AE145A1CAC1);
  const std::array<Row, 8> rows{{
      {0, 0, 0, 4, {16384, 16385, 16386, 16387, 16388}},
      {0, 1, 0, 4, {16384, 16385, -16386, 16387, -16388}},
      {0, 0, 1, 4, {16384, 16385, -16386, 16387, -16388}},
      {0, 1, 1, 4, {16384, 16385, -16386, 16387, -16388}},
      {1, 0, 1, 0, {16384, -16386, 16385, -16388, 16387}},
      {1, 2, 0, 3, {16384, 16386, 16385, 16388, 16387}},
      {2, 0, 0, 0, {0, 0, 0, 0, 0}},
      {0, 0, 2, 0, {0, 0, 0, 0, 0}},
  }};
  for (const Row& row : rows) {
    CAPTURE(&row - rows.data());
    buffer::LeftRightReverse = row.swap;
    buffer::ReversPolarityX = row.polarity;
    buffer::ShowReverseWaveX = row.reverse;
    for (const std::uint32_t model : {row.model, 5U, 9U, 10U}) {
      buffer::SelectDevice = model;
      const double divisor = model == 5 || model == 9 ? kDivisor : 1.0;
      for (std::size_t channel = 0; channel < 5; ++channel) {
        CHECK(bench.store.getIntFromBuffer(static_cast<std::int32_t>(channel), 4) ==
              row.sample[channel] / divisor);
      }
    }
  }
}

TEST_CASE("a block reads bit for bit as its points do") {
  BufferBench bench(300);
  std::mt19937 random(5);
  for (std::int32_t channel = 0; channel < 5; ++channel) {
    for (std::int64_t point = 0; point <= 300; ++point) {
      bench.store.putIntToBuffer(channel, point, static_cast<std::int32_t>(random()));
    }
  }
  bench.store.putIntToBuffer(2, 0, std::numeric_limits<std::int32_t>::min());
  std::vector<double> block(350);
  for (int round = 0; round < 40; ++round) {
    buffer::LeftRightReverse = static_cast<std::int32_t>(random() % 3);
    buffer::ReversPolarityX = static_cast<std::int32_t>(random() % 2);
    buffer::ShowReverseWaveX = static_cast<std::int32_t>(random() % 3);
    buffer::SelectDevice = static_cast<std::uint32_t>(random() % 10);
    for (const std::int64_t first :
         {-kFarthest - 1, std::int64_t{-400}, std::int64_t{-20}, std::int64_t{0}, std::int64_t{250},
          std::int64_t{300}, kFarthest - 400}) {
      for (std::int32_t channel = -1; channel < 6; ++channel) {
        bench.store.readBlock(channel, first, block);
        bool same = true;
        for (std::size_t i = 0; i < block.size(); ++i) {
          const double point =
              bench.store.getIntFromBuffer(channel, first + static_cast<std::int64_t>(i));
          same =
              same && std::bit_cast<std::uint64_t>(block[i]) == std::bit_cast<std::uint64_t>(point);
        }
        CAPTURE(first);
        CHECK(same);
      }
    }
  }
}

TEST_CASE("every kind of write moves the generation on") {
  BufferBench bench(50);
  SampleStore& store = bench.store;
  const std::vector<std::uint8_t> saved(8);
  const std::vector<std::function<void()>> writes{[&] { store.putIntToBuffer(1, 1, 1); },
                                                  [&] { store.storeFrame({}); },
                                                  [&] { store.recCleare(); },
                                                  [&] { store.cleanData(); },
                                                  [&] { store.sinwaveTest(5.0F, 0); },
                                                  [&] { store.initMalloc(60); },
                                                  [&] { store.putDataToBuffer(1, 1, saved, 1); }};
  for (const auto& write : writes) {
    const std::uint64_t before = store.writeGeneration();
    write();
    CHECK(store.writeGeneration() > before);
  }
}
