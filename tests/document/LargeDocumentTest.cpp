#include <doctest/doctest.h>

#include "DocumentFixture.h"
#include "HexCoding.h"

using namespace ovka;
using testing::Session;

// Documents of several megabytes: their halves are checked and loaded by several threads.

namespace {

constexpr std::int64_t kPoints = 120'000;

std::int32_t sampleAt(std::int32_t channel, std::int64_t point) {
  return static_cast<std::int32_t>((point * 7919 + channel * 104729) % 33554432 - 16777216);
}

std::string largeDocument(Session& at) {
  REQUIRE(at.store.initMalloc(kPoints));
  at.allChannels();
  for (std::int32_t channel = 0; channel < buffer::kChannels; ++channel) {
    for (std::int64_t i = 0; i < kPoints; ++i)
      at.store.putIntToBuffer(channel, i, sampleAt(channel, i));
  }
  buffer::ploop = kPoints;
  const std::string text = at.saved();
  REQUIRE(text.size() > (4U << 20U));
  return text;
}

/// The text with `between` after every `every` characters of a sample block, instead of the line
/// ends of this program.
std::string laidOut(const std::string& text, std::size_t every, const std::string& between) {
  std::string out;
  std::size_t inside = 0;
  for (const char c : text) {
    if (c == '<') inside = 1;
    if (c == '>') inside = 0;
    if (inside > 0 && c == '\n') continue;
    out += c;
    if (inside > 0 && c != '<' && inside++ % every == 0) out += between;
  }
  return out;
}

int wrongSamples(const Session& at) {
  int wrong = 0;
  for (std::int32_t channel = 0; channel < buffer::kChannels; ++channel) {
    for (std::int64_t i = 0; i < kPoints; ++i)
      wrong += at.store.storedValue(channel, i) != sampleAt(channel, i) ? 1 : 0;
  }
  return wrong;
}

}  // namespace

TEST_CASE("a large document is read right, however its digits are laid out") {
  Session at;
  const std::string text = largeDocument(at);
  const std::vector<std::pair<const char*, std::string>> layouts{
      {"as written", text},
      {"in one line", laidOut(text, SIZE_MAX, "")},
      {"one more character before", "{ " + text.substr(1)},
      {"groups of four bytes", laidOut(text, 8, " ")},
      {"torn pairs", laidOut(text, 4001, "\n")},
      {"lines of torn samples", laidOut(text, 1002, " \r\n\t")},
  };
  for (const auto& [name, layout] : layouts) {
    CAPTURE(name);
    for (std::int32_t channel = 0; channel < buffer::kChannels; ++channel) {
      for (std::int64_t i = 0; i < kPoints; ++i) at.store.putIntToBuffer(channel, i, -1);
    }
    REQUIRE(at.opened(layout) == "");
    CHECK(buffer::ploop == kPoints);
    CHECK(wrongSamples(at) == 0);
  }
}

TEST_CASE("a fault of a large document is found at its place, and nothing is changed") {
  Session at;
  const std::string text = largeDocument(at);
  const auto placeOf = [&](std::size_t byte) {
    const std::size_t line = static_cast<std::size_t>(
        std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(byte), '\n'));
    const std::size_t begin = text.rfind('\n', byte - 1) + 1;
    return "line " + std::to_string(line + 1) + ", column " + std::to_string(byte - begin + 1);
  };
  for (const double part : {0.01, 0.3, 0.499, 0.501, 0.6, 0.75, 0.99}) {
    CAPTURE(part);
    const auto byte = static_cast<std::size_t>(part * static_cast<double>(text.size()));
    if (hexDigit(text[byte]) < 0) continue;
    std::string broken = text;
    broken[byte] = 'x';
    CHECK(at.opened(broken).starts_with(placeOf(byte)));
    broken.resize(byte);
    CHECK(at.opened(broken).starts_with(placeOf(byte)));
  }
  CHECK(wrongSamples(at) == 0);
}

TEST_CASE("a channel that is shorter than channel 0 ends in zeros, not in an older recording") {
  Session at;
  std::string text = largeDocument(at);
  const std::size_t begin = text.find('<', text.find("OVKA4dataCH2")) + 1;
  text.erase(begin + 8000, text.find('>', begin) - begin - 8000);
  REQUIRE(at.opened(text) == "");
  CHECK(at.store.storedValue(2, 999) == sampleAt(2, 999));
  CHECK(at.store.storedValue(2, 1000) == 0);
  CHECK(at.store.storedValue(2, kPoints - 1) == 0);
  CHECK(at.store.storedValue(3, kPoints - 1) == sampleAt(3, kPoints - 1));
}
