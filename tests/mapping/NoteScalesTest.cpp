#include <doctest/doctest.h>
#include <string>

#include "MappingRig.h"
#include "NoteScales.h"

using namespace ovka;
using namespace ovka::setmidi;
using ovka::testing::MappingRig;

TEST_CASE("notes move to the nearest of the scale, ties down, and stay notes") {
  struct Row {
    std::int32_t scale, root;
    std::string notes;  // where 60 to 71 go, as steps above 60
  };
  const Row rows[] = {
      {0, 0, "0 1 2 3 4 5 6 7 8 9 10 11"},  {1, 0, "0 0 2 2 4 5 5 7 7 9 9 11"},
      {2, 0, "0 0 2 3 3 5 5 7 8 8 10 10"},  {3, 0, "0 0 2 2 4 4 7 7 7 9 9 12"},
      {4, 0, "0 0 3 3 3 5 5 7 7 10 10 10"}, {5, 0, "0 0 2 3 3 5 5 7 7 9 10 10"},
      {6, 1, "-1 1 1 3 3 5 5 7 7 9 9 11"},  {9, 0, "0 1 2 3 4 5 6 7 8 9 10 11"},
  };
  for (const Row& row : rows) {
    CAPTURE(row.scale);
    std::string moved;
    for (std::int32_t note = 60; note < 72; ++note)
      moved += (moved.empty() ? "" : " ") +
               std::to_string(mapping::inScale(note, row.scale, row.root) - 60);
    CHECK(moved == row.notes);
    if (row.scale == 0 || row.scale == 9) continue;
    for (const std::int32_t edge : {-2147483647, 0, 127, 2147483647}) {
      const std::int32_t note = mapping::inScale(edge, row.scale, row.root);
      CHECK((note >= 0 && note <= 127));
    }
  }
}

TEST_CASE("a note of a scale is the one that ends; other roles keep their numbers") {
  MappingRig rig;
  ScaleX.set(5, 3);
  MIDIoutONX.set(5, 1);
  OutputFX.set(5, 61);
  OutputVX.set(5, 101);
  rig.single.sendMIDIData(5, 0);
  CHECK(rig.notes.take() == std::vector<std::string>{"OffOn 60 101 0 s5 c0 p0 qt1"});
  MIDIoutONX.set(5, 0);
  const auto ended = rig.tickSingle(1.0);
  REQUIRE(!ended.empty());
  CHECK(ended.front().find("Off 60 ") == 0);
}
