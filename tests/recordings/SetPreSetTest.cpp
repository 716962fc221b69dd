#include <doctest/doctest.h>
#include <set>
#include <thread>

#include "PresetFixture.h"

using namespace ovka;
using ovka::testing::PresetBench;

namespace {

using S = DocumentSwitch;
using Texts = std::vector<std::string>;

/// "OVKA5 OVKA4data ...", in the order of the file.
std::string keysOf(const PropertyList& list) {
  std::string keys;
  REQUIRE(list.dictionary() != nullptr);
  for (const PropertyList::Entry& entry : *list.dictionary()) keys += entry.key + " ";
  return keys;
}

/// Gives every group a text of its own, with the MIDI set-ups opened.
void fillGroups(SettingsGroups& groups, const std::string& text) {
  for (const SettingsGroupKind& kind : kSettingsGroups) {
    groups.find(kind.key)->put({"2", std::string(kind.key) + text});
  }
}

const std::map<S, std::string> kKeysOfSwitch{
    {S::BrainpeakMIDI, "OVKA4brainPeakMIDI "},
    {S::BrainrhythmMIDI, "OVKA4brainRhythmeMIDI "},
    {S::Display, "OVKA4Display OVKA4DisplayColor "},
    {S::DisplayWaterfall, "OVKA4DisplayWaterfall "},
    {S::DisplayBS, "OVKA4DisplayBS "},
    {S::EEGneurofeedback, "EEGneurofeedbackWindow "},
    {S::Device, "OVKA4Device "},
    {S::DevicePublish, "OVKA4Publish "},
    {S::DeviceOutputPort, "OVKA4OutputPort OVKA4SLOutputPort "},
    {S::Analyze, "OVKA4Analyze "},
    {S::Internet, "OVKA4Internet "},
    {S::BrainSwitchMixerSetup, "OVKA4BS "},
};

}  // namespace

TEST_CASE("a preset holds and brings back the groups whose switches are on") {
  PresetBench bench;
  fillGroups(bench.s.groups, " of the file");
  bench.s.switches.open.set(S::EEGneurofeedback, true);
  REQUIRE(bench.panel.savePreset("whole"));
  const std::string whole = bench.s.files.contents[PresetBench::path("whole")];
  for (const PresetSwitch& row : kPresetSwitches) {
    CAPTURE(row.open);
    fillGroups(bench.s.groups, " in force");
    bench.s.switches.save.setAll(false);
    bench.s.switches.open.setAll(false);
    bench.s.switches.open.set(row.which, row.rule != AllRule::Mode);
    // The neurofeedback group is saved by the open switch, the others by theirs.
    bench.s.switches.save.set(row.which, row.which != S::EEGneurofeedback);
    const auto keys = kKeysOfSwitch.find(row.which);
    const std::string own = keys == kKeysOfSwitch.end() ? std::string() : keys->second;
    CHECK(keysOf(bench.saved()) == "OVKA5 OVKA4data " + own);
    CHECK(bench.load(whole) == "");
    for (const SettingsGroupKind& kind : kSettingsGroups) {
      const bool taken = own.find(std::string(kind.key) + " ") != std::string::npos;
      CHECK(bench.s.groups.find(kind.key)->get(0, 1) ==
            std::string(kind.key) + (taken ? " of the file" : " in force"));
    }
  }
}

TEST_CASE("a bad preset says what and where, and changes nothing") {
  PresetBench bench;
  fillGroups(bench.s.groups, " of the file");
  REQUIRE(bench.panel.savePreset("whole"));
  const std::string whole = bench.s.files.contents[PresetBench::path("whole")];
  fillGroups(bench.s.groups, " in force");
  const std::string head = "{ OVKA4data = (110, \"a\"); OVKA4Device = (2, 3); ";
  const std::vector<std::pair<std::string, const char*>> rows{
      {"", "line 1, column 1"},
      {"{ }", "there is no key \"OVKA4data\""},
      {"{\n  OVKA4data = (1, 2;\n}", "line 2, column"},
      {"( 1, 2 )", "a document is a dictionary"},
      {"<cafe>", "a document is a dictionary"},
      {"{ OVKA4data = (); }", "\"OVKA4data\" must hold an array of texts"},
      {head + "OVKA4BS = (2, (1)); }", "\"OVKA4BS\" must hold an array of texts"},
      {head + "OVKAautoPortON = (x); }", "\"OVKAautoPortON\" must hold a text"},
      {head + "OVKA4dataCH0 = { }; }", "samples of a channel"},
      {head + "x = " + std::string(1000, '('), "line 1, column"},
      {head + std::string("\0\0", 2), "line 1, column"},
  };
  const std::string before = bench.state();
  for (const auto& row : rows) {
    CAPTURE(row.first);
    const std::string detail = bench.load(row.first);
    CHECK_MESSAGE(detail.find(row.second) != std::string::npos, detail);
    CHECK(detail.find("test\"") != std::string::npos);  // which file
    CHECK(bench.state() == before);
  }
  for (std::size_t length = 0; length + 2 < whole.size(); ++length) {
    CHECK(bench.load(std::string_view(whole).substr(0, length)) != "");
  }
  CHECK(bench.state() == before);
  DocumentError error;
  CHECK_FALSE(bench.panel.openPreset("missing", &error));
  CHECK(error.detail.find("save a preset under this name first") != std::string::npos);
}

TEST_CASE("the seven notifications call the methods of their names") {
  PresetBench bench;
  const auto post = [&](const std::string& name) {
    // As the backup thread does; the panel's own thread carries out what touches files.
    bench.shell.away = true;
    std::thread([&] { bench.s.notifications.post(name); }).join();
    bench.shell.away = false;
  };
  post("savePreference");
  CHECK(bench.s.files.contents.empty());
  bench.shell.runWaiting();
  CHECK(bench.s.files.contents.contains(PresetBench::path()));
  bench.s.groups.find("OVKA4Display")->put({"2", "changed"});
  post("loadPreference");
  CHECK(bench.s.groups.find("OVKA4Display")->get(0, 1) == "changed");
  bench.shell.runWaiting();
  CHECK(bench.s.groups.find("OVKA4Display")->texts() == Texts{"1"});
  CHECK(bench.s.dialogs.questions ==
        Texts{"Are you sure to save a preference file as current setup ?",
              "Are you sure to load a preference file for current setup ?"});
  post("savePreSetPreference");
  bench.shell.runWaiting();
  CHECK(bench.s.shell.log.count("save") == 1);
  for (std::int32_t n = 1; n <= 8; ++n) {
    bench.s.switches.open.setAll(n > 4);
    bench.s.switches.save.setAll(n > 4);
    const std::int32_t on = (n - 1) % 4 + 1;
    post("SevDevConfig" + std::to_string(on));
    for (std::int32_t channel = 1; channel <= 4; ++channel) {
      CHECK(bench.s.switches.open.channel(channel) == (channel <= on));
      CHECK(bench.s.switches.save.channel(channel) == (channel <= on));
    }
    CHECK(bench.s.switches.open.on(S::Display) == (n > 4));
  }
}

TEST_CASE("refused questions do nothing, failures are alerted, names are checked") {
  PresetBench bench;
  bench.s.dialogs.answer = false;
  bench.panel.selectSave();
  bench.panel.selectOpen();
  CHECK(bench.s.files.contents.empty());
  CHECK(bench.s.dialogs.alerts.empty());
  bench.s.dialogs.answer = true;
  bench.s.files.contents[PresetBench::path()] = "{\n OVKA4data = <0g>;\n}";
  bench.panel.selectOpen();
  REQUIRE(bench.s.dialogs.alerts.size() == 1);
  CHECK(bench.s.dialogs.alerts[0].starts_with(
      "OVKA4 document data could not be read for an unknown reason.|An unknown error occured.\n"));
  CHECK(bench.s.dialogs.alerts[0].find("line 2, column") != std::string::npos);
  bench.s.files.refuseWrites = EACCES;
  bench.panel.selectSave();  // not reported
  CHECK_FALSE(bench.panel.savePreset("mine"));
  CHECK(bench.panel.setOutputPath("mine.plist"));
  for (const std::string& name :
       Texts{"a/b", "..", "a\nb", std::string("a\0b", 3), std::string(256, 'x')}) {
    bench.shell.field = name;
    bench.panel.outputPathChanged();
    CHECK(bench.panel.outputPath() == "mine.plist");
  }
  CHECK(bench.s.dialogs.alerts.size() == 6);
  CHECK(bench.panel.setOutputPath(""));
  CHECK(bench.panel.outputPath() == "com.lumetrabox.OVKA.prefs.plist");
}

TEST_CASE("the port preset: the chosen port goes before the remembered one") {
  PresetBench bench;
  SettingsGroup& device = *bench.s.groups.find("OVKA4Device");
  bench.panel.setPortONAction(1);
  CHECK(bench.s.dialogs.alerts.empty());  // no port preset yet is no error
  bench.shell.chosen = {false, "/dev/one", "one", {}, {}};
  device.put({"2", "remembered"});
  bench.panel.setPortONandLoadPrefAction();
  CHECK(bench.s.dialogs.questions == Texts{"Do you like Save Connection to PreSet ?"});
  REQUIRE(bench.s.dialogs.alerts.size() == 1);
  CHECK(bench.s.dialogs.alerts[0].find("com.lumetrabox.OVKA5.prefs.plist") != std::string::npos);
  device.put({"2", "newer"});
  bench.shell.chosen = {false, "/dev/two", "two", "/dev/out", "out"};
  bench.panel.setPortONAction(1);
  CHECK(device.get(0, 1) == "newer");
  bench.shell.chosen = {};
  bench.panel.setPortONAction(1);
  CHECK(device.get(0, 1) == "remembered");
  CHECK(bench.panel.switchPortOnAtStart());
  bench.panel.setPortONAction(0);
  bench.s.files.contents[PresetBench::path()] = "{ OVKA4data = (";
  CHECK_FALSE(bench.panel.switchPortOnAtStart());
  bench.panel.setPortONAction(1);
  CHECK(bench.s.dialogs.alerts.size() == 3);
  CHECK(bench.shell.log.texts() == Texts{"on ||", "on /dev/one|one|", "on /dev/two|two|/dev/out",
                                         "on /dev/one|one|", "on /dev/one|one|", "off", "on ||"});
}

TEST_CASE("the port set-up of an opened file, and what comes back at the start") {
  PresetBench bench;
  DocumentError error;
  CHECK(bench.panel.loadAtStart(true, &error));  // nothing there yet
  CHECK(bench.s.information.getOVKA4Data(75) == "0");
  bench.panel.set("setAutoPortSetupWhenOpenFileSave:", true);
  bench.s.groups.find("OVKA4Display")->put({"2", "stored"});
  REQUIRE(bench.panel.savePreset(""));
  for (const int turn : {0, 2, 3}) {
    const bool settings = turn >= 2;
    const bool disabled = turn == 3;
    CAPTURE(settings);
    CAPTURE(disabled);
    bench.s.groups.find("OVKA4Display")->put({"1"});
    bench.panel.switches().startUp(false);
    bench.panel.set("setDisableAutoPortSetupWhenOpen:", disabled);
    CHECK(bench.panel.loadAtStart(settings, &error));
    CHECK(bench.s.switches.save.on(S::AutoPortSetupWhenOpen) == !disabled);
    CHECK(bench.s.groups.find("OVKA4Display")->get(0, 1) == (settings ? "stored" : ""));
    bench.shell.log.clear();
    bench.panel.setUpPortIfAsked();
    bench.panel.setUpPortIfAsked();
    CHECK(bench.shell.log.texts().size() == (settings && !disabled ? 1 : 0));
  }
}

TEST_CASE("every action of the panel does what its selector says") {
  PresetBench bench;
  std::map<std::string, std::function<void(std::int32_t)>> actions;
  bench.panel.addActions([&](std::string_view selector, std::string_view meaning,
                             std::function<void(std::int32_t)> perform) {
    CHECK(!meaning.empty());
    CHECK(actions.emplace(selector, std::move(perform)).second);
  });
  for (const PresetSwitch& row : kPresetSwitches) {
    for (const std::int32_t state : {1, 0}) {
      actions.at("select" + std::string(row.open))(state);
      actions.at("select" + std::string(row.save))(state);
      CHECK(bench.s.switches.open.on(row.which) == (state == 1));
      CHECK(bench.s.switches.save.on(row.which) == (state == 1));
    }
  }
  bench.shell.field = "other.plist";
  actions.at("outputPathChanged:")(0);
  actions.at("savePreference:")(0);
  CHECK(bench.s.files.contents.contains(PresetBench::path("other.plist")));
  actions.at("SevDevConfig3:")(0);
  CHECK(bench.s.switches.save.channel(3));
  actions.at("setPortONAction:")(0);
  CHECK(bench.shell.log.texts() == Texts{"off"});
}
