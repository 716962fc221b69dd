#include <chrono>

#include "DeskFixture.h"

using namespace ovka;
using namespace std::chrono_literals;

namespace {

struct Desk : testing::Desk {
  Desk() : testing::Desk(true) {}

  /// As acquisition does: frames at the current point while a recording runs.
  void record(int points) {
    buffer::setRecModeX = kRecording;
    buffer::setPauseX = 0;
    for (int i = 0; i < points; ++i) {
      const auto base = static_cast<std::int32_t>(buffer::ploop.get() * 10);
      for (std::int32_t c = 0; c < buffer::kChannels; ++c)
        engine.store().putIntToBuffer(c, buffer::ploop, base + c);
      engine.store().finishFrame();
      if (i % 24 == 0) time.advance(200ms);
    }
    time.advance(1s);
  }

  [[nodiscard]] std::int32_t stored(std::int32_t channel, std::int64_t point) {
    return engine.store().storedValue(channel, point);
  }

  [[nodiscard]] int journals() const {
    int count = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.path())) {
      if (entry.path().extension() == ".ovkajournal") ++count;
    }
    return count;
  }
};

}  // namespace

TEST_CASE("a document brings samples, settings and annotations back and stands at its end") {
  Desk now;
  now.set("SelectDevice=6");
  now.set("DeviceConfig=3");
  now.set("SampleSpeed=240");
  now.set("setACNumber=3");
  now.desk.panel().SevDevConfig4();
  now.record(500);
  now.engine.annotations().addAt(120, "eyes open");
  now.engine.annotations().addAt(360, "\xC3\xA4 \"quoted\"");
  const std::string path = now.folder.at("a.ovkanote");
  now.save(path);
  const std::string first = testing::contentsOf(path);
  now.engine.store().recCleare();
  now.engine.annotations().removeAll();
  buffer::ploop = 0;
  for (const char* other : {"SelectDevice=0", "SampleSpeed=120", "setACNumber=0"}) now.set(other);

  now.open(path);
  CHECK(buffer::ploop == 500);
  CHECK(buffer::setRecModeX == kPlayback);
  CHECK(buffer::setPauseX == 1);
  CHECK(buffer::SelectDevice == 6U);
  CHECK(buffer::SampleSpeed == 240U);
  CHECK(now.engine.settings().find("setACNumber")->get() == 3);
  for (std::int32_t channel = 0; channel < buffer::kChannels; ++channel)
    CHECK(now.stored(channel, 499) == 4990 + channel);
  const std::vector<TimedText> texts = now.engine.annotations().list();
  REQUIRE(texts.size() == 2);
  CHECK(texts[1].text == "\xC3\xA4 \"quoted\"");
  CHECK(texts[1].point == 360);
  CHECK(now.desk.frontDocumentName() == "a");
  now.time.advance(5s);
  CHECK(buffer::ploop == 500);  // nothing moves until it is played

  // With the recording mode taken over, too, saving gives the same file.
  now.perform("selectsetRecordingmode:", 1);
  now.open(path);
  now.save(now.folder.at("b.ovkanote"));
  const bool same = testing::contentsOf(now.folder.at("b.ovkanote")) == first;
  CHECK(same);
}

TEST_CASE("settings alone of another document leave the recording whole") {
  Desk now;
  now.set("SampleSpeed=480");
  now.set("maxploop=4800");
  now.set("fftp=512");
  now.record(4000);
  const std::string same = now.folder.at("same.ovkanote");
  now.save(same);
  // Ten seconds at this speed have no room for the 4000 points that are there.
  now.set("SampleSpeed=120");
  now.set("fftp=128");
  buffer::ploop = 100;
  const std::string slower = now.folder.at("slower.ovkanote");
  now.save(slower);
  now.open(same);
  REQUIRE(buffer::ploop == 4000);

  now.perform("setOpenPreferencesOnlyAction:", 0);
  now.open(slower);
  CHECK(buffer::ploop == 4000);
  CHECK(buffer::maxploop >= 4000);
  CHECK(now.stored(2, 3999) == 39992);
  CHECK(buffer::SampleSpeed == 480U);
  CHECK(now.engine.settings().find("fftp")->get() == 128);
  CHECK(!now.desk.takeProblems().empty());
}

TEST_CASE("a document plays at its own speed and stops at its end") {
  Desk now;
  now.record(600);
  now.save(now.folder.at("a.ovkanote"));
  now.perform("setOpenPortRecordingAction:");
  now.open(now.folder.at("a.ovkanote"));
  now.time.advance(2s);
  CHECK(buffer::ploop >= 235);
  CHECK(buffer::ploop <= 241);
  now.time.advance(10s);
  CHECK(buffer::ploop == 600);
  CHECK(buffer::setPauseX == 1);
}

TEST_CASE("a journal goes with the document that holds everything, not before") {
  Desk now;
  now.set("DeviceConfig=3");
  now.desk.panel().SevDevConfig1();
  now.record(300);
  CHECK(now.journals() == 1);
  now.save(now.folder.at("some.ovkanote"));
  CHECK(now.journals() == 1);  // channels 2 to 4 are in no document

  DocumentError error;
  now.desk.panel().SevDevConfig4();
  CHECK_FALSE(now.desk.save(now.folder.at("missing/a.ovkanote"), &error));
  CHECK(error.detail.find("missing/a.ovkanote") != std::string::npos);
  CHECK(now.journals() == 1);

  now.save(now.folder.at("all.ovkanote"));
  now.engine.stop();
  CHECK(now.journals() == 0);
}

TEST_CASE("an unsaved recording is found after the program and saved then") {
  testing::TemporaryFolder kept;
  {
    Desk now;
    now.record(400);
    now.engine.annotations().add("here");
    now.time.advance(1s);
    now.engine.stop();
    REQUIRE(now.journals() == 1);
    std::filesystem::copy(now.folder.path(), kept.path(),
                          std::filesystem::copy_options::recursive |
                              std::filesystem::copy_options::overwrite_existing);
  }
  Desk now;
  now.folders.path_ = kept.path();
  int code = 0;
  const std::vector<JournalSession> sessions = now.desk.catalogue().sessions(&code);
  REQUIRE(sessions.size() == 1);
  CHECK(now.desk.recover(sessions[0]).empty());
  CHECK(buffer::ploop == 400);
  CHECK(now.stored(4, 399) == 3994);
  REQUIRE(now.engine.annotations().list().size() == 1);
  CHECK(now.engine.annotations().list()[0].text == "here");
  now.desk.panel().SevDevConfig4();
  now.save(kept.at("back.ovkanote"));
  CHECK_FALSE(std::filesystem::exists(sessions[0].parts[0]));
}

TEST_CASE("what the document actions do") {
  Desk now;
  now.record(100);
  now.perform("saveDocumentwithDate:");
  const std::string path = now.desk.frontPath();
  CHECK(path.starts_with(now.folder.path() + "/OVKADocuments/OVKA"));
  const std::string document = testing::contentsOf(path);
  CHECK(document.size() > 1000);

  now.perform("setSaveAsReference:");
  now.perform("savePreSetPreference:");
  CHECK(testing::contentsOf(path) == document);  // reference data lies beside it
  CHECK(testing::contentsOf(path + "-reference").size() < 10);

  now.dialogs.answer = false;
  now.perform("setBufferZeroNewBrainNote:");
  now.desk.saveFrontDocument();
  CHECK(buffer::ploop == 100);
  now.dialogs.answer = true;
  now.perform("setBufferZeroNewBrainNote:");
  now.desk.saveFrontDocument();
  CHECK(buffer::ploop == 0);
  CHECK(now.desk.frontDocumentName() == "Untitled");

  now.record(50);
  now.perform("setselectSaveAction:");
  buffer::ploop = 0;
  now.perform("setselectOpenAction:");
  CHECK(buffer::ploop == 50);
  CHECK(buffer::setRecModeX == kPlayback);
  now.perform("SevDevConfig2:");
  CHECK_FALSE(now.desk.switches().save.channel(3));
  CHECK(now.dialogs.alerts.empty());
  now.perform("setPortONandLoadPrefAction:");  // no such preset, no port chosen
  CHECK(now.dialogs.alerts.size() == 2);
}

TEST_CASE("backups come by the clock, a full recording saves itself") {
  Desk now;
  now.set("timeMX=1");
  now.set("maxploop=200");
  buffer::AutoSaveX = 1;
  now.record(150);
  now.time.advance(130s);
  CHECK(testing::contentsOf(now.folder.at("OVKABackups/CH0DATA.ovka")).size() >= 600);
  now.record(100);
  CHECK_FALSE(now.desk.frontPath().empty());
  CHECK(testing::contentsOf(now.desk.frontPath()).size() > 1000);
}

TEST_CASE("a recording that looped is put into the order of time, its annotations too") {
  Desk now;
  now.set("maxploop=1000");
  now.set("setLoopModeX=1");
  buffer::ploopStart = 100;
  now.record(1000);
  now.record(200);
  REQUIRE(buffer::ploop == 300);
  for (std::int64_t point = 0; point < 1000; ++point)
    now.engine.store().putIntToBuffer(2, point, point);
  now.engine.annotations().addAt(50, "before the loop");
  now.engine.annotations().addAt(299, "newest");
  now.engine.annotations().addAt(300, "oldest");
  now.desk.straightenRecording();
  CHECK(buffer::ploop == 1000);
  CHECK(now.stored(2, 99) == 99);
  int wrong = 0;
  for (std::int64_t i = 0; i < 900; ++i)
    wrong += now.stored(2, 100 + i) != 100 + (200 + i) % 900 ? 1 : 0;
  CHECK(wrong == 0);
  std::string texts;
  for (const TimedText& text : now.engine.annotations().list())
    texts += std::to_string(text.point) + " " + text.text + "; ";
  CHECK(texts == "50 before the loop; 100 oldest; 999 newest; ");
  now.desk.straightenRecording();  // there is nothing left to do
  CHECK(now.stored(2, 100) == 300);
}
