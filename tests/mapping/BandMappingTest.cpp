#include <doctest/doctest.h>
#include <limits>

#include "MappingRig.h"

using namespace ovka;
using namespace ovka::setmidiband;
using ovka::testing::MappingRig;

namespace {

using Texts = std::vector<std::string>;
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInf = std::numeric_limits<float>::infinity();

}  // namespace

TEST_CASE("every output mode turns a value into its message") {
  struct Row {
    std::string what;
    std::int32_t noteOffOn, noteOnOff, control;
    float gain, value;
    std::string expected;
  };
  const Row rows[] = {
      {"fixed note", 1, 0, 0, 2.0F, 10.7F, "On 60 21 s5 c0 p0 qt0"},
      {"fixed note comes first", 1, 1, 1, 1.0F, 3.0F, "On 60 3 s5 c0 p0 qt0"},
      {"pitch, gain 1", 0, 1, 1, 1.0F, 1.5F, "OffOn 1 50 127 s5 c0 p0 qt0"},
      {"pitch, default gain", 0, 1, 0, 2.0F, 1.5F, "OffOn 3 0 127 s5 c0 p0 qt0"},
      {"pitch, two decimals", 0, 1, 0, 1.0F, 0.29F, "OffOn 0 29 127 s5 c0 p0 qt0"},
      {"pitch, negative", 0, 1, 0, 1.0F, -1.5F, "OffOn -1 -50 127 s5 c0 p0 qt0"},
      {"control", 0, 0, 1, 1.0F, 300.0F, "CC 60 300 s5 c0 p0 qt0"},
      {"no mode", 0, 0, 0, 1.0F, 3.0F, ""},
      {"no number", 1, 0, 0, 2.0F, kNaN, "On 60 0 s5 c0 p0 qt0"},
      {"too large", 1, 0, 0, 2.0F, kInf, "On 60 2147483647 s5 c0 p0 qt0"},
      {"too small", 0, 0, 1, 2.0F, -1e30F, "CC 60 -2147483648 s5 c0 p0 qt0"},
      {"pitch without number", 0, 1, 0, 2.0F, kInf, "OffOn 2147483647 0 127 s5 c0 p0 qt0"},
  };
  for (const Row& row : rows) {
    CAPTURE(row.what);
    MappingRig rig;
    MIDIoutONEX.set(5, 1);
    NoteOffOnEX.set(5, row.noteOffOn);
    NoteOnOffEX.set(5, row.noteOnOff);
    ControlEX.set(5, row.control);
    gainNoteX.set(5, row.gain);
    bandOutX[0].set(5, row.value);
    const Texts texts = rig.tick();
    REQUIRE(texts.size() == (row.expected.empty() ? 0 : 8));
    if (!texts.empty()) CHECK(texts[0] == row.expected);
    if (!texts.empty()) CHECK(texts[7].find(" c7 ") != std::string::npos);
    // Without fresh inputs the same values go out again every interval, not before.
    CHECK(rig.tick(0.09).empty());
    CHECK(rig.tick(0.02) == texts);
  }
}

TEST_CASE("band values come from the source of the set-up") {
  MappingRig rig;
  rig.analysis.band = [](std::int32_t source, float low, float high, std::int32_t mode) {
    return static_cast<float>(source * 1000 + mode * 100) + low + high;
  };
  display::displayGainX[3] = 4.0F;
  display::displayGainX[1] = 0.0F;
  for (std::size_t i = 0; i < fft::kSwitchRow; ++i) {
    fft::peakSWfftCount[2].set(i, static_cast<float>(i));
    fft::peakSWcoherenceCount[5].set(i, static_cast<float>(1000 + i));
  }
  struct Row {
    std::string what;
    std::int32_t source, usePeak, mode;
    float band2, band8;
    Texts asked;
  };
  // Band 2 is 2 to 3.5 Hz, band 8 is 31 to 50 Hz.
  const Row rows[] = {
      {"divided by the display gain", 3, 0, 1, 3105.5F / 4, 3181.0F / 4, {}},
      {"a gain of 0", 1, 0, 0, kInf, kInf, {}},
      {"a pair as it stands", 7, 0, 0, 7005.5F, 7081.0F, {}},
      {"brain-switch counts of a channel", 2, 1, 1, 30, 120, {"2"}},
      {"brain-switch counts of a pair", 9, 1, 1, 1030, 1120, {"9"}},
      {"no such source", 10, 1, 1, 10, 70, {}},
      {"no such input", 2, 2, 1, 10, 70, {}},
  };
  for (const Row& row : rows) {
    CAPTURE(row.what);
    OVKAchannelEX.clear();  // so that the channels stay
    setmidiband::setDefaults();
    MIDIoutONEX.set(0, 1);
    ONInputEX.set(0, 1);
    OVKAchannelEX.set(0, row.source);
    UsePeakModeEX.set(0, row.usePeak);
    PeakPowerEX.set(0, row.mode);
    rig.analysis.evaluated.clear();
    CHECK(rig.tick(1.0).size() == 8);
    CHECK(bandOutX[1][0] == row.band2);
    CHECK(bandOutX[7][0] == row.band8);
    CHECK(bandOutXZ[7][0] == row.band8);
    CHECK(rig.view.shown["bandSlider8:"] == static_cast<double>(row.band8));
    Texts asked;
    for (const std::int32_t channel : rig.analysis.evaluated)
      asked.push_back(std::to_string(channel));
    CHECK(asked == row.asked);
  }
}

TEST_CASE("messages say where they come from, and ports that are gone mean the first") {
  MappingRig rig;
  buffer::ploop = 777;
  MIDIoutONEX.set(9, 1);
  MIDIportEX.set(9, 3);
  rig.notes.ports = 4;
  rig.band.timerUpdate();
  REQUIRE(rig.notes.requests.size() == 8);
  const auto& [text, cause] = rig.notes.requests[6];
  CHECK(text == "On 66 120 s9 c6 p3 qt0");
  CHECK(cause.source == MidiCause::Source::Band);
  CHECK(cause.setup == 9);
  CHECK(cause.band == 6);
  CHECK(cause.sample == 777);
  rig.notes.ports = 3;
  CHECK(rig.band.midiPortReturn(9) == 0);
  rig.notes.requests.clear();
  // What sounded at the port that it left has ended there.
  const Texts moved = rig.tick(1.0);
  CHECK(moved[0] == "Off 60 s9 c0 p3 qt0");
  CHECK(moved[1] == "On 60 0 s9 c0 p0 qt0");
}

TEST_CASE("notes end with the pause, once, and with their set-up") {
  MappingRig rig;
  for (const std::size_t setup : {4U, 5U}) MIDIoutONEX.set(setup, 1);  // the same port and channels
  CHECK(rig.tick().size() == 16);
  CHECK(rig.notes.sounding().size() == 8);
  for (Shared<std::int32_t>* guard : {&startToSaveData, &startToOpenData, &setPauseX}) {
    *guard = 1;
    CHECK(rig.tick(1.0).size() == 16);
    CHECK(rig.notes.sounding().empty());
    CHECK(rig.tick(1.0).empty());
    *guard = 0;
    CHECK(rig.tick(1.0).size() == 16);
  }
  MIDIoutONEX.set(4, 0);
  MIDIoutONEX.set(5, 0);
  CHECK(rig.tick().size() == 16);
  CHECK(rig.notes.sounding().empty());

  // Solo, by a name that says the opposite: 0 plays the shown set-up alone.
  for (const std::size_t setup : {4U, 5U, 6U}) MIDIoutONEX.set(setup, 1);
  MIDIchannelX[0].set(6, 9);
  CHECK(rig.tick(1.0).size() == 24);
  setSoloBandX = 0;
  SetupBandNX = 4;
  const Texts alone = rig.tick(1.0);
  CHECK(std::count_if(alone.begin(), alone.end(), [](const std::string& text) {
          return text.starts_with("On ") && text.find(" s4 ") != std::string::npos;
        }) == 8);
  CHECK(rig.notes.sounding().count({0, 9, 60}) == 0);
  MIDIoutONEX.set(4, 0);  // and off: nothing plays
  rig.tick(1.0);
  CHECK(rig.notes.sounding().empty());
  MIDIoutONEX.set(4, 1);
  setSoloBandX = 1;
  CHECK(rig.tick(1.0).size() == 24);

  rig.band.sendMidiTemporalyOFF();
  CHECK(rig.notes.take().front() == "Stop p0");
  CHECK(rig.notes.sounding().empty());
  rig.band.sendMidiTemporalyOFF();  // a second one forgets nothing
  CHECK(rig.tick(1.0).empty());
  rig.band.sendMidiBackON();
  CHECK(rig.tick(1.0).size() == 24);
  rig.notes.isRunning = false;  // nothing to end where nothing can sound
  rig.band.sendMidiShutDown();
  CHECK(rig.notes.take().empty());
}

TEST_CASE("the window edits the copy of the shown set-up, and a commit takes it over") {
  MappingRig rig;
  setSoloBandX = 1;
  rig.band.awakeFromNib(7);
  CHECK(rig.printed.take() == "MIDI band setSoloBandX awakeFromNib=1\n");
  CHECK(setSoloBandX == 0);
  CHECK(MIDIbandAll == 1);
  CHECK(SetupBandNX == 7);
  CHECK(rig.view.filled["selectMIDIport:"].size() == 24);
  CHECK(rig.view.filled["selectMIDIport:"][23] == "MIDI port 24");
  CHECK(rig.view.filled["selectSendMIDItiming:"][0] == "every 0.01 second");
  CHECK(rig.view.filled["selectMIDIchannel8:"][15] == "16");
  CHECK(rig.view.shown["changeHighFSlider6:"] == 20.5);

  struct Row {
    std::string selector;
    double value;
    std::string name;
    double stored;
    std::string echo;
  };
  const Row rows[] = {
      {"changeLowFSlider1:", 0.75, "LowF1X[7]", 0.75, "sendTextLowFSliderField1:"},
      {"sendTextLowFSliderField8:", -5, "LowF8X[7]", 0, "changeLowFSlider8:"},
      {"changeHighFSlider3:", 9.5, "HighF3X[7]", 9.5, "sendTextHighFSliderField3:"},
      {"sendTextHighFSliderField2:", 60, "HighF2X[7]", 60, "changeHighFSlider2:"},
      {"changebandSlider4:", 12.25, "bandOut4X[7]", 12.25, "bandSlider4:"},
      {"setSetbandNote5:", 400, "bandNote5X[7]", 127, "setSetbandNote5:"},
      {"selectMIDIchannel8:", 3, "MIDIchannel8X[7]", 3, "selectMIDIchannel8:"},
      {"changeGainNoteSlider:", 1.5, "gainNoteX[7]", 1.5, "changeGainNoteSlider:"},
      {"setControl:", 1, "ControlEX[7]", 1, "setControl:"},
      {"selectOVKAchannel:", 3, "OVKAchannelEX[7]", 3, "selectOVKAchannel:"},
      {"setMIDIoutON:", 1, "MIDIoutONEX[7]", 1, "setMIDIoutON:"},
      {"selectMIDIport:", 23, "MIDIportEX[7]", 23, "selectMIDIport:"},
  };
  for (const Row& row : rows) {
    CAPTURE(row.selector);
    const double before = *rig.band.value(row.name);
    REQUIRE(rig.perform(rig.band, row.selector, row.value));
    CHECK(*rig.band.value(row.name) == before);
    CHECK(rig.view.shown[row.echo] == row.stored);
  }
  CHECK(NoteOffOnEXZ[7] == 0);  // one mode at a time
  rig.perform(rig.band, "setCHto9to16:");
  CHECK(MIDIchannelXZ[7][7] == 15);
  rig.perform(rig.band, "selectMIDIchannel8:", 3);
  rig.perform(rig.band, "setSet:");
  for (const Row& row : rows) CHECK(*rig.band.value(row.name) == row.stored);
  CHECK(MIDIchannelX[6][7] == 14);
  CHECK(MIDIchannelX[6][6] == 6);
  rig.perform(rig.band, "setCHto1to8:");
  rig.perform(rig.band, "setCancel:");
  CHECK(MIDIchannelXZ[6][7] == 14);

  rig.band.MIDIchannelCopy();
  const std::string lines = rig.printed.take();
  CHECK(std::count(lines.begin(), lines.end(), '\n') == 1024);
  CHECK(lines.starts_with("MIDIchannel1X=0\nMIDIchannel2X=1\n"));
  int loads = 0;
  rig.band.loadStoredSetups = [&] { ++loads; };
  for (int i = 0; i < 2; ++i) rig.perform(rig.band, "setSetToDefault:");
  CHECK(loads == 1);
  CHECK(ControlEX[7] == 0);
  CHECK(MIDIchannelX[2][6] == 2);
  rig.band.MIDIchannelBackCopy();
  CHECK(MIDIchannelX[6][7] == 14);

  OVKAchannelEX.set(20, 3);
  rig.band.setSetToDefault();
  CHECK(MIDIchannelX[2][20] == 10);
  CHECK(MIDIchannelXZ[2][20] == 10);
  CHECK(OVKAchannelEX[20] == 0);

  MIDIportEX.set(3, 11);
  rig.band.sendsetMIDIRestart();
  CHECK(rig.notes.restarts == 1);
  CHECK(MIDIportEX[3] == 11);
}

TEST_CASE("set-up values by name are checked, and errors say what to do") {
  MappingRig rig;
  CHECK(rig.band.assign("LowF1X[3]", 8.5).empty());
  CHECK(LowFX[0][3] == 8.5F);
  CHECK(LowFXZ[0][3] == 8.5F);
  struct Row {
    std::string name;
    double value;
    const char* part;
  };
  const Row rows[] = {{"LowF9X[3]", 8, "did you mean 'LowF"},
                      {"LowF1X", 8, "for example LowF1X[0]"},
                      {"LowF1X[128]", 8, "0 to 127"},
                      {"LowF1X[-1]", 8, "0 to 127"},
                      {"LowF1X[3", 8, "0 to 127"},
                      {"bandNote1X[3]", 128, "'0' to '127'"},
                      {"bandNote1X[3]", 3.5, "whole numbers only"},
                      {"gainNoteX[3]", static_cast<double>(kNaN), "takes"},
                      {"tsaveEX[3]", 0, "kept by the system"}};
  for (const Row& row : rows) {
    CAPTURE(row.name);
    CHECK(rig.band.assign(row.name, row.value).find(row.part) != std::string::npos);
  }
  CHECK(!rig.single.value("LowF1X[3]"));
  CHECK(rig.single.assign("LowFX[127]", -3).empty());
  CHECK(rig.single.value("LowFX[127]") == -3.0);
}
