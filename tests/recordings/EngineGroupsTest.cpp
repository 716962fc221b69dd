#include <doctest/doctest.h>
#include <sstream>

#include "CaptureSettings.h"
#include "Engine.h"
#include "FakeSerialPorts.h"
#include "MaximumTime.h"
#include "PresetFixture.h"
#include "SettingsByName.h"

using namespace ovka;
using namespace ovka::testing;

namespace {

/// An engine on manual time with the panel over its settings, and the files of `disk`.
struct EngineBench {
  explicit EngineBench(FakeDisk& disk) : files(disk) { groups.use(settingsGroups, information); }

  [[nodiscard]] std::vector<std::string> load(const std::string& text) {
    files.contents[PresetBench::path("test")] = text;
    DocumentError error;
    CHECK_MESSAGE(panel.openPreset("test", &error), error.detail);
    return panel.notes();
  }
  [[nodiscard]] std::vector<std::string> texts(std::string_view key) {
    return settingsGroups.find(key)->texts();
  }

  CapturedPrint print;
  ManualTime time;
  HeapAddressSpace space;
  FakeSerialPorts serial;
  Engine engine{{time, time, time, space, serial}};
  SettingsByName byName{engine.settings()};
  FakeDisk& files;
  FakeFolders folders;
  FakeDialogs dialogs;
  FakeHost host;
  FakeDocumentShell documentShell;
  FakePresetShell shell;
  DocumentSwitches switches;
  InformationList information{engine.store(), host, time, switches};
  SettingsGroups settingsGroups;
  EngineGroups groups{byName};
  RawBackups backups{engine.store(), files, folders, dialogs, switches};
  DocumentServices services{engine.store(),         files,         folders,  dialogs,
                            engine.notifications(), documentShell, switches, information,
                            settingsGroups,         backups,       {}};
  SetPreSet panel{services, shell, &groups};
};

const std::string kHead = "{ OVKA5 = 5332; OVKA4data = (110); ";

}  // namespace

TEST_CASE("the orders of the groups hold: files depend on them") {
  FakeDisk disk;
  EngineBench bench(disk);
  const std::vector<std::pair<const char*, const char*>> orders{
      {"OVKA4Device",
       "SelectDevice DeviceConfig HighSpeedX SampleSpeedX samplingModeX SampleSpeed FixedFramingX "
       "oldBluetooth speedX SelectLSFset ReversPolarityX LeftRightReverse ShowReverseWaveX "
       "hardwareGainCH1 hardwareGainCH2 DCoffSetCH1X1000 DCoffSetCH1X10000 DCoffSetCH1X100000 "
       "DCoffSetCH2X1000 DCoffSetCH2X10000 DCoffSetCH2X100000 GainOr timeMX timeMXPreSet "},
      {"OVKA4Publish", "setDistributeTimingX "},
      {"OVKA4OutputPort", "SerialOutTimingPX "},
      {"OVKA4Analyze",
       "FFTpointX windSape FFTcalculationSelectX LOGpowerONed calculationSelectX setAverageTime "
       "AverageTime setGain1Number setGain2Number setGain3Number setGain4Number "
       "setGain1NumberSound DCcutONed setDCNumber ACcutONed setACNumber AutoZeroRawDataONed "
       "setAutoZeroNumber calculatePeakSelectX UsePeakModeX LowFX HighFX setCoherenceLevel "
       "CoherenceLevel "},
      {"OVKA4Internet", "PortNumberX "},
      {"OVKA4BS", "maxBScount coherenceSWoffset coherenceSWlevel peakSWratio peakSWlevel "},
  };
  REQUIRE(orders.size() == engineGroupOrders().size());
  for (const auto& order : orders) {
    std::string names;
    for (const EngineRow& row : engineRows(order.first)) {
      names += std::string(row.name) + " ";
      const Setting* setting = bench.engine.settings().find(row.name);
      REQUIRE_MESSAGE(setting != nullptr, names);
      CHECK(setting->writable);
      CHECK_MESSAGE(row.real == (setting->kind == Setting::Kind::Real), names);
    }
    CHECK(names == order.second);
  }
  CHECK(bench.texts("OVKA4BS") ==
        std::vector<std::string>{"6", "32", "0.000000", "70.000000", "2.000000", "0.100000"});
}

TEST_CASE("a preset carries the whole set-up into a new process") {
  FakeDisk disk;
  CaptureSettings carried;
  {
    EngineBench bench(disk);
    std::istringstream changes(
        "SelectDevice=3 DeviceConfig=2 samplingModeX=6 hardwareGainCH2=-0.75 "
        "DCoffSetCH1X1000=-12345 GainOr=1.5 timeMX=7 FFTpointX=6 windSape=t "
        "FFTcalculationSelectX=1 setAverageTime=5 setGain3Number=2 DCcutONed=0 "
        "setACNumber=4 LowFX=3.25 HighFX=38.5 setCoherenceLevel=2 maxBScount=16 "
        "coherenceSWoffset=-3.5 setDistributeTimingX=6 SerialOutTimingPX=9 "
        "PortNumberX=9000 MaxTimeActionX=1 ReversPolarityX=1 setLoopModeX=0");
    for (std::string change; changes >> change;) CHECK(bench.engine.assign(change) == "");
    REQUIRE(bench.panel.savePreset("carried"));
    carried = captureSettings(bench.engine, {});
  }
  EngineBench bench(disk);
  CHECK(captureSettings(bench.engine, {}) != carried);
  DocumentError error;
  REQUIRE(bench.panel.openPreset("carried", &error));
  CHECK(bench.panel.notes().empty());
  CHECK(captureSettings(bench.engine, {}) == carried);
  CHECK(buffer::MaxTimeActionX == 1);
  CHECK(buffer::maxploop == 480 * 300);
  // What follows from a choice is there too, and a second save is the same file.
  CHECK(bench.engine.settings().find("newBlueToothAmpGain")->get() == static_cast<double>(0.98F));
  REQUIRE(bench.panel.savePreset("again"));
  CHECK(disk.contents[PresetBench::path("again")] == disk.contents[PresetBench::path("carried")]);
}

TEST_CASE("values that make no sense are named and leave the settings as they are") {
  FakeDisk disk;
  EngineBench bench(disk);
  const CaptureSettings before = captureSettings(bench.engine, {});
  const std::vector<std::pair<const char*, const char*>> rows{
      {"OVKA4Device = (2, 12); }", "OVKA4Device, entry 1 (SelectDevice) \"12\" was not taken"},
      {"OVKA4Device = (2, \"-3\"); }", "takes 0 ... 9"},
      {"OVKA4Device = (3, 0, 999999999999999999999999); }", "entry 2 (DeviceConfig)"},
      {"OVKA4Device = (5, 0, 1, 0, \"\"); }", "entry 4 (SampleSpeedX) \"\" was not taken"},
      {"OVKA4Device = (7, 0, 1, 0, 120, 4, 0); }", "entry 6 (SampleSpeed)"},
      {"OVKA4Analyze = (3, 3, 999999999999999999); }", "takes one of r, t, m, n, b"},
      {"OVKA4BS = (3, 32, nan); }", "entry 2 (coherenceSWoffset)"},
      {"OVKA4BS = (3, 32, 1e999); }", "no number"},
      {"OVKA4data = (110,a,a,a,a,a,a,a,a,0,0,0,1,0,0,77); }", "input device was not taken"},
  };
  for (const auto& row : rows) {
    CAPTURE(row.first);
    const std::vector<std::string> notes = bench.load(kHead + row.first);
    REQUIRE(notes.size() == 1);
    CHECK_MESSAGE(notes[0].find(row.second) != std::string::npos, notes[0]);
    CHECK(captureSettings(bench.engine, {}) == before);
  }
}

TEST_CASE("older files set what they hold, newer ones keep what is beyond") {
  FakeDisk disk;
  EngineBench bench(disk);
  // One digit more than the form can tell: the value in force stays exact.
  CHECK(bench.engine.assign("CoherenceLevel=0.0100000001") == "");
  CHECK(bench
            .load(kHead + "OVKA4Internet = (1); OVKA4BS = (2, 20); "
                          "OVKA4Analyze = (25, 3, 110, 2, 0, 0, 3, 10, 5, 5, 5, 5, 8, 1, 2, 0, 0, "
                          "0, 3, 1, 1, \"2.0\", \"40.0\", 0, \"0.010000\"); }")
            .empty());
  CHECK(bench.engine.settings().find("CoherenceLevel")->get() == 0.0100000001);
  CHECK(bench.texts("OVKA4BS") ==
        std::vector<std::string>{"6", "20", "0.000000", "70.000000", "2.000000", "0.100000"});
  CHECK(bench.load(kHead + "OVKA4Publish = (4, 6, new, texts, 4, 1, of, parts); }").empty());
  CHECK(bench.texts("OVKA4Publish") ==
        std::vector<std::string>{"4", "6", "new", "texts", "4", "1", "of", "parts"});
  CHECK(bench.engine.assign("setDistributeTimingX=1") == "");
  CHECK(bench.texts("OVKA4Publish")[1] == "1");
  CHECK(bench.load(kHead + "OVKA4Publish = (2, 3); }").empty());
  CHECK(bench.texts("OVKA4Publish") == std::vector<std::string>{"2", "3"});
}

TEST_CASE("a preset never cuts the recording in memory") {
  FakeDisk disk;
  EngineBench bench(disk);
  CHECK(bench.engine.assign("samplingModeX=5") == "");  // 240 samples a second
  CHECK(bench.engine.assign("MaxTimeActionX=1") == "");
  const std::uint64_t capacity = buffer::maxploop;
  const std::string slower = kHead + "OVKA4Device = (7, 0, 1, 0, 120, 4, 120); }";
  std::string shorter = "{ OVKA5 = 5332; OVKA4data = (110";
  for (int i = 1; i < 18; ++i) shorter += ",a";
  shorter += ",0); }";
  buffer::ploop = 50000;
  const std::vector<std::string> notes = bench.load(slower);
  REQUIRE(notes.size() == 2);
  CHECK(notes[0].find("the recording in memory would be cut") != std::string::npos);
  CHECK(bench.load(shorter).size() == 1);
  CHECK(buffer::SampleSpeed == 240);
  CHECK(buffer::samplingModeX == 5);
  CHECK(buffer::MaxTimeActionX == 1);
  CHECK(buffer::maxploop == capacity);
  // With room enough both are taken.
  buffer::ploop = 20000;
  CHECK(bench.load(shorter + "").empty());
  CHECK(buffer::maxploop == 240 * 180);
  CHECK(bench.load(slower).empty());
  CHECK(buffer::maxploop == 120 * 180);
}
