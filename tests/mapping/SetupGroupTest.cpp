#include <bit>
#include <doctest/doctest.h>
#include <random>

#include "MappingRig.h"
#include "SetupGroup.h"

using namespace ovka;
using ovka::testing::MappingRig;

namespace {

// A random value of a field that six decimals hold exactly.
double anyValue(const SetupField& field, std::mt19937& random) {
  const double low = std::max(field.minimum, -1000.0);
  const double high = std::min(field.maximum, 1000.0);
  const double value = std::uniform_real_distribution<double>(low, high)(random);
  return field.access.real ? std::round(value * 64) / 64 : std::round(value);
}

}  // namespace

TEST_CASE("documents bring every set-up back, bit for bit") {
  MappingRig rig;
  SetupGroup groups[] = {SetupGroup(rig.band), SetupGroup(rig.single)};
  MidiMapping* mappings[] = {&rig.band, &rig.single};
  std::mt19937 random(5);
  for (std::size_t g = 0; g < 2; ++g) {
    CHECK(!groups[g].available());
    std::size_t entries = 0;
    for (const SetupField& field : mappings[g]->fields()) {
      if (field.entry == 0) continue;
      entries += field.access.rows;
      for (std::size_t row = 0; row < field.access.rows; ++row) {
        for (std::size_t setup = 0; setup < 128; ++setup) {
          field.set(row, setup, anyValue(field, random));
        }
      }
    }
    CHECK(entries == (g == 0 ? 71 : 46));
    std::vector<std::string> texts = groups[g].texts();
    REQUIRE(texts.size() == 128 * 129);
    for (std::size_t setup = 0; setup < 128; ++setup) CHECK(texts[setup * 129] == "129");
    CHECK(texts[127 * 129 + 128] == "0");
    const auto values = [&] {
      std::vector<double> all;
      for (const SetupField& field : mappings[g]->fields()) {
        for (std::size_t i = 0; field.entry != 0 && i < field.access.rows * 128; ++i) {
          all.push_back(field.access.live(i / 128, i % 128));
          all.push_back(field.access.edit(i / 128, i % 128));
        }
      }
      return all;
    };
    const std::vector<double> before = values();
    g == 0 ? setmidiband::setDefaults() : setmidi::setDefaults();
    CHECK(values() != before);
    groups[g].put(texts);
    CHECK(values() == before);
    CHECK(groups[g].texts() == texts);
    CHECK(groups[g].available());
  }
}

TEST_CASE("a damaged group changes what it can, in silence") {
  using namespace setmidiband;
  MappingRig rig;
  SetupGroup group(rig.band);
  MIDIoutONEX.set(1, 1);
  CHECK(rig.tick().size() == 8);
  struct Row {
    std::size_t part, index;
    std::string text;
    const char* name;
    double value;
  };
  const Row rows[] = {
      {3, 15, "8.250000", "LowF1X[3]", 8.25}, {3, 16, "nan", "LowF2X[3]", 2},
      {3, 17, "-5.0", "LowF3X[3]", 4},        {3, 31, "128", "bandNote1X[3]", 60},
      {3, 32, "", "bandNote2X[3]", 61},       {3, 39, "15", "MIDIchannel1X[3]", 15},
      {3, 9, "1e999", "gainNoteX[3]", 2},     {3, 54, "1e30", "bandOut8X[3]", double{1e30F}},
  };
  rig.band.beginPut();
  CHECK(rig.notes.sounding().empty());
  for (const Row& row : rows) group.set(row.part, row.index, row.text);
  group.set(128, 1, "1");
  group.set(0, 129, "1");
  group.set(0, 128, "7");
  rig.notes.take();
  CHECK(rig.tick(1.0).empty());
  rig.band.endPut();
  CHECK(rig.tick(1.0).size() == 8);
  for (const Row& row : rows) {
    CAPTURE(row.text);
    CHECK(rig.band.value(row.name) == row.value);
  }
  CHECK(group.get(0, 128) == "0");
  CHECK(group.get(128, 1).empty());
  // Digits that a text cannot hold survive a document that says the same.
  const float fine = std::bit_cast<float>(0x3DCCCCCEU);
  gainNoteX.set(8, fine);
  group.set(8, 9, group.get(8, 9));
  CHECK(gainNoteX[8] == fine);
  // Programs of the roles go out again.
  setmidi::MIDIoutONX.set(2, 1);
  setmidi::MIDIprogramchangeVX.set(2, 1);
  setmidi::OutputVX.set(2, 19.5F);
  SetupGroup single(rig.single);
  rig.notes.take();
  single.put(single.texts());
  CHECK(rig.notes.take() == std::vector<std::string>{"Program 19 s2 c0 p0 qt1"});
}
