#include <doctest/doctest.h>
#include <limits>

#include "MappingRig.h"
#include "NoteScales.h"

using namespace ovka;
using namespace ovka::setmidi;
using ovka::testing::MappingRig;

namespace {

using Texts = std::vector<std::string>;

void putPeak(std::int32_t channel, std::size_t peak, float power, float frequency) {
  fft::peakFFT(channel).set(2 * peak, power);
  fft::peakFFT(channel).set(2 * peak + 1, frequency);
}

// Set-up 5 with the given roles, its outputs as they stand.
void useRoles(MappingRig& rig, const Texts& roles) {
  setmidi::setDefaults();
  for (const char* off : {"MIDInoteFX", "MIDIvelocityVX"}) {
    CHECK(rig.single.assign(std::string(off) + "[5]", 0).empty());
  }
  for (const std::string& role : roles) CHECK(rig.single.assign(role + "[5]", 1).empty());
  MIDIoutONX.set(5, 1);
  OutputFX.set(5, 60.9F);
  OutputVX.set(5, 100.5F);
}

}  // namespace

TEST_CASE("inputs map linearly, whatever the ranges") {
  constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
  struct Row {
    float low, high, lowOut, highOut, input, output;
  };
  const Row rows[] = {
      {4, 30, 48, 72, 4, 48},      {4, 30, 48, 72, 17, 60},
      {4, 30, 48, 72, 99, 72},     {4, 30, 48, 72, -99, 48},
      {4, 30, 72, 48, 17, 60},     {4, 30, 72, 48, 23.5F, 54},  // falling
      {4, 30, 72, 48, 99, 48},     {30, 4, 48, 72, 17, 60},
      {10, 10, 48, 72, 10, 48},    {10, 10, 48, 72, 11, 72},  // no width
      {10, 10, 72, 48, 9, 72},     {4, 30, 48, 72, kNaN, 48},
      {-3e38F, 3e38F, 0, 1, 0, 0},  // its width is beyond single precision
  };
  for (const Row& row : rows) {
    CAPTURE(row.input);
    CAPTURE(row.lowOut);
    MappingRig rig;
    LowFX.set(9, row.low), HighFX.set(9, row.high);
    LowFNX.set(9, row.lowOut), HighFNX.set(9, row.highOut);
    LowVX.set(9, row.low), HighVX.set(9, row.high);
    LowVNX.set(9, row.lowOut), HighVNX.set(9, row.highOut);
    rig.single.setInputFCalc(row.input, 9);
    rig.single.setInputVCalc(row.input, 9);
    CHECK(OutputFX[9] == row.output);
    CHECK(OutputVX[9] == row.output);
    rig.single.setInputFCalc(row.input, 128);  // no such set-up
  }
}

TEST_CASE("every role sends its message") {
  struct Row {
    Texts roles;
    Texts expected;
  };
  const std::string to = " s5 c0 p0 qt1";
  const Row rows[] = {
      {{"MIDInoteFX"}, {"OffOn 60 100 1" + to}},
      {{"MIDIvelocityFX"}, {"OffOn 100 60 1" + to}},
      {{"MIDInoteFX", "MIDIvelocityFX"}, {"OffOn 60 100 1" + to}},
      {{"MIDInoteFX", "NoteOnOffX"}, {"OnOff 60 100 1" + to}},
      {{"MIDIchannelFX", "MIDInoteFX"}, {"OffOn 60 100 1" + to}},  // moves later notes
      {{"MIDIprogramchangeFX"}, {"Program 60" + to}},
      {{"MIDIpitchbendFX"}, {"Bend 60" + to}},
      {{"MIDIcontrolchangeVFX"}, {"CC 60 100" + to}},
      {{"MIDIcontrolchangeNFX"}, {"CC 100 60" + to}},
      {{"MIDInoteVX"}, {"OffOn 100 60 1" + to}},
      {{"MIDIvelocityVX"}, {"OffOn 60 100 1" + to}},
      {{"MIDIchannelVX", "MIDIprogramchangeVX"}, {"Program 100 s5 c15 p0 qt1"}},
      {{"MIDIpitchbendVX"}, {"Bend 100" + to}},
      {{"MIDIcontrolchangeVVX"}, {"CC 100 60" + to}},
      {{"MIDIcontrolchangeNVX"}, {"CC 60 100" + to}},
      // The V side keeps silent for what the F side has just sent, and for that alone.
      {{"MIDInoteFX", "MIDInoteVX"}, {"OffOn 60 100 1" + to}},
      {{"MIDInoteFX", "MIDIvelocityVX"}, {"OffOn 60 100 1" + to}},
      {{"MIDInoteFX", "MIDIcontrolchangeVVX"}, {"OffOn 60 100 1" + to, "CC 100 60" + to}},
      {{"MIDIcontrolchangeVFX", "MIDIcontrolchangeNVX", "MIDInoteVX"},
       {"CC 60 100" + to, "OffOn 100 60 1" + to}},
  };
  for (const Row& row : rows) {
    CAPTURE(row.roles.front());
    CAPTURE(row.expected.front());
    MappingRig rig;
    useRoles(rig, row.roles);
    rig.single.sendMIDIData(5, 1);
    CHECK(rig.notes.take() == row.expected);
    CHECK(MIDIchannelX[5] == (row.roles.front().starts_with("MIDIchannel") ? 15 : 0));
    MIDIoutONX.set(5, 0);
    rig.single.sendMIDIData(5, 1);
    CHECK(rig.notes.take().empty());
  }
  MappingRig rig;
  useRoles(rig, {"MIDInoteFX"});
  NoteOffOnX.set(5, 0);  // no style: no note
  for (const std::int32_t NOTEN : {1, -7, 2147483647}) rig.single.sendMIDIData(5, NOTEN);
  CHECK(rig.notes.take().empty());
}

TEST_CASE("inputs come from peaks, bands and brain switches") {
  MappingRig rig;
  rig.analysis.band = [](std::int32_t, float low, float high, std::int32_t mode) {
    return low + high + static_cast<float>(mode);
  };
  rig.analysis.frequency = 11;
  display::displayGainX[2] = 2.0F;
  putPeak(2, 0, 30, 10.5F);
  putPeak(2, 2, 8, 12.5F);
  for (std::size_t i = 0; i < fft::kSwitchRow; ++i) {
    fft::peakSWfftCount[2].set(i, static_cast<float>(i));
    fft::peakSWcoherenceCount[3].set(i, static_cast<float>(500 + i));
  }
  struct Row {
    std::string what;
    std::int32_t use, channel, row, log, peaks3;
    float f, v;
    std::size_t evaluations;
  };
  const Row rows[] = {
      {"the strongest peak", 0, 2, 0, 0, 0, 10.5F, 15, 0},
      {"the third peak comes last", 0, 2, 0, 0, 1, 12.5F, 4, 0},
      {"a logarithmic spectrum", 0, 2, 0, 1, 0, 10.5F, 3.1622777F, 0},
      {"a pair has no peaks", 0, 5, 0, 0, 0, -1, -1, 0},
      {"a band", 1, 2, 0, 0, 1, 11, 17.5F, 0},
      {"a pair has no band", 1, 4, 0, 0, 0, -1, -1, 0},
      {"a brain-switch row", 2, 2, 11, 0, 1, 176, 175, 1},
      {"a row that is none", 2, 2, 12, 0, 0, -1, -1, 0},
      {"a pair's row", 2, 7, 2, 0, 0, 531, 530, 1},
      {"the peak search's row", 3, 7, 9, 0, 1, 511, 510, 1},
      {"no such source", 3, 10, 0, 0, 0, -1, -1, 0},
      {"no such input", 4, 2, 0, 0, 0, -1, -1, 0},
  };
  for (const Row& row : rows) {
    CAPTURE(row.what);
    setmidi::setDefaults();
    MIDIoutONX.set(3, 1);
    UsePeakModeX.set(3, row.use);
    OVKAchannelX.set(3, row.channel);
    BSchannelX.set(3, row.row);
    Play3PeaksX.set(3, row.peaks3);
    InputFX.set(3, -1);
    InputVX.set(3, -1);
    fft::LOGpowerONed = row.log;
    rig.analysis.evaluated.clear();
    // The shown set-up moves the sliders as well, and gives the same numbers.
    SetupNX = row.log == 0 ? 3 : 4;
    rig.tickSingle(1.0);
    CHECK(InputFX[3] == row.f);
    CHECK(InputVX[3] == doctest::Approx(row.v));
    CHECK(rig.analysis.evaluated.size() == row.evaluations);
    if (SetupNX == 3) CHECK(rig.view.shown["changeInputFSlider:"] == static_cast<double>(row.f));
  }
}

TEST_CASE("three peaks hold a note each, and every note ends") {
  MappingRig rig;
  MIDIoutONX.set(6, 1);
  Play3PeaksX.set(6, 1);
  for (std::size_t peak = 0; peak < 3; ++peak) {
    putPeak(0, peak, 10, 4.0F + 13.0F * static_cast<float>(peak));
  }
  const Texts three{"OffOn 48 83 0 s6 c0 p0 qt1", "OffOn 60 83 1 s6 c0 p0 qt1",
                    "OffOn 72 83 2 s6 c0 p0 qt1"};
  CHECK(rig.tickSingle() == three);
  CHECK(rig.notes.sounding().size() == 3);
  CHECK(rig.tickSingle(1.0) == three);
  CHECK(rig.notes.sounding().size() == 3);
  CHECK(PlayNote[6] == 1);

  SUBCASE("out of range: its own note ends once, though the output has moved") {
    putPeak(0, 1, 10, 35);
    CHECK(rig.tickSingle(1.0) ==
          Texts{three[0], "Off 72 s6 c0 p0 qt1", "Off 60 s6 c0 p0 qt1", three[2]});
    CHECK(rig.tickSingle(1.0) == Texts{three[0], three[2]});
    putPeak(0, 1, 10, 17);  // the same note again: the slot alone would keep silent
    CHECK(rig.tickSingle(1.0)[1] == "On 60 83 s6 c0 p0 qt1");
    CHECK(rig.tickSingle(1.0) == three);
    putPeak(0, 1, 10, 18.1F);
    rig.tickSingle(1.0);
    CHECK(rig.notes.sounding().count({0, 0, 60}) == 0);
    CHECK(rig.notes.sounding().count({0, 0, 61}) == 1);
  }
  SUBCASE("switched off") {
    MIDIoutONX.set(6, 0);
    rig.tickSingle();
    CHECK(PlayNote[6] == 0);
  }
  SUBCASE("paused") {
    buffer::setPauseX = 1;
    rig.tickSingle();
  }
  SUBCASE("one peak instead of three, sent anew every time, on another channel and port") {
    Play3PeaksX.set(6, 0);
    PlayOnlyNoteChangedX.set(6, 0);
    MIDIchannelX.set(6, 3);
    MIDIportX.set(6, 2);
    const Texts moved = rig.tickSingle(1.0);
    CHECK(moved[0] == "Off 48 s6 c0 p0 qt1");
    CHECK(moved[1] == "OffOn 48 83 10 s6 c3 p2 qt1");
    CHECK(rig.notes.sounding().size() == 1);
    NoteOnOffX.set(6, 1);
    rig.tickSingle(1.0);
  }
  if (buffer::setPauseX == 1 || MIDIoutONX[6] == 0 || NoteOnOffX[6] == 1) {
    CHECK(rig.notes.sounding().empty());
  }
}

TEST_CASE("an input set by hand is mapped at once and sent without fresh inputs") {
  MappingRig rig;
  rig.single.awakeFromNib(12);
  CHECK(rig.view.filled["selectMIDIchannel:"].size() == 16);
  MIDIoutONX.set(12, 1);
  ONInputX.set(12, 0);
  CHECK(rig.perform(rig.single, "changeInputFSlider:", 17));
  CHECK(rig.perform(rig.single, "sendTextInputVSliderField:", 20));
  CHECK(rig.view.shown["changeOutputFSlider:"] == 60.0);
  CHECK(rig.tickSingle() == Texts{"OffOn 60 127 0 s12 c0 p0 qt1"});
  rig.perform(rig.single, "setMIDIoutON:", 0);  // at once: its copy is the tick's snapshot
  CHECK(rig.tickSingle() == Texts{"Off 60 s12 c0 p0 qt1"});
}

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
  CHECK(rig.notes.take() == Texts{"OffOn 60 101 0 s5 c0 p0 qt1"});
  MIDIoutONX.set(5, 0);
  const auto ended = rig.tickSingle(1.0);
  REQUIRE(!ended.empty());
  CHECK(ended.front().find("Off 60 ") == 0);
}
