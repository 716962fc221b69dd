#include <doctest/doctest.h>

#include "DecoderBench.h"
#include "StatusLines.h"

using namespace ovka;
using testing::bytesOf;
namespace amp = amplifier;

TEST_CASE("status lines, by themselves, inside a block, and in fixed framing") {
  struct Row {
    const char* line;
    std::int32_t speed, overflow;  // from 7 and 7
    double battery;                // from 7
    const char* printed;
  };
  const std::array<Row, 9> rows{{
      {"sr 256\r", 256, 0, 7.0, "printHrsNumber = 256\n"},
      {"sr 1920\r", 1920, 0, 7.0, "printHrsNumber = 1920\n"},
      {"bl 3FF\r", 7, 0, 15.984375, ""},
      {"ov 0012\r", 7, 12, 7.0, "printHovBNumber = 12\n"},
      {"ov 9999999999\r", 7, 2147483647, 7.0, "printHovBNumber = 2147483647\n"},
      {"fr 0.1234\r", 7, 7, 7.0, ""},
      {"ov 123\r", 7, 123, 7.0, "printHovNumber = 123\n"},  // only as a block of its own
      {"sr\r", 7, 0, 7.0, ""},                              // no digits: only the overflow clears
      {"xyz\r", 7, 7, 7.0, ""},
  }};
  const std::string sample = "800 800 800 800\r";
  for (const Row& row : rows) {
    for (int way = 0; way < 3; ++way) {
      // A long overflow echo ends only behind the protected first bytes of a block.
      if (way == 0 ? std::string(row.printed).starts_with("printHovB") : &row - rows.data() >= 6) {
        continue;
      }
      CAPTURE(row.line);
      CAPTURE(way);
      testing::DecoderBench bench;
      amp::rsMonitor = 7;
      amp::ovMonitor = 7;
      amp::batteryMonitor = 7.0;
      amp::FixedFramingX = way == 2 ? 1 : 0;
      bench.decoder.printNumberSTR(bytesOf(way == 0 ? row.line : sample + row.line + sample));
      CHECK(amp::rsMonitor == row.speed);
      CHECK(amp::ovMonitor == row.overflow);
      CHECK(amp::batteryMonitor == row.battery);
      CHECK(bench.printed == row.printed);
      CHECK(bench.decoder.framesStored() == (way == 0 ? 0 : 2));
    }
  }
}

TEST_CASE("an acknowledgement sets its flag and clears the others of its group") {
  testing::DecoderBench bench;
  // Each group's letters in the order of the flags; y against x and u stands apart.
  const std::array<std::string, 5> groups{"smzqopi", "vw", "eatcd", "fgh", "jk"};
  const auto flagOf = [](char letter) -> Shared<std::int32_t>& {
    for (const Acknowledgement& entry : kAcknowledgements) {
      if (entry.letter == letter) return *entry.flag;
    }
    FAIL("no such letter");
    return amp::ovMonitor;
  };
  const auto send = [&](char letter) {
    // A line of its own ends only behind the protected first bytes of a block.
    bench.decoder.printNumberSTR(bytesOf("800 800 800 800\r" + std::string(4, letter) + "\r"));
  };
  for (const std::string& group : groups) {
    for (const std::string& others : groups) {
      for (const char letter : others) flagOf(letter) = 1;
    }
    for (const char letter : group) {
      send(letter);
      for (const char other : group) CHECK(flagOf(other) == (other == letter ? 1 : 0));
    }
    for (const std::string& others : groups) {
      if (others != group) CHECK(flagOf(others[0]) == 1);
    }
  }
  for (const char letter : {'x', 'u'}) {
    send('y');
    CHECK(amp::print4channelMode == 1);
    CHECK(amp::print2channelMode == 0);
    send(letter);
    CHECK(amp::print4channelMode == 0);
    CHECK(amp::print2channelMode == 1);
  }
  CHECK_FALSE(acknowledge('b'));
  CHECK(bench.losses.wrongLengthLines.get() == 0);
}
