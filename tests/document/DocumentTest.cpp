#include <doctest/doctest.h>

#include "DocumentFixture.h"
#include "DrawingFiles.h"
#include "PropertyListReader.h"

using namespace ovka;
using namespace ovka::testing;

namespace {

PropertyList listOf(const std::string& text) {
  PropertyList list;
  PropertyListError error;
  REQUIRE_MESSAGE(readPropertyList(text, &list, &error), error.describe());
  return list;
}

std::string textOf(const PropertyList& list) {
  std::string text;
  MemoryWriter to(text);
  PropertyListWriter writer(to);
  writer.value(list);
  REQUIRE(writer.finish() == 0);
  return text;
}

std::string info(const PropertyList& list, std::size_t index) {
  return *list.find("OVKA4data")->array()->at(index).text();
}

/// A document with its information entry `index` changed.
std::string changed(const std::string& document, std::size_t index, const std::string& text) {
  PropertyList list = listOf(document);
  for (PropertyList::Entry& entry : *list.dictionary()) {
    if (entry.key == "OVKA4data") entry.value.array()->at(index) = text;
  }
  return textOf(list);
}

/// Strings of samples instead of blocks, as older programs wrote them.
std::string textDocument(const std::string& version, int channels, int samples) {
  std::string document = changed(Session().saved(), information::kVersion, version);
  document.erase(document.rfind('}'));
  for (int channel = 0; channel < channels; ++channel) {
    document += "OVKA4dataCH" + std::to_string(channel) + " = (";
    for (int i = 0; i < samples; ++i) {
      document += (i % 2 == 0 ? "\"-" : "\"") + std::to_string(100 * channel + i) + "\",";
    }
    document += ");";
  }
  return document + "}";
}

void swapSamples(PropertyList* list) {
  for (PropertyList::Entry& entry : *list->dictionary()) {
    if (entry.value.bytes() == nullptr) continue;
    PropertyList::Bytes bytes = *entry.value.bytes();
    for (std::size_t i = 0; i + 4 <= bytes.size(); i += 4) {
      std::swap(bytes[i], bytes[i + 3]);
      std::swap(bytes[i + 1], bytes[i + 2]);
    }
    entry.value = bytes;
  }
}

}  // namespace

TEST_CASE("version texts and the rules that follow from them") {
  struct Row {
    const char* text;
    std::int64_t number;
    bool multi, order, blocks;
    int factor;
  };
  const Row rows[] = {
      {"4.0.9", 40009, false, false, false, 4}, {"4.1.0", 40100, false, false, false, 4},
      {"4.1.1", 40101, false, false, false, 1}, {"4.3.9", 40309, false, false, false, 1},
      {"4.4.0", 40400, false, false, true, 1},  {"4.6.4", 40604, false, false, true, 1},
      {"4.6.5", 40605, false, true, true, 1},   {"4.6.7", 40607, false, true, true, 1},
      {"4.6.8", 40608, true, true, true, 1},    {"5.3.1.3", 50313, true, true, true, 1},
      {"5.3.1.4", 50314, true, true, false, 1}, {"5.3.2.3", 50323, true, true, false, 1},
      {"5.3.2.4", 50324, true, true, true, 1},  {"5.3.5.1", 50351, true, true, true, 1},
      {"", 0, false, false, false, 4},          {"-5.3.5.1", -5030501, false, false, false, 4},
  };
  for (const Row& row : rows) {
    CAPTURE(row.text);
    const std::int64_t number = versionNumber(row.text);
    CHECK(number == row.number);
    const VersionRules rules = VersionRules::of(number);
    CHECK(rules.multiApplicationMode == row.multi);
    CHECK(rules.recordedByteOrder == row.order);
    CHECK(rules.dataBlocks == row.blocks);
    CHECK(rules.textFactor == row.factor);
  }
}

TEST_CASE("five channels of random samples come back bit for bit, in both byte orders") {
  for (const bool foreign : {false, true}) {
    CAPTURE(foreign);
    Session from;
    from.allChannels();
    from.record(1237, 1);
    std::string document = from.saved();
    if (foreign) {
      PropertyList list = listOf(changed(document, information::kByteOrder,
                                         InformationList::byteOrder() == 1234 ? "4321" : "1234"));
      swapSamples(&list);
      document = textOf(list);
    }
    Session into;
    into.allChannels();
    REQUIRE(into.opened(document) == "");
    for (std::int32_t channel = 0; channel < buffer::kChannels; ++channel) {
      CHECK(into.samples(channel, 0, 1237) == from.samples(channel, 0, 1237));
    }
    CHECK(buffer::ploop == 1237);
    CHECK(buffer::maxploop == (foreign ? 5000U : 1237U));
    CHECK(document::setDataSwapX == (foreign ? 1 : 0));
    CHECK(buffer::setPauseX == 0);
    CHECK_FALSE(into.shell.blocked);
  }
}

TEST_CASE("a document opened and saved again is byte-identical, unknown settings included") {
  Session first;
  first.allChannels();
  first.record(700, 2);
  for (std::size_t i = 0; i < kSettingsGroups.size(); ++i) {
    std::vector<std::string> texts{"3", "value " + std::to_string(i), "\u00e9\"\\"};
    if (kSettingsGroups[i].savedOnlyOnceOpened) texts.assign(2 * 129, "129");
    first.groups.at(i).put(texts);
  }
  first.switches.open.set(DocumentSwitch::EEGneurofeedback, true);
  for (std::size_t i = 0; i < kInformationEntries; ++i) {
    first.information.setText(i, "kept " + std::to_string(i));
  }
  first.document.setGraphics({PropertyList::Dictionary{{"Class", "Circle"}, {"Bounds", "{1, 2}"}}});
  const std::string document = first.saved();
  const PropertyList list = listOf(document);
  CHECK(list.dictionary()->size() == 2 + 5 + kSettingsGroups.size() + 1);

  Session second;
  second.allChannels();
  second.switches.open.set(DocumentSwitch::EEGneurofeedback, true);
  REQUIRE(second.opened(document) == "");
  const std::string again = second.saved();
  CHECK((again == document));
  CHECK(second.document.graphics() == first.document.graphics());
}

TEST_CASE("what a document holds follows the save switches") {
  Session session;
  session.record(3, 3);
  PropertyList list = listOf(session.saved());
  CHECK(*list.find("OVKA5")->text() == "5332");
  CHECK(list.find("OVKA4dataCH2") != nullptr);
  CHECK(list.find("OVKA4dataCH3") == nullptr);
  CHECK(list.find("OVKA4brainPeakMIDI") == nullptr);      // its set-up was never opened
  CHECK(list.find("EEGneurofeedbackWindow") == nullptr);  // the open switch decides, and is off
  CHECK(list.find("OVKA4graphicsList")->array()->empty());
  CHECK(list.find("OVKA4data")->array()->size() == 110);
  CHECK(info(list, information::kSamples) == "3");
  CHECK(info(list, information::kVersion) == "5.3.5.1");
  CHECK(info(list, 48) == "655");

  session.switches.save.setAll(false);
  list = listOf(session.saved());
  CHECK(list.dictionary()->size() == 4);
  CHECK(list.find("OVKA4dataCH0")->bytes()->size() == 12);
  CHECK(info(list, information::kSamples) == "0");
  CHECK(info(list, information::kPause) == "0");
  CHECK(info(list, information::kRecordMode) == "1");
  CHECK(session.document.saveDicForAllPreference().dictionary()->size() == 2);

  Session empty;
  CHECK(listOf(empty.saved()).find("OVKA4dataCH0")->bytes()->empty());
}

TEST_CASE("both save entries and their types") {
  Session session;
  session.record(2, 4);
  CHECK(listOf(session.saved(OVKA4ReferenceDataType)).find("OVKA4dataCH0") == nullptr);
  CHECK(listOf(session.saved()).find("OVKA4dataCH0") != nullptr);  // the mark was for one save

  std::string data;
  DocumentError error;
  const auto represented = [&](std::string_view type) {
    data.clear();
    REQUIRE(session.document.dataRepresentationOfType(type, &data, &error));
    return data;
  };
  CHECK(represented(OVKA4ReferenceDataType) == "{}\n");
  CHECK(session.opened(data, OVKA4ReferenceDataType) == "");
  session.commands.setSaveAsBrainNote();
  CHECK(listOf(represented(OVKA4ReferenceDataType)).find("OVKA4dataCH0") != nullptr);
  session.commands.setSaveAsReference();
  CHECK(represented(OVKA4DrawDocumentType) == "{}\n");

  CHECK(session.saved(kPdfDocumentType) == drawingAsPdf());
  CHECK(session.saved(kTiffDocumentType) == drawingAsTiff());
  const std::string pdf = drawingAsPdf();
  const auto table = std::stoul(pdf.substr(pdf.rfind("startxref\n") + 10));
  CHECK(pdf.substr(table, 5) == "xref\n");
  CHECK(pdf.substr(std::stoul(pdf.substr(table + 49, 10)), 7) == "2 0 obj");
  CHECK_FALSE(session.document.dataOfType("Sound", &data, &error));
  CHECK(error.reason == "[typeName isEqualToString:OVKA4DrawDocumentType]");
}

TEST_CASE("a recording longer than the format takes is clipped with an alert") {
  for (const std::uint32_t configuration : {0U, 3U}) {
    CAPTURE(configuration);
    Session session;
    buffer::DeviceConfig = configuration;
    const std::int64_t limit = configuration == 0 ? 130592000 : 65296000;
    CHECK(OVKA4DrawDocument::longestSave() == limit);
    buffer::ploopStart = limit - 10;
    buffer::ploop = 2 * limit - 10;
    document::saveAsPreferenceX = 1;  // the check alone: these samples would fill the disk
    static_cast<void>(session.saved());
    CHECK(session.dialogs.alerts.empty());
    buffer::ploop = 2 * limit - 9;
    document::copyModeX = 1;
    session.switches.save.setAll(false);
    document::saveAsPreferenceX = 1;
    static_cast<void>(session.saved());
    CHECK(session.dialogs.alerts.empty());
    document::copyModeX = 0;
    const PropertyList list = listOf(session.saved());
    CHECK(session.dialogs.alerts ==
          std::vector<std::string>{"Data file will clip to save, Start time to max file size.|Can "
                                   "not save all data ( max " +
                                   std::string(configuration == 0 ? "8 hour 2ch" : "4 hour 4ch") +
                                   " when 120Hz sampling )"});
    CHECK(buffer::ploop == limit);
    CHECK(buffer::maxploop == static_cast<std::uint64_t>(limit));
    CHECK(list.find("OVKA4dataCH0")->bytes()->size() == 40);
  }
}

TEST_CASE("behind a start position channel 1 is written with double length, and read right") {
  Session from;
  from.record(100, 5);
  buffer::ploopStart = 40;
  const std::string document = from.saved();
  const PropertyList list = listOf(document);
  CHECK(list.find("OVKA4dataCH0")->bytes()->size() == 240);
  CHECK(list.find("OVKA4dataCH1")->bytes()->size() == 480);
  CHECK(list.find("OVKA4dataCH2")->bytes()->size() == 240);

  Session into;
  REQUIRE(into.opened(document) == "");
  CHECK(buffer::maxploop == 60);
  CHECK(into.samples(1, 0, 60) == from.samples(1, 40, 60));
  CHECK(into.samples(2, 0, 60) == from.samples(2, 40, 60));

  Session append;
  append.record(100, 6);
  buffer::ploopStart = 50;
  const auto before = append.samples(1, 0, 50);
  REQUIRE(append.opened(document) == "");
  CHECK(append.samples(1, 0, 50) == before);
  CHECK(append.samples(1, 50, 60) == from.samples(1, 40, 60));
  CHECK(buffer::ploop == 110);
  CHECK(buffer::maxploop == 5000);
}

TEST_CASE("arrays of texts of older programs") {
  for (const char* version : {"4.0.9", "4.3.9", "5.3.2.0"}) {
    CAPTURE(version);
    const std::string document = textDocument(version, 5, 30);
    Session session;
    session.allChannels();
    const int factor = std::string_view(version) == "4.0.9" ? 4 : 1;
    REQUIRE(session.opened(document) == "");
    CHECK(session.samples(0, 0, 3) == std::vector<std::int32_t>{0, 1, -2});
    CHECK(session.samples(4, 28, 2) == std::vector<std::int32_t>{-428 * factor, 429 * factor});
    CHECK(buffer::ploop == 30);
  }
  const std::string document = textDocument("4.3.9", 3, 4);
  Session session;
  session.switches.open.set(DocumentSwitch::BrainDataCH1, false);
  REQUIRE(session.opened(document) == "");
  CHECK(session.samples(0, 0, 1) == std::vector<std::int32_t>{49});  // follows channel 1's switch
  CHECK(session.samples(2, 1, 1) == std::vector<std::int32_t>{201});
  // Text samples in a document of blocks are not samples, nor the other way round.
  const std::string present = textDocument("5.3.5.1", 2, 4);
  Session mixed;
  REQUIRE(mixed.opened(present) == "");
  CHECK(mixed.samples(1, 1, 1) == std::vector<std::int32_t>{0});
}

TEST_CASE("channel copies by the configuration, and the swap that the user chose for old files") {
  Session from;
  from.allChannels();
  from.record(50, 7);
  const std::string document = from.saved();
  for (const std::uint32_t configuration : {0U, 1U, 2U, 3U}) {
    CAPTURE(configuration);
    Session into;
    into.allChannels();
    buffer::DeviceConfig = configuration;
    REQUIRE(into.opened(document) == "");
    CHECK(into.samples(3, 0, 50) == from.samples(configuration <= 1 ? 1 : 3, 0, 50));
    CHECK(into.samples(4, 0, 50) == from.samples(configuration == 1 ? 2 : 4, 0, 50));
  }
  Session old;
  old.commands.setDataSwap();
  REQUIRE(old.opened(changed(document, information::kVersion, "4.6.4")) == "");
  CHECK(static_cast<std::uint32_t>(old.samples(1, 0, 1)[0]) ==
        __builtin_bswap32(static_cast<std::uint32_t>(from.samples(1, 0, 1)[0])));
}

TEST_CASE("the open commands narrow what is applied") {
  Session from;
  from.record(20, 8);
  from.groups.find("OVKA4Internet")->put({"2", "saved"});
  from.information.setText(6, "saved");
  const std::string document = from.saved();
  const auto state = [&](Session& session) {
    return std::string(buffer::ploop == 20 ? "samples " : "") +
           (session.groups.find("OVKA4Internet")->count() == 2 ? "settings " : "");
  };
  struct Row {
    void (DocumentCommands::*command)();
    const char* expected;
    const char* last;
  };
  const Row rows[] = {
      {nullptr, "samples settings ", "play mode"},
      {&DocumentCommands::setOpenBrainDataOnlyAction, "samples ", "play mode"},
      {&DocumentCommands::setOpenPreferencesOnlyAction, "settings ", "startUp"},
      {&DocumentCommands::setOpenPreferencesOnlyAndPortAction, "settings ", "port on"},
      {&DocumentCommands::setOpenPortRecordingAction, "samples settings ", "playing"},
  };
  for (const Row& row : rows) {
    Session into;
    into.notifications.addObserver(&into, "gotoStartAndPlayNotification",
                                   [&] { into.shell.log.record("playing"); });
    if (row.command != nullptr) (into.commands.*row.command)();
    REQUIRE(into.opened(document) == "");
    CHECK(state(into) == row.expected);
    CHECK(into.shell.log.texts().back() == row.last);
    into.shell.log.clear();
    REQUIRE(into.opened(document) == "");  // the command was for one opening
    CHECK(state(into) == "samples settings ");
  }
  Session into;
  into.shell.front = "Untitled";
  REQUIRE(into.opened(document) == "");
  into.shell.front = "script";
  REQUIRE(into.opened(document) == "");
  CHECK(into.shell.log.texts() ==
        std::vector<std::string>{"startUp", "close Untitled", "play mode", "play mode"});
}

TEST_CASE("a document cut at any byte gives an error and changes nothing") {
  Session from;
  from.record(9, 9);
  const std::string document = from.saved();
  Session into;
  into.record(4, 10);
  const auto before = into.samples(1, 0, 20);
  for (std::size_t length = 0; length + 2 < document.size(); ++length) {
    CAPTURE(length);
    const std::string problem = into.opened(document.substr(0, length));
    REQUIRE(problem.starts_with("line "));
  }
  CHECK(into.samples(1, 0, 20) == before);
  CHECK(buffer::ploop == 4);
  CHECK(into.shell.log.texts().empty());

  DocumentError error;
  CHECK_FALSE(into.document.readFromData("(1)", OVKA4DrawDocumentType, &error));
  CHECK(error.domain == "OVKA4ErrorDomain");
  CHECK(error.code == 1);
  CHECK(error.description == "OVKA4 document data could not be read for an unknown reason.");
  CHECK(error.reason == "An unknown error occured.");
  for (const char* text : {"{}", "{OVKA4data = x;}", "{OVKA4data = ((1));}",
                           "{OVKA4data=(); OVKA4dataCH1 = 5;}", "{OVKA4dataCH0 = ({});}"}) {
    CAPTURE(text);
    CHECK(into.opened(text) != "");
  }
}

TEST_CASE("a save that fails leaves the old document, and goes on without its backups") {
  Session session;
  session.record(10, 11);
  DocumentError error;
  const std::string path = "/notes/one.ovka5";
  REQUIRE(session.document.writeToFile(path, OVKA4DrawDocumentType, &error));
  const std::string old = session.files.contents[path];

  session.record(12, 12);
  session.files.refuseWrites = EACCES;
  session.files.refusePattern = "OVKABackups";
  REQUIRE(session.document.writeToFile(path, OVKA4DrawDocumentType, &error));
  CHECK(session.dialogs.beeps == 3);
  Session into;
  REQUIRE(into.opened(session.files.contents[path]) == "");
  CHECK(into.samples(1, 0, 12) == session.samples(1, 0, 12));  // not the older backup

  session.files.contents[path] = old;
  session.files.room = 1500;
  CHECK_FALSE(session.document.writeToFile(path, OVKA4DrawDocumentType, &error));
  CHECK(error.detail.find("No space left on device") != std::string::npos);
  session.files.room = UINT64_MAX;
  session.files.failCommit = EIO;
  CHECK_FALSE(session.document.writeToFile(path, OVKA4DrawDocumentType, &error));
  CHECK(session.files.contents[path] == old);
  CHECK_FALSE(session.shell.blocked);
  CHECK(buffer::setPauseX == 0);
}

TEST_CASE("the zero-buffer-new-note command and names with a date") {
  for (const bool answer : {false, true}) {
    Session session;
    session.record(10, 13);
    session.dialogs.answer = answer;
    session.commands.setBufferZeroNewBrainNote();
    DocumentError error;
    REQUIRE(session.document.writeToFile("/n", OVKA4DrawDocumentType, &error));
    CHECK(session.dialogs.questions.size() == 1);
    CHECK(buffer::ploop == (answer ? 0 : 10));
    CHECK((session.samples(0, 0, 1)[0] == 49) == answer);
    CHECK(session.shell.log.count("new ") == (answer ? 1 : 0));
    REQUIRE(session.document.writeToFile("/n", OVKA4DrawDocumentType, &error));
    CHECK(session.dialogs.questions.size() == 1);
  }
  Session session;
  buffer::loopCount = 42;
  session.commands.saveDocumentwithDate();
  CHECK(session.shell.log.texts() ==
        std::vector<std::string>{"new OVKA07032024-030409PM-00000042", "save"});
  CHECK(DocumentCommands::nameWithDate({2024, 12, 31, 0, 0, 0}, 0) ==
        "OVKA31122024-120000AM-00000000");
}

TEST_CASE("settings rows: order, ranges, parts of other lengths, old single-part arrays") {
  Shared<std::int32_t> whole{3};
  Shared<float> real{1.5F};
  int puts = 0;
  SettingsRows rows;
  rows.add("whole", whole, -5, 9);
  rows.add("real", real, 0, 2);
  rows.onPut([&] { ++puts; });
  CHECK(rows.texts() == std::vector<std::string>{"3", "3", "1.500000"});
  rows.put({"3", "-4", "0.25"});
  CHECK(whole == -4);
  CHECK(real == 0.25F);
  rows.put({"5", "7", "99", "of a newer", "program"});
  CHECK(whole == 7);
  CHECK(real == 0.25F);            // 99 is out of range
  rows.put({"2", "2", "2", "8"});  // two parts: the second is not this group's
  CHECK(whole == 2);
  rows.put({"", "x"});
  CHECK(whole == 0);  // the digit rule reads no digit as 0
  CHECK(puts == 4);
}
