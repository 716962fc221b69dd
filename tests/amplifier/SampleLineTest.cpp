#include <array>
#include <doctest/doctest.h>
#include <limits>
#include <random>

#include "DecoderBench.h"
#include "SampleLineDecode.h"

using namespace ovka;

namespace {

Frame decode(const SampleLine& decoding, std::string_view line) {
  return decoding.decode(reinterpret_cast<const std::uint8_t*>(line.data()));
}

/// "-" for a channel that the frame leaves alone.
std::string shown(const Frame& frame) {
  std::string text;
  for (std::size_t channel = 0; channel < frame.values.size(); ++channel) {
    text += frame.present[channel] ? std::to_string(frame.values[channel]) : "-";
    if (channel < 4) text += " ";
  }
  return text;
}

}  // namespace

TEST_CASE("channels of every model and configuration") {
  using namespace std::string_view_literals;
  const std::string_view text = "800 201 1ff FFG\r";  // 2048, 513, 511, 4080 ("G" counts 0)
  const std::string_view record = "FFF 000 7FF 800 001\r";
  const std::string_view hex = "800 001 7FF FFF\r";
  const std::string_view binary =
      "\x80\x00\x04\x7F\xFF\xFC\x80\x00\x08\x00\x00\x00\xFF\xFF\xFF\r"sv;
  struct Row {
    std::uint32_t model, config;
    bool old, reverse;
    std::string_view line;
    const char* frame;
  };
  const std::vector<Row> rows{
      {0, 0, false, false, text, "- 3072 2 - -"},
      {0, 1, false, true, text, "- 3072 2 3072 -2"},
      {1, 2, false, true, text, "- 3072 2 -2 -"},
      {3, 3, false, true, text, "- 3072 2 -2 7136"},
      {0, 1, true, true, record, "-1 0 2047 - -"},
      {2, 2, true, false, record, "-1 0 2047 -2048 -"},
      {0, 3, true, false, record, "-1 0 2047 -2048 1"},
      {4, 0, false, true, hex, "- 1 -1 - -"},
      {6, 1, false, false, hex, "- 1 -1 - -"},
      // bytes 3, 7 and 11 are 070: (112 - 512) times 2 and 2000
      {9, 2, false, false, "8000010700f0fff\r", "- 20 -10403841 -1600000 -"},
      {7, 3, false, false, binary, "10485758 5 -5 10 -10485760"},
      {8, 3, true, false, binary, "10485758 5 -5 10 -10485760"},
      {6, 4, false, false, binary, "- - - - -"},
      {10, 1, false, false, text, "- - - - -"},
  };
  for (const Row& row : rows) {
    CAPTURE(row.model);
    CAPTURE(row.config);
    SampleLine decoding;
    decoding.model = row.model;
    decoding.config = row.config;
    decoding.oldBluetooth = row.old;
    decoding.showReverseWave = row.reverse;
    CHECK(shown(decode(decoding, row.line)) == row.frame);
  }
}

TEST_CASE("gains and offsets") {
  CHECK(gainFactor(0.0F) == 1.0F);
  CHECK(gainFactor(1.0F) == 2.0F);
  CHECK(gainFactor(-1.0F) == 0.5F);
  struct Row {
    std::uint32_t model, config;
    float left, right;
    std::int32_t filter;
    const char* line;
    const char* frame;
  };
  amplifier::resetVariables();
  buffer::resetVariables();
  amplifier::DCoffSetCH1X1000 = 1;
  amplifier::DCoffSetCH1X10000 = 59;  // 59 / 20 truncates to 2
  amplifier::DCoffSetCH1X100000 = 300;
  amplifier::DCoffSetCH2X1000 = -1;
  amplifier::DCoffSetCH2X10000 = -59;
  amplifier::DCoffSetCH2X100000 = -300;
  const char* const middle = "800 000 800 000\r";
  const std::vector<Row> rows{
      {0, 3, 0.0F, 0.0F, 0, "200 200 202 1FE\r", "- -4 4 0 0"},
      {0, 3, 1.0F, -1.0F, 0, "202 206 203 1FF\r", "- 0 8 4 1"},
      {5, 1, 0.0F, 0.0F, 0, middle, "- -450 450 - -"},
      {5, 1, 0.5F, -1.0F, 5, middle, "- -675 225 - -"},
      {6, 1, 0.0F, 0.0F, 6, "800 004 7FF FFC\r", "- 5 -5 - -"},
      {6, 1, 0.0F, 0.0F, 10, "FFF FFF 000 000\r", "- 0 0 - -"},
      // Whole gain factors only: 2.5 counts 2, 0.5 counts 0; offsets for the first pair alone.
      {6, 3, 1.5F, -1.0F, 6, "\x80\x01\x70\x80\x01\x68\x80\x01\x68\x80\x01\x68\x80\x01\x68\r",
       "0 20 0 900 0"},
  };
  for (const Row& row : rows) {
    CAPTURE(&row - rows.data());
    buffer::SelectDevice = row.model;
    buffer::DeviceConfig = row.config;
    amplifier::hardwareGainCH1 = row.left;
    amplifier::hardwareGainCH2 = row.right;
    amplifier::SelectLSFset = row.filter;
    CHECK(shown(decode(SampleLine::current(), row.line)) == row.frame);
  }
  amplifier::resetVariables();
}

TEST_CASE("products are rounded as the factors are typed") {
  SampleLine decoding;
  decoding.amplifierGain = 0.98F;
  CHECK(decode(decoding, "800 400 000 000\r").values[1] == 3010);  // 3010.56
  // Single precision has 24 bits: three times the largest code cannot be held exactly.
  decoding.model = 6;
  decoding.config = 3;
  decoding.amplifierGain = 1.0F;
  decoding.gain = {3.0F, 1e30F};
  const std::array<std::uint8_t, 3> largest{0xFF, 0xFF, 0xFF};
  CHECK(decoding.binary24(largest.data(), 1) == 31457275);  // 25165820 * 1.25, not 31457276
  CHECK(decoding.binary24(largest.data(), 2) == std::numeric_limits<std::int32_t>::max());
  CHECK(decoding.binary24(largest.data(), 0) == 0);
  CHECK(decoding.binary24(largest.data(), 6) == 0);
}

TEST_CASE("the decode chosen for a block gives what the decode of a line gives") {
  std::mt19937 generator(3);
  const auto random = [&] { return static_cast<std::uint32_t>(generator()); };
  const std::array<float, 7> factors{1.0F, 0.0F, 1.0F / 3.0F, 2.5F, 20.0F, 60.0F, 1e30F};
  const std::array<std::int64_t, 4> offsets{0, 1000, -123456, std::int64_t{1} << 28U};
  std::int64_t differences = 0;
  std::int64_t chosen = 0;  // settings under which nothing need be held
  for (int trial = 0; trial < 4000; ++trial) {
    SampleLine decoding;
    decoding.model = random() % 11;
    decoding.config = random() % 5;
    decoding.oldBluetooth = random() % 6 == 0;
    decoding.showReverseWave = random() % 2 == 0;
    decoding.filterSetUp = static_cast<std::int32_t>(random() % 9) - 1;
    decoding.amplifierGain = random() % 2 == 0 ? 1.0F : 0.98F;
    decoding.gain = {factors[random() % 7], factors[random() % 7]};
    decoding.binaryOffset = {offsets[random() % 4], offsets[random() % 4]};
    decoding.textOffset[0] = static_cast<std::int32_t>(offsets[random() % 4] / 20);
    if (decoding.staysInRange()) ++chosen;
    std::array<std::uint8_t, SampleLine::kRecordBytes> line{};
    const bool text = random() % 2 == 0;
    decoding.withDecode([&](auto decode) {
      for (int i = 0; i < 20; ++i) {
        for (std::uint8_t& byte : line) byte = static_cast<std::uint8_t>(random());
        if (text) line.fill(i % 2 == 0 ? 'F' : '0');  // the codes that reach furthest
        if (shown(decode(line.data())) != shown(decoding.decode(line.data()))) ++differences;
      }
    });
  }
  CHECK(differences == 0);
  CHECK(chosen > 500);
  CHECK(chosen < 3500);
}

TEST_CASE("a range that might not hold every value is told") {
  SampleLine decoding;
  CHECK(decoding.staysInRange());
  decoding.gain[SampleLine::Right] = 1000.0F;
  CHECK(!decoding.staysInRange());
  decoding.gain[SampleLine::Right] = std::numeric_limits<float>::quiet_NaN();
  CHECK(!decoding.staysInRange());
  decoding = {};
  decoding.amplifierGain = std::numeric_limits<float>::quiet_NaN();
  CHECK(!decoding.staysInRange());
  decoding = {};
  decoding.binaryOffset[SampleLine::Left] = std::int64_t{3} << 28U;
  CHECK(!decoding.staysInRange());
}
