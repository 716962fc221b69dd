
#include "CaptureSettings.h"
#include "DeskFixture.h"
#include "DisplayGroups.h"
#include "DisplayRows.h"

using namespace ovka;
using testing::Desk;

namespace {

using Texts = std::map<std::string, std::vector<std::string>>;

Texts displayTexts() {
  Texts texts;
  for (const auto& group : display::kDisplayGroups)
    texts[std::string(group.key)] = group.make()->texts();
  return texts;
}

/// Gives every row of every group another value of its range; says which rows did not take one.
std::string changeEverything() {
  std::string refused;
  for (const auto& group : display::kDisplayGroups) {
    const auto rows = group.make();
    for (const SettingsRows::Row& row : rows->rows()) {
      const std::string before = row.get();
      for (const char* text : {"1", "0", "3", "17", "0.750000", "2.500000", "40.125000", "QUFB"}) {
        if (row.get() == before) row.set(text);
      }
      if (row.get() == before) refused += row.name + " ";
    }
  }
  return refused;
}

}  // namespace

TEST_CASE("documents and presets keep every display setting and bring it back") {
  Desk now;
  const Texts first = displayTexts();
  CHECK(changeEverything() == "");
  const Texts changed = displayTexts();
  const std::string path = now.folder.at("a.ovkanote");
  now.save(path);
  now.perform("savePreference:");

  display::resetVariables();
  CHECK(displayTexts() == first);
  const std::uint32_t before = display::broughtX;
  now.open(path);
  CHECK(displayTexts() == changed);
  CHECK(display::broughtX != before);
  // A program without views hands on what it opened.
  now.save(now.folder.at("b.ovkanote"));
  display::resetVariables();
  now.open(now.folder.at("b.ovkanote"));
  CHECK(displayTexts() == changed);

  // A preset has no arrangement of windows of its own.
  display::resetVariables();
  now.perform("loadPreference:");
  Texts brought = displayTexts();
  for (const char* key :
       {"OVKA4Display", "OVKA4DisplayColor", "OVKA4DisplayWaterfall", "OVKA4DisplayBS"}) {
    CAPTURE(key);
    CHECK(brought[key] == changed.at(key));
  }
  // With the display's open switch off nothing of it is taken.
  display::resetVariables();
  now.perform("selectsetDisplay:", 0);
  now.open(path);
  CHECK(displayTexts()["OVKA4Display"] == first.at("OVKA4Display"));
}

TEST_CASE("a document of a program without views changes none of them") {
  Desk now;
  const std::string path = now.folder.at("a.ovkanote");
  // Its information list and groups are those of a program that knows no display.
  InformationList plain(now.engine.store(), now.host, now.time, now.desk.switches());
  std::string list;
  for (std::size_t i = 0; i < kInformationEntries; ++i)
    list += (i == 0 ? "\"" : ", \"") + plain.getOVKA4Data(i) + "\"";
  now.save(path);
  std::string text = testing::contentsOf(path);
  const auto put = [&](const std::string& key, const std::string& array) {
    const std::size_t at = text.find(key + " =");
    REQUIRE(at != std::string::npos);
    text.replace(at, text.find(';', at) - at, key + " = (" + array + ")");
  };
  for (const auto& group : display::kDisplayGroups) put(std::string(group.key), "1");
  put("OVKA4data", list);
  std::ofstream(path) << text;
  CHECK(changeEverything() == "");
  const Texts changed = displayTexts();
  now.open(path);
  CHECK(displayTexts() == changed);
}

TEST_CASE("display settings by name: ranges, tables, and the views are told") {
  Desk now;
  const std::uint32_t before = display::broughtX;
  for (const char* good :
       {"themeX=1", "textScaleX=1.5", "pairsX=255", "displayGainX[2]=2.5", "channelColorX[3]=-1",
        "view::gain[0]=4", "view::channels[4]=3", "view::freeze[6]=1"}) {
    CHECK(now.engine.assign(good) == "");
  }
  CHECK(display::broughtX == before + 8);
  CHECK(display::displayGainX[2] == 2.5F);
  CHECK(display::keptChoice(display::ViewKind::RawWave).gain == 4.0F);
  CHECK(display::keptChoice(display::ViewKind::Waterfall).channels == 3);
  CHECK(display::keptChoice(display::ViewKind::Newave).freeze == 1);
  for (const char* bad : {"themeX=3", "textScaleX=0.1", "displayGainX[0]=0", "view::gain[7]=1",
                          "view::highF[1]=0", "channelColorX[0]=16777216", "displayGainX=2"}) {
    CAPTURE(bad);
    CHECK(now.engine.assign(bad) != "");
  }
  CHECK(display::broughtX == before + 8);
  for (const auto& [name, value] : captureSettings(now.engine, {})) CHECK(name != "themeX");
}
