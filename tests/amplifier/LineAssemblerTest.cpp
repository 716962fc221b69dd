#include <array>
#include <doctest/doctest.h>

#include "AmplifierStreams.h"
#include "DecoderBench.h"
#include "LineAssembler.h"
#include "PlainLineRules.h"

using namespace ovka;
using testing::AmplifierStream;
using testing::Bytes;
using testing::bytesOf;
using testing::DecoderBench;
using testing::PlainLineRules;

TEST_CASE("random streams of every model come through as the plain rules say") {
  for (std::uint32_t model = 0; model < 10; ++model) {
    for (std::uint32_t config = 0; config < 4; ++config) {
      CAPTURE(model);
      CAPTURE(config);
      AmplifierStream stream(model, config, false, 31 * model + config);
      DecoderBench bench(model, config);
      PlainLineRules rules;
      Bytes pending;
      for (int n = 0; n < 3000; ++n) {
        Bytes frame = stream.frame();
        // Now and then a byte is lost, doubled or becomes a carriage return.
        const auto at = static_cast<std::ptrdiff_t>(stream.below(16));
        if (n % 50 == 17) frame.erase(frame.begin() + at);
        if (n % 50 == 31) frame.insert(frame.begin() + at, frame[static_cast<std::size_t>(at)]);
        if (n % 50 == 43) frame[static_cast<std::size_t>(at)] = 13;
        pending.insert(pending.end(), frame.begin(), frame.end());
        // Batches mostly end between frames, sometimes inside one; none is short enough to be
        // taken for a status block.
        const std::size_t cut = stream.below(10) == 0 ? stream.below(8) : 0;
        if (pending.size() < 60 + cut || stream.below(3) == 0) continue;
        const auto end = pending.end() - static_cast<std::ptrdiff_t>(cut);
        const Bytes block(pending.begin(), end);
        pending.erase(pending.begin(), end);
        rules.takeBlock(block);
        bench.decoder.printNumberSTR(block);
      }
      REQUIRE(bench.decoder.framesStored() == static_cast<std::int64_t>(rules.samples.size()));
      CHECK(rules.samples.size() > 2000);
      CHECK(bench.losses.longLines.get() == rules.tooLong);
      CHECK(bench.losses.wrongLengthLines.get() == rules.wrongLength);
      const SampleLine decoding = SampleLine::current();
      bool same = true;
      for (std::size_t n = 0; n < rules.samples.size(); ++n) {
        const Frame expected = decoding.decode(rules.samples[n].data());
        const auto stored = bench.at(static_cast<std::int64_t>(n));
        for (std::size_t c = 1; c < 5; ++c) same = same && stored[c] == expected.values[c];
      }
      CHECK(same);
    }
  }
}

TEST_CASE("the rules at their edges") {
  const std::string text = "800 800 800 800\r";
  // As a binary frame: a 13 as the fourth byte.
  const std::string cut = "\x80\x10\x10\r\x10\x10\x80\x10\x10\x80\x10\x10\x80\x10\x10\r";
  struct Row {
    const char* name;
    std::uint32_t model, config;
    std::vector<std::string> blocks;
    std::int64_t frames;
    long long tooLong, wrongLength;
  };
  const std::vector<Row> rows{
      {"a line", 0, 1, {text}, 1, 0, 0},
      {"a 13 in the frame that opens a block", 6, 3, {cut}, 1, 0, 0},
      {"the same frame later in the block", 6, 3, {cut + cut}, 1, 0, 2},
      {"17 bytes", 0, 1, {"0" + text + text}, 1, 1, 0},
      {"18 bytes leave one over", 0, 1, {"00" + text + text}, 1, 1, 1},
      // A batch that ends inside a line loses it and its neighbour.
      {"cut", 0, 1, {text + "800 80", "0 800 800\r" + text + text}, 2, 1, 1},
      {"split", 0, 1, {text, text}, 2, 0, 0},
      {"short", 0, 1, {text + "800 800\r" + text}, 2, 0, 1},
  };
  for (const Row& row : rows) {
    CAPTURE(row.name);
    DecoderBench bench(row.model, row.config);
    for (const std::string& block : row.blocks) bench.decoder.printNumberSTR(bytesOf(block));
    CHECK(bench.decoder.framesStored() == row.frames);
    CHECK(bench.losses.longLines.get() == row.tooLong);
    CHECK(bench.losses.wrongLengthLines.get() == row.wrongLength);
  }
}

TEST_CASE("sixteen bytes that end at their last one, and nowhere else") {
  std::array<std::uint8_t, 16> bytes{};
  // The neighbours of 13 are what an arithmetic search would mistake for it.
  for (const int value : {0x00, 0x0C, 0x0E, 0x8D, 0xFF}) {
    const auto filling = static_cast<std::uint8_t>(value);
    bytes.fill(filling);
    CHECK(!endsAtLastOf16(bytes.data()));
    bytes[15] = 13;
    CHECK(endsAtLastOf16(bytes.data()));
    for (std::size_t i = 0; i < 15; ++i) {
      bytes[i] = 13;
      CHECK(!endsAtLastOf16(bytes.data()));
      bytes[i] = filling;
    }
  }
}
