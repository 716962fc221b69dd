#include <array>
#include <doctest/doctest.h>
#include <numeric>
#include <thread>
#include <vector>

#include "ByteRing.h"
#include "EndpointTable.h"
#include "OutgoingMidi.h"
#include "SendRing.h"

namespace {

TEST_CASE("many senders, one reader: nothing lost, each sender's order kept") {
  constexpr std::uint64_t kSenders = 4;
  constexpr std::uint64_t kEach = 20'000;
  ovka::SendRing<std::uint64_t, 64> ring;
  std::vector<std::thread> senders;
  for (std::uint64_t s = 0; s < kSenders; ++s) {
    senders.emplace_back([&ring, s] {
      for (std::uint64_t n = 0; n < kEach; ++n) {
        while (!ring.push(s * kEach + n)) std::this_thread::yield();
      }
    });
  }
  std::array<std::uint64_t, kSenders> next{};
  std::uint64_t wrong = 0;
  for (std::uint64_t taken = 0; taken < kSenders * kEach;) {
    std::uint64_t value = 0;
    if (!ring.pop(value)) {
      std::this_thread::yield();
      continue;
    }
    ++taken;
    wrong += value % kEach != next[value / kEach]++ ? 1 : 0;
  }
  for (auto& sender : senders) sender.join();
  CHECK(wrong == 0);
  CHECK(ring.empty());
}

TEST_CASE("the byte queue hands over whole records around its end") {
  ovka::ByteRing ring(64);
  std::thread writer([&] {
    for (std::uint8_t n = 0; n < 250; ++n) {
      const std::vector<std::uint8_t> front{n};
      const std::vector<std::uint8_t> rest(n % 40U, n);
      while (!ring.write(front, rest)) std::this_thread::yield();
    }
  });
  std::size_t wrong = 0;
  for (std::uint8_t n = 0; n < 250; ++n) {
    std::vector<std::uint8_t> record(1 + n % 40U);
    while (ring.waiting() == 0) std::this_thread::yield();
    ring.read(record);
    for (const std::uint8_t byte : record) wrong += byte != n ? 1 : 0;
  }
  writer.join();
  CHECK(wrong == 0);
  CHECK_FALSE(ring.write(std::vector<std::uint8_t>(33), std::vector<std::uint8_t>(32)));
}

TEST_CASE("a name keeps its id, a number given to somebody else does not") {
  ovka::EndpointTable table;
  CHECK(table.replace({{"synth", 10}, {"box", 11}, {"synth", 12}}));
  const auto first = table.endpoints();
  REQUIRE(first.size() == 3);
  CHECK(first[2].name == "synth #2");
  CHECK_FALSE(table.replace({{"synth", 10}, {"box", 11}, {"synth", 12}}));

  CHECK(table.replace({{"other", 10}}));  // the synth's number
  CHECK(table.address(first[0].id) == 0);
  CHECK(table.address(table.endpoints()[0].id) == 10);
  CHECK(table.replace({{"box", 20}, {"synth", 21}}));
  CHECK(table.address(first[0].id) == 21);
  CHECK(table.nameOf(first[1].id) == "box");
  CHECK_FALSE(table.nameOf(first[2].id).has_value());
  CHECK(table.address(0) == 0);

  // More names than places: those away longest give way, and their ids lead nowhere.
  for (int i = 0; i < 3000; ++i) {
    table.replace({{"box", 20}, {"passing " + std::to_string(i), 30}});
  }
  CHECK(table.endpoints().size() == 2);
  CHECK(table.address(first[1].id) == 20);
  CHECK(table.address(first[0].id) == 0);
  table.replace({{"synth", 40}});
  CHECK(table.address(table.endpoints()[0].id) == 40);
}

TEST_CASE("whole messages alone are sent") {
  using Bytes = std::vector<std::uint8_t>;
  for (const Bytes& good : {Bytes{0x80, 0, 0},
                            {0xEF, 127, 127},
                            {0xC0, 5},
                            {0xD7, 5},
                            {0xF8},
                            {0xF1, 3},
                            {0xF2, 1, 2},
                            {0xF3, 9},
                            {0xF6},
                            {0xFE}}) {
    CHECK(ovka::wholeMidiMessage(good));
  }
  for (const Bytes& bad : {Bytes{},
                           {0x90, 60},
                           {0xC0, 1, 2},
                           {60, 100, 0},
                           {0x90, 0x80, 1},
                           {0x90, 1, 0xFF},
                           {0xF0, 1, 0xF7},
                           {0xF4},
                           {0xF7},
                           {0x90, 1, 2, 3}}) {
    CHECK_FALSE(ovka::wholeMidiMessage(bad));
  }
}

}  // namespace
