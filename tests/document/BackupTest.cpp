#include <doctest/doctest.h>

#include "DocumentFixture.h"
#include "OldFiles.h"
#include "bitRevRev8MK.h"

using namespace ovka;
using namespace ovka::testing;

namespace {

std::string backupPath(int channel) {
  return "/Users/Shared/OVKABackups/CH" + std::to_string(channel) + "DATA.ovka";
}

std::string rawFile(const std::vector<int>& left, const std::vector<int>& right) {
  std::string file(4096, 'h');
  for (const auto* half : {&left, &right}) {
    for (const int byte : *half) {
      file += static_cast<char>(bitRevRev8MK(byte));
    }
  }
  return file;
}

}  // namespace

TEST_CASE("backups are raw samples from point 0 on, of the channels that are saved") {
  Session session;
  session.record(100, 1);
  buffer::ploopStart = 30;
  session.backups.saveDataBackup();
  CHECK(session.files.contents.size() == 3);  // 0, 1 and 2
  const std::string& file = session.files.contents[backupPath(1)];
  REQUIRE(file.size() == 400);
  CHECK(std::memcmp(file.data(), session.samples(1, 0, 100).data(), 400) == 0);

  // A failure beeps, leaves the old file and goes on.
  session.files.refuseWrites = ENOENT;
  session.files.refusePattern = "CH1";
  session.record(50, 2);
  session.backups.saveDataBackup();
  CHECK(session.dialogs.beeps == 1);
  CHECK(session.files.contents[backupPath(1)].size() == 400);
  CHECK(session.files.contents[backupPath(2)].size() == 200);
  CHECK(session.print.take().find("Error writing the backup /Users/Shared/OVKABackups/CH1DATA.ovka "
                                  "- No such file or directory(2).\n") != std::string::npos);
}

TEST_CASE("a save leaves the block it saved in the backup file") {
  Session session;
  session.record(100, 3);
  buffer::ploopStart = 60;
  static_cast<void>(session.saved());
  CHECK(session.files.contents[backupPath(0)].size() == 160);
  CHECK(session.files.contents[backupPath(1)].size() == 320);
}

TEST_CASE("loading the backups") {
  Session session;
  session.record(100, 4);
  const auto left = session.samples(1, 0, 100);
  const auto third = session.samples(3, 0, 100);
  session.allChannels();
  session.commands.setselectSaveAction();
  CHECK(session.dialogs.questions.back() ==
        "Are you sure to save brain data to back up file ? (/Users/Shared/OVKABackups/CHnDATA.ovka)"
        "  n=0..4 ");
  session.store.recCleare();
  buffer::ploop = 7;
  buffer::ploopStart = 7;
  session.dialogs.answer = false;
  session.commands.setselectOpenAction();
  CHECK(buffer::ploop == 7);
  CHECK(session.shell.log.texts() == std::vector<std::string>{"play mode"});
  session.dialogs.answer = true;
  session.commands.setselectOpenAction();
  CHECK(session.dialogs.questions.back() ==
        "Are you sure to load backup brain data file ? (/Users/Shared/OVKABackups/CHnDATA.ovka) "
        "n=0..4 ");
  CHECK(session.samples(1, 0, 100) == left);
  CHECK(session.samples(3, 0, 100) == third);
  CHECK(buffer::ploop == 100);
  CHECK(buffer::ploopStart == 0);

  // Channel 3 comes from its file although its switch is off, unless only brain data is asked for.
  session.switches.open.set(DocumentSwitch::BrainDataCH3, false);
  session.store.recCleare();
  CHECK(session.backups.openDataFromBackup(40));
  CHECK(session.samples(3, 39, 2) == std::vector<std::int32_t>{third[39], 0});
  session.switches.open.set(DocumentSwitch::BrainDataOnly, true);
  session.store.recCleare();
  CHECK(session.backups.openDataFromBackup(5000));
  CHECK(session.samples(3, 0, 1) == std::vector<std::int32_t>{0});
  buffer::DeviceConfig = 1;
  CHECK(session.backups.openDataFromBackup(5000));
  CHECK(session.samples(3, 0, 100) == left);
}

TEST_CASE("the backup folder is made when there is no backup yet") {
  Session session;
  session.backups.openCheckBackupFile();
  session.files.contents[backupPath(0)] = "";
  session.backups.openCheckBackupFile();
  session.files.contents[backupPath(0)] = "data";
  session.backups.openCheckBackupFile();
  CHECK(session.files.folders ==
        std::vector<std::string>{"/Users/Shared/OVKABackups", "/Users/Shared/OVKABackups"});
}

TEST_CASE("old raw files: bit reversal, dropouts, the shift of one sample") {
  Session session;
  OldFiles old(session.store, session.files);
  session.files.contents["raw"] = rawFile({0, 128, 0, 131, 0}, {1, 255, 200, 0, 0});
  REQUIRE(old.openOldOVKAFileToBuffer("raw"));
  CHECK(session.print.take() == "open openOldFileToBuffer 'dat, data'.\n");
  CHECK(session.samples(1, 0, 6) == std::vector<std::int32_t>{0, 0, 0, 6, 12, 12});
  CHECK(session.samples(2, 0, 5) == std::vector<std::int32_t>{-508, 508, 288, -112, -112});
  CHECK(buffer::maxploop == 5);

  session.files.contents["raw"] = rawFile({}, {});
  CHECK(old.openOldOVKAFileToBuffer("raw"));
  CHECK(buffer::maxploop == 0);
  session.files.contents["raw"].resize(4095);
  static_cast<void>(session.print.take());
  CHECK_FALSE(old.openOldOVKAFileToBuffer("raw"));
  CHECK_FALSE(old.openOldOVKAFileToBuffer("missing"));
  CHECK(session.print.take() ==
        "Error reading an old recording: 4095 bytes are fewer than its header has.\n"
        "Failed to open openOldFileToBuffer 'dat, data'.\n"
        "Failed to open openOldFileToBuffer 'dat, data'.\n");
}

TEST_CASE("a raw file longer than a piece is the same as one read at once") {
  Session session;
  OldFiles old(session.store, session.files);
  std::mt19937 random(5);
  std::vector<int> left(200001);
  std::vector<int> right(200001);
  for (std::size_t i = 0; i < left.size(); ++i) {
    left[i] = static_cast<int>(random() % 4 == 0 ? 0 : random() % 256);
    right[i] = static_cast<int>(random() % 256);
  }
  session.files.contents["raw"] = rawFile(left, right);
  REQUIRE(old.openWebLiveOVKAFileToBuffer("raw"));
  const auto samples = session.samples(1, 1, 200001);
  std::int32_t before = 0;
  for (std::size_t i = 0; i < left.size(); ++i) {
    if (left[i] != 0) before = 4 * left[i] - 512;
    if (left[i] == 0 && i > 0 && i + 1 < left.size())
      before = 2 * (left[i - 1] + left[i + 1]) - 512;
    REQUIRE(samples[i] == before);
  }
  CHECK(buffer::setLoopModeX == 1);
  CHECK(buffer::ploop == 0);
}

TEST_CASE("old text files") {
  Session session;
  OldFiles old(session.store, session.files);
  session.files.contents["txt"] = "1.000000\n-2.900000\r\n 3e1\n+4\n5 6";
  REQUIRE(old.openOldFileToBuffer("txt"));
  CHECK(session.samples(1, 1, 3) == std::vector<std::int32_t>{1, -2, 30});
  CHECK(session.samples(2, 0, 3) == std::vector<std::int32_t>{4, 5, 6});
  CHECK(buffer::maxploop == 3);
  static_cast<void>(session.print.take());
  session.files.contents["txt"] = "1\n2\nthree\n";
  CHECK_FALSE(old.openOldFileToBuffer("txt"));
  CHECK(session.print.take() ==
        "Error reading an old recording: line 3: \"three\" is no number.\n"
        "Failed to open openOldFileToBuffer 'dat, data'.\n");
}
