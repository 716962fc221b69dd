#include <doctest/doctest.h>
#include <numeric>

#include "EngineRig.h"

using namespace ovka;
using ovka::testing::EngineRig;

TEST_CASE("window tables: values, symmetry and gain words") {
  struct Row {
    char code;
    std::int32_t bits;
    std::int32_t gainWord, first, second;
  };
  // Second values by hand: step = 6.283185307 / 1023, e.g. Hanning 0.5 * (1 - cos(step)) * 32767.
  for (const Row& row :
       {Row{'b', 10, 9, 0, 0}, Row{'m', 10, 7, 2621, 2621}, Row{'n', 10, 8, 0, 0},
        Row{'t', 10, 8, 0, 64}, Row{'r', 10, 4, 32767, 32767}, Row{'r', 7, 32, 32767, 32767},
        Row{'n', 7, 64, 0, 20}, Row{'r', 16, 0, 32767, 32767}}) {
    CAPTURE(row.code);
    CAPTURE(row.bits);
    const std::vector<std::int32_t> table = windowTable(row.bits, row.code);
    const std::size_t points = std::size_t{1} << row.bits;
    REQUIRE(table.size() == points + 2);
    CHECK(table[points] == row.gainWord);
    CHECK(table[points + 1] == 0);
    CHECK(table[0] == row.first);
    CHECK(table[1] == row.second);
    for (std::size_t i = 0; i < points; ++i) REQUIRE(table[i] == table[points - 1 - i]);
    CHECK(table[points / 2 - 1] >= 32700);  // every shape is near full height in the middle
  }
  CHECK(windowTable(10, 'x').empty());
}

TEST_CASE("sine and bit-reversal tables") {
  const std::vector<std::int32_t> sine = sineTable(8);
  CHECK(sine[128] == 0);
  CHECK(sine[128 + 64] == 32767);
  CHECK(sine[64] == -32767);
  CHECK(sine[128 + 1] == 804);  // 32767 * sin(pi / 128) = 804.15

  const std::vector<std::int32_t> whole = bitReversalTable(4, false);
  CHECK(whole == std::vector<std::int32_t>{0, 8, 4, 12, 2, 10, 6, 14, 1, 9, 5, 13, 3, 11, 7, 15});
  // Swapping wherever a partner is named must put every position right, each pair once.
  for (const std::int32_t bits : {3, 7, 12}) {
    const std::vector<std::int32_t> pairs = bitReversalTable(bits, true);
    std::vector<std::int32_t> order(pairs.size());
    std::iota(order.begin(), order.end(), 0);
    for (std::size_t j = 0; j < pairs.size(); ++j) {
      const auto partner = static_cast<std::size_t>(pairs[j]);
      if (partner == 0) continue;
      CHECK(partner < j);
      std::swap(order[j], order[partner]);
    }
    CHECK(order == bitReversalTable(bits, false));
  }
}

TEST_CASE("fftinit publishes tables, prints, and starts the counters anew") {
  EngineRig rig;
  CHECK(rig.engine.windReturn(5) == 0);  // none yet
  static_cast<void>(rig.print.take());
  rig.engine.fftinit(10, 'b');
  rig.engine.fftinit2(7, 'r');
  CHECK(rig.print.take() == "fftinit\nfftinit2\n");
  CHECK(fft::stratFFTinit == 0);
  CHECK(rig.engine.windReturn(1024) == 9);
  CHECK(rig.engine.tables(true)->points == 128);
  const AnalysisTableSet* before = rig.engine.tables();
  fft::avPeakCount.set(2, 17);
  rig.engine.fftinit(8, 'x');
  CHECK(fft::avPeakCount[2] == 0);
  CHECK(rig.engine.windReturn(3) == 0);
  CHECK(rig.engine.tables()->revs.size() == 256);
  CHECK(rig.engine.windReturn(-1) == 0);
  rig.engine.fftinit(17, 'n');  // impossible: nothing changes
  CHECK(rig.engine.tables()->points == 256);
  rig.engine.fftinit(10, 'b');
  CHECK(rig.engine.tables() == before);  // built once
}

TEST_CASE("choices out of range are refused or count as gain 1") {
  EngineRig rig;
  CHECK(fft::selectFFTpoint(9));
  CHECK(fft::fftp == 65536);
  CHECK_FALSE(fft::selectFFTpoint(10));
  CHECK(fft::fftp == 65536);
  fft::setGain2Number = 12;
  CHECK(fft::appliedGain(1) == 0.25);
  fft::setGain1NumberSound = 15;
  CHECK(fft::appliedGain(4) == 3.05 * 0.25);
}
