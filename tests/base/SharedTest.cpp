#include <array>
#include <cstdint>
#include <doctest/doctest.h>
#include <thread>

#include "Shared.h"
#include "SharedArray.h"
#include "srtToLong.h"

TEST_CASE("who sees the new position sees what was stored before it") {
  ovka::Shared<std::int64_t> position{0};
  std::array<std::int32_t, 10000> memory{};
  ovka::SharedArray<std::int32_t> values(memory.data(), memory.size());
  std::thread writer([&] {
    for (std::int64_t i = 0; i < 10000; ++i) {
      values.set(static_cast<std::size_t>(i), static_cast<std::int32_t>(i + 1));
      position = i + 1;
    }
  });
  std::int64_t wrong = 0;
  for (std::int64_t seen = 0; seen < 10000;) {
    seen = position;
    if (seen > 0 && values.get(static_cast<std::size_t>(seen - 1)) != seen) ++wrong;
  }
  writer.join();
  CHECK(wrong == 0);
}

TEST_CASE("digit strings are read from the end") {
  struct Case {
    const char* text;
    std::int64_t value;
  };
  for (const Case& c : {Case{"", 0}, Case{"0", 0}, Case{"432000", 432000}, Case{"-17", -17},
                        Case{"1-7", -107}, Case{"4.6.4", 40604}, Case{" 12", 12}, Case{"12 ", 120},
                        Case{"x5", 5}, Case{"999999999999999999", 999999999999999999},
                        Case{"1999999999999999999", 999999999999999999},
                        Case{"-123456789012345678901234567890", -345678901234567890}}) {
    CAPTURE(c.text);
    CHECK(ovka::srtToLong(c.text) == c.value);
  }
}
