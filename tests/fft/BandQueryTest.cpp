#include <atomic>
#include <doctest/doctest.h>
#include <thread>

#include "EngineRig.h"
#include "PlainEngine.h"

using namespace ovka;
using ovka::testing::EngineRig;

namespace {

struct Ask {
  float low, high;
  std::int32_t mode;
};

Ask randomAsk(std::mt19937& random) {
  static constexpr float edges[] = {0, 2, 4, 7, 12, 13, 25, 35, 50, 60, 0.7F, 9.99F, -3, 1000};
  return {edges[random() % 14], edges[random() % 14], static_cast<std::int32_t>(random() % 2)};
}

bool same(float a, float b) {
  return std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b);
}

// A query equals a fresh plain evaluation of the newest block.
bool equalsFresh(EngineRig& rig, std::int32_t channel, const Ask& ask) {
  const float value = rig.engine.peakFFTband(channel, ask.low, ask.high, ask.mode);
  const float frequency = fft::peakFrequencyX;
  plain::Values block = plain::fetch(rig.store, rig.engine, channel, buffer::ploop, fft::fftp);
  const plain::Answer fresh = plain::bandQuery(block, ask.low, ask.high, ask.mode);
  return same(value, fresh.value) && same(frequency, fresh.frequency);
}

// One change of something that enters a query's result.
void changeSomething(EngineRig& rig, std::mt19937& random) {
  const auto pick = [&](int n) {
    return static_cast<std::int32_t>(random() % static_cast<unsigned>(n));
  };
  const std::function<void()> changes[] = {
      [&] { buffer::ploop = pick(5000); },
      [&] { buffer::ploop = pick(300); },  // near the start, where the block begins at 0
      [&] { rig.store.putIntToBuffer(1 + pick(4), pick(5000), pick(4000) - 2000); },
      [&] { rig.use(pick(3), "rtmnb"[pick(5)]); },
      [&] { rig.engine.fftinit(7 + pick(3), "nb"[pick(2)]); },  // tables of another length
      [&] { fft::stopWindFunction = pick(3) == 0; },
      [&] { fft::setGain1Number = pick(12); },
      [&] { fft::setGain3Number = pick(12); },
      [&] { fft::selectFFTcalculation(pick(4)); },
      [&] { buffer::SelectDevice = static_cast<std::uint32_t>(pick(10)); },
      [&] { buffer::ReversPolarityX = pick(2); },
      [&] { buffer::LeftRightReverse = pick(2); },
      [&] { buffer::ShowReverseWaveX = pick(3); },  // 2: a flag that silences everything
      [&] { buffer::SampleSpeed = pick(2) == 0 ? 120U : 257U; },
      [&] { rig.store.initMalloc(static_cast<std::uint64_t>(1000 + pick(6000))); },
      [&] { rig.engine.getDataToBufferX(pick(4), pick(5000)); },
  };
  changes[pick(16)]();
}

}  // namespace

TEST_CASE("a kept answer equals a fresh one through every change that enters it") {
  EngineRig rig;
  rig.fillNoise(7000);
  rig.use(1);
  std::mt19937 random(21);
  for (int round = 0; round < 4000; ++round) {
    if (random() % 2 == 0) changeSomething(rig, random);
    const auto channel = static_cast<std::int32_t>(random() % 4);
    const Ask ask = randomAsk(random);
    CAPTURE(round);
    REQUIRE(equalsFresh(rig, channel, ask));
  }
}

TEST_CASE("a query leaves its block without its mean") {
  EngineRig rig;
  rig.fillNoise(7000);
  rig.use(4, 'r');
  plain::Values block = plain::fetch(rig.store, rig.engine, 0, buffer::ploop, fft::fftp);
  rig.engine.getDataToBufferX(0, buffer::ploop);
  CHECK(rig.engine.secondArray(0, 9) == block[9]);
  rig.engine.peakFFTband(0, 0, 10, 0);
  plain::bandQuery(block, 0, 10, 0);
  CHECK(rig.engine.secondArray(0, 9) == block[9]);
}

TEST_CASE("what the first mean leaves by rounding enters the peak of mode 0 alone") {
  // Values so great that the rounded mean leaves as much as the lowest bins hold. One block object
  // throughout: nothing of the block before may stay.
  EngineRig rig;
  buffer::SampleSpeed = 128;
  ChannelBlock kept;
  BandScratch scratch;
  const BlockSettings settings{fft::scalerY, fft::scalerX, BinMap::of(128, 128)};
  std::mt19937 random(13);
  int differing = 0;
  for (int round = 0; round < 200; ++round) {
    plain::Values block(128);
    for (double& value : block) value = 1e16 + static_cast<double>(random() % 64);
    std::copy(block.begin(), block.end(), kept.refill(128).begin());
    float frequency[2];
    for (const std::int32_t mode : {round % 2, 1 - round % 2}) {
      plain::Values fresh = block;
      const plain::Answer expected = plain::bandQuery(fresh, 0, 4, mode);
      const BandAnswer answer = kept.answer({0, 4, mode}, settings, scratch);
      CHECK(same(answer.value, expected.value));
      CHECK(same(answer.frequency, expected.frequency));
      frequency[mode] = answer.frequency;
    }
    differing += frequency[0] != frequency[1];
  }
  CHECK(differing > 0);
}

TEST_CASE("extra arrays keep what queries do to them") {
  EngineRig rig;
  rig.use(0);
  static constexpr std::uint32_t arrays[] = {2, 5, 6, 7, 8, 9};
  std::mt19937 random(9);
  for (std::int32_t source = 4; source < 10; ++source) {
    CHECK(rig.engine.peakFFTband(source, 0, 60, 0) == 0.0F);  // nothing was put there
    const std::uint32_t array = arrays[source - 4];
    plain::Values block(128);
    for (std::size_t i = 0; i < 128; ++i) {
      // an offset that one removal does not take out cleanly
      block[i] = std::sin(static_cast<double>(i) * 0.3) + 1e14 / 3.0 * source;
      rig.engine.putcomplexDoubleToBuffer(array, static_cast<std::int64_t>(i), block[i]);
    }
    for (int round = 0; round < 12; ++round) {
      const Ask ask = round % 6 < 3 ? Ask{0, 60, source % 2} : randomAsk(random);
      if (round == 6) {
        block[3] = 5.0;
        rig.engine.putcomplexDoubleToBuffer(array, 3, 5.0);
      }
      const float value = rig.engine.peakFFTband(source, ask.low, ask.high, ask.mode);
      const plain::Answer fresh = plain::bandQuery(block, ask.low, ask.high, ask.mode);
      REQUIRE(same(value, fresh.value));
      REQUIRE(same(fft::peakFrequencyX, fresh.frequency));
      REQUIRE(rig.engine.getcomplexDoubleFromBuffer(array, 77).real == block[77]);
    }
  }
}

TEST_CASE("queries that compute nothing") {
  EngineRig rig;
  rig.fillNoise(2000);
  rig.use(0);
  fft::peakFrequencyX = 4.5F;
  for (const Ask ask : {Ask{0, 60, 2}, Ask{0, 60, -1}}) {
    CHECK(rig.engine.peakFFTband(0, ask.low, ask.high, ask.mode) == 0.0F);
  }
  CHECK(rig.engine.peakFFTband(10, 0, 60, 0) == 0.0F);
  CHECK(rig.engine.peakFFTband(-1, 0, 60, 0) == 0.0F);
  CHECK(fft::peakFrequencyX == 4.5F);
  CHECK(rig.engine.peakFFTbandF(0, 8, 60, 1) == fft::peakFrequencyX);
  CHECK(fft::peakFrequencyX >= 8.0F);
  fft::fftp = 1000;  // no transform has this length
  CHECK(rig.engine.peakFFTband(0, 0, 60, 0) == 0.0F);
}

TEST_CASE("queries from several threads meet writes and changes, and settle on fresh answers") {
  EngineRig rig;
  rig.fillNoise(7000);
  rig.use(0);
  std::atomic<long> asked{0};
  std::vector<std::jthread> threads;
  for (unsigned seed = 0; seed < 3; ++seed) {
    threads.emplace_back([&, seed](const std::stop_token& stop) {
      std::mt19937 random(seed);
      while (!stop.stop_requested()) {
        const Ask ask = randomAsk(random);
        rig.engine.peakFFTband(static_cast<std::int32_t>(random() % 10), ask.low, ask.high,
                               ask.mode);
        asked.fetch_add(1);
      }
    });
  }
  threads.emplace_back([&](const std::stop_token& stop) {
    while (!stop.stop_requested()) rig.engine.timerUpdate();
  });
  std::mt19937 random(33);
  for (int round = 0; round < 300; ++round) {
    for (int change = 0; change < 5; ++change) changeSomething(rig, random);
    rig.engine.putcomplexDoubleToBuffer(2 + random() % 8, static_cast<std::int64_t>(random() % 99),
                                        0.5 * static_cast<double>(random() % 9));
    // The world holds still while the others go on asking: every answer must be the fresh one.
    const auto channel = static_cast<std::int32_t>(random() % 4);
    const Ask ask = randomAsk(random);
    plain::Values block = plain::fetch(rig.store, rig.engine, channel, buffer::ploop, fft::fftp);
    const float fresh = plain::bandQuery(block, ask.low, ask.high, ask.mode).value;
    REQUIRE(same(rig.engine.peakFFTband(channel, ask.low, ask.high, ask.mode), fresh));
  }
  while (asked < 1000) std::this_thread::yield();
}
