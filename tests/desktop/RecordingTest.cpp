#include <QMouseEvent>
#include <cmath>
#include <doctest/doctest.h>

#include "BufferVariables.h"
#include "DisplayVariables.h"
#include "ScrubBar.h"
#include "SetupWindow.h"
#include "ShellFixture.h"
#include "TransportRow.h"

using namespace ovka;
using namespace ovka::desktop;
using ovka::testing::ShellFixture;

namespace {

struct RowButtons {
  explicit RowButtons(ShellFixture& shell)
      : record(shell.window.findChild<QPushButton*>("record")),
        pause(shell.window.findChild<QPushButton*>("pause")),
        live(shell.window.findChild<QPushButton*>("live")) {}
  QPushButton* record;
  QPushButton* pause;
  QPushButton* live;
};

bool reaches(ShellFixture& shell, RecordState state) {
  return shell.waitFor([&] { return shell.bench.recorder().state() == state; }) && shell.settle();
}

/// Names of the journals on the disk.
std::vector<std::string> journals(ShellFixture& shell) {
  int error = 0;
  std::vector<std::string> names =
      shell.bench.files().list(shell.folders.resolve(std::string(kJournalFolder)), &error);
  std::erase_if(names, [](const std::string& name) { return !name.ends_with(kJournalEnding); });
  return names;
}

/// Records until there are some samples.
bool recordSome(ShellFixture& shell) {
  RowButtons row(shell);
  if (!shell.waitFor([&] { return row.record->isEnabled(); })) return false;
  row.record->click();
  return reaches(shell, RecordState::Recording) &&
         shell.waitFor([&] { return buffer::ploop > 60; });
}

}  // namespace

TEST_CASE("the row of recording: live, record, pause, stop, play, live") {
  ShellFixture shell(SourceChoice::Kind::Demo);
  Recorder& recorder = shell.bench.recorder();
  RowButtons row(shell);
  REQUIRE(reaches(shell, RecordState::Live));
  CHECK_FALSE(row.pause->isEnabled());
  CHECK_FALSE(recorder.unsaved());
  REQUIRE(shell.waitFor([] { return buffer::ploop > 0; }));

  REQUIRE(recordSome(shell));
  QTest::qWait(200);
  CHECK(row.record->accessibleName() == "Stop");
  CHECK(recorder.unsaved());
  CHECK(buffer::setLoopModeX == 0);

  row.pause->click();
  REQUIRE(reaches(shell, RecordState::Paused));
  const std::int64_t held = buffer::ploop;
  QTest::qWait(300);
  CHECK(buffer::ploop == held);
  CHECK(row.pause->accessibleName() == "Resume");
  row.pause->click();
  REQUIRE(shell.waitFor([&] { return buffer::ploop > held; }));

  row.record->click();
  REQUIRE(reaches(shell, RecordState::Review));
  const std::int64_t end = recorder.end();
  QTest::qWait(200);
  CHECK(buffer::ploop == end);
  CHECK(row.pause->accessibleName() == "Play");
  recorder.seek(end / 2);
  REQUIRE(shell.waitFor([&] { return buffer::ploop == end / 2; }));
  CHECK(recorder.end() == end);
  row.pause->click();
  REQUIRE(reaches(shell, RecordState::Playing));
  REQUIRE(reaches(shell, RecordState::Review));  // at its end it stands again
  CHECK(shell.waitFor([&] { return buffer::ploop == end; }));

  // A stretch is repeated until it is let go.
  auto* scrub = shell.window.findChild<ScrubBar*>("scrub");
  shell.window.show();
  shell.window.tick();
  scrub->refresh();
  REQUIRE(scrub->isVisible());
  const auto at = [scrub](std::int64_t point) {
    return QPoint(static_cast<int>(std::lround(scrub->xOf(point))), 15);
  };
  QTest::mousePress(scrub, Qt::LeftButton, Qt::ShiftModifier, at(end / 4));
  QMouseEvent pull(QEvent::MouseMove, at(end / 2), scrub->mapToGlobal(at(end / 2)), Qt::NoButton,
                   Qt::LeftButton, Qt::ShiftModifier);
  QApplication::sendEvent(scrub, &pull);
  CHECK(std::abs(recorder.stretchFirst() - end / 4) <= 2);
  CHECK(std::abs(recorder.stretchEnd() - end / 2) <= 2);
  row.pause->click();
  REQUIRE(reaches(shell, RecordState::Playing));
  QTest::qWait(700);
  CHECK(recorder.state() == RecordState::Playing);
  CHECK(buffer::ploop >= recorder.stretchFirst());
  CHECK(buffer::ploop < recorder.stretchEnd());
  QTest::keyClick(scrub, Qt::Key_Escape);
  CHECK(recorder.stretchFirst() == recorder.stretchEnd());
  REQUIRE(reaches(shell, RecordState::Review));

  // Nothing but the answer lets an unsaved recording go.
  row.live->click();
  REQUIRE(shell.press("unsaved", "Cancel"));
  CHECK(recorder.state() == RecordState::Review);
  CHECK(recorder.end() == end);
  row.live->click();
  REQUIRE(shell.press("unsaved", "Discard"));
  REQUIRE(reaches(shell, RecordState::Live));
  CHECK_FALSE(recorder.unsaved());
  CHECK(shell.waitFor([] { return buffer::ploop > 0; }));
}

TEST_CASE("the row gives words away before it cuts anything, and takes them back") {
  ShellFixture shell(SourceChoice::Kind::Demo);
  RowButtons row(shell);
  shell.window.show();
  auto* transport = shell.window.findChild<TransportRow*>();
  const auto fits = [&](int width) {
    CAPTURE(width);
    shell.window.resize(width, 600);
    QTest::qWait(50);
    CHECK(shell.window.width() == width);
    for (QWidget* each : transport->findChildren<QWidget*>()) {
      if (!each->isVisibleTo(transport)) continue;
      const QRect place(each->mapTo(transport, QPoint()), each->size());
      CAPTURE(each->objectName().toStdString());
      CHECK(transport->rect().contains(place));
      if (auto* button = qobject_cast<QAbstractButton*>(each)) {
        CHECK(place.width() >= button->minimumSizeHint().width());
        CHECK_FALSE(button->accessibleName().isEmpty());
      }
    }
  };
  for (const RecordState state : {RecordState::Live, RecordState::Recording, RecordState::Review}) {
    CAPTURE(stateText(state).toStdString());
    if (state == RecordState::Recording) REQUIRE(recordSome(shell));
    if (state == RecordState::Review) row.record->click();
    REQUIRE(reaches(shell, state));
    QTest::qWait(150);
    fits(960);  // half of a usual screen
    CHECK(row.record->text().isEmpty());
    fits(1400);
    CHECK(row.record->text() == row.record->accessibleName());
    CHECK(shell.window.findChild<QPushButton*>("music")->text() == "Music");
  }
}

TEST_CASE("the question about an unsaved recording: cancel, save, discard") {
  ShellFixture shell(SourceChoice::Kind::Demo);
  REQUIRE(reaches(shell, RecordState::Live));
  REQUIRE(recordSome(shell));
  const QString path = QString::fromStdString(shell.folder.at("kept.ovkanote"));
  shell.window.documents().saveTo(path);
  REQUIRE(shell.settle());
  CHECK(shell.window.documents().path() == path);
  const std::int64_t saved = buffer::ploop;
  REQUIRE(shell.waitFor([&] { return buffer::ploop > saved + 30; }));
  RowButtons(shell).record->click();
  REQUIRE(reaches(shell, RecordState::Review));
  CHECK(shell.bench.recorder().unsaved());  // it went on after the save
  const std::int64_t end = shell.bench.recorder().end();
  shell.bench.recorder().seek(1);

  shell.window.show();
  shell.window.close();
  REQUIRE(shell.press("unsaved", "Cancel"));
  CHECK(shell.window.isVisible());
  shell.window.close();
  REQUIRE(shell.press("unsaved", "Save"));
  REQUIRE(shell.settle());
  CHECK(shell.waitFor([&] { return !shell.window.isVisible(); }));
  CHECK_FALSE(shell.bench.recorder().unsaved());

  // The document holds all of it, although it was played only to the first point.
  shell.window.documents().newDocument();
  REQUIRE(shell.settle());
  shell.window.documents().open(path);
  REQUIRE(shell.settle());
  REQUIRE(reaches(shell, RecordState::Review));
  CHECK(shell.bench.recorder().end() == end);
  CHECK_FALSE(shell.bench.recorder().unsaved());
  // Neither what was saved nor what was only looked at waits to be recovered.
  CHECK(journals(shell).empty());

  // A note is a change, and another source asks before it takes the place.
  shell.bench.engine()->annotations().add("here");
  SourceChoice demo;
  demo.kind = SourceChoice::Kind::Demo;
  shell.window.useSource(demo);
  REQUIRE(shell.press("unsaved", "Discard"));
  REQUIRE(shell.settle());
  CHECK(reaches(shell, RecordState::Live));
}

TEST_CASE("a save that is cancelled leaves the old document and the recording") {
  ShellFixture shell(SourceChoice::Kind::None);
  Engine& engine = *shell.bench.engine();
  for (std::int64_t point = 0; point < 400'000; ++point)
    engine.store().putIntToBuffer(1, point, point);
  buffer::ploop = 400'000;
  shell.bench.recorder().noteOpened(true);
  const std::string path = shell.folder.at("old.ovkanote");
  std::ofstream(path) << "old";
  shell.window.documents().saveTo(QString::fromStdString(path));
  shell.bench.progress().cancel = true;
  REQUIRE(shell.settle());
  CHECK(ovka::testing::contentsOf(path) == "old");
  CHECK(shell.bench.recorder().unsaved());
  CHECK(shell.bench.recorder().end() == 400'000);
  CHECK(buffer::setPauseX == 1);
  shell.window.documents().saveTo(QString::fromStdString(path));
  REQUIRE(shell.settle());
  CHECK_FALSE(shell.bench.recorder().unsaved());
  CHECK(ovka::testing::contentsOf(path).size() > 400'000);
}

TEST_CASE("a recording that went round stands in the order of time") {
  ShellFixture shell(SourceChoice::Kind::Demo);
  REQUIRE(reaches(shell, RecordState::Live));
  shell.bench.assign("maxploop=240");
  REQUIRE(shell.settle());
  shell.bench.recorder().setLoop(true);
  REQUIRE(recordSome(shell));
  REQUIRE(shell.waitFor([] { return buffer::ploop > 200; }));
  REQUIRE(shell.waitFor([] { return buffer::ploop > 30 && buffer::ploop < 200; }));
  RowButtons(shell).pause->click();
  REQUIRE(reaches(shell, RecordState::Paused));
  QTest::qWait(100);
  const SampleStore& store = shell.bench.engine()->store();
  // The paused point itself goes on being written; the one behind it is the oldest that stands.
  const std::int64_t held = buffer::ploop;
  const std::int32_t oldest = store.storedValue(1, held + 1);
  const std::int32_t newest = store.storedValue(1, held - 1);
  RowButtons(shell).record->click();
  REQUIRE(reaches(shell, RecordState::Review));
  CHECK(shell.bench.recorder().end() == 240);
  CHECK(store.storedValue(1, 1) == oldest);
  CHECK(store.storedValue(1, 239) == newest);
  shell.bench.recorder().noteDiscarded();
}

TEST_CASE("closing and covering views changes neither recording nor settings") {
  ShellFixture shell(SourceChoice::Kind::Demo);
  REQUIRE(reaches(shell, RecordState::Live));
  shell.window.show();
  REQUIRE(recordSome(shell));
  shell.window.showMinimized();
  shell.window.setup().show();
  shell.window.setup().close();
  const std::int64_t before = buffer::ploop;
  CHECK(shell.waitFor([&] { return buffer::ploop > before + 60; }));
  CHECK(shell.bench.recorder().state() == RecordState::Recording);
  shell.bench.recorder().noteDiscarded();
}

TEST_CASE("when the session ends nothing is asked, and the journal keeps the recording") {
  ShellFixture shell(SourceChoice::Kind::Demo);
  REQUIRE(reaches(shell, RecordState::Live));
  shell.window.show();
  REQUIRE(recordSome(shell));
  REQUIRE(shell.bench.recorder().unsaved());
  shell.window.closeUnasked();
  CHECK_FALSE(shell.window.isVisible());
  CHECK(shell.box("unsaved") == nullptr);
  CHECK(shell.bench.recorder().keepsJournal());
  shell.bench.recorder().noteDiscarded();
}

TEST_CASE("sources chosen one after the other: the last one counts") {
  ShellFixture shell(SourceChoice::Kind::None);
  shell.window.setup().show();
  int ready = 0;
  SourceChoice demo;
  demo.kind = SourceChoice::Kind::Demo;
  display::displayGainX[0] = 3.0F;
  for (int i = 0; i < 4; ++i) {
    shell.bench.openSource(demo, [&ready](const QString&) { ++ready; });
    QTest::qWait(i * 40);
  }
  REQUIRE(shell.waitFor([&ready] { return ready > 0; }));
  REQUIRE(shell.settle());
  CHECK(shell.bench.engine() == Engine::current());
  CHECK_FALSE(shell.bench.opening());
  CHECK(display::displayGainX[0] == 3.0F);
  CHECK(shell.waitFor([] { return buffer::ploop > 0; }));
}
