#include <QDragEnterEvent>
#include <QDropEvent>
#include <QMenu>
#include <QMimeData>
#include <QProgressDialog>
#include <QUrl>
#include <doctest/doctest.h>
#include <filesystem>

#include "BufferVariables.h"
#include "JournalCatalogue.h"
#include "ShellFixture.h"

using namespace ovka;
using namespace ovka::desktop;
using ovka::testing::ShellFixture;

namespace {

std::vector<std::string> journals(ShellFixture& shell) {
  int error = 0;
  const std::string folder = shell.folders.resolve(std::string(kJournalFolder));
  std::vector<std::string> paths;
  for (const std::string& name : shell.bench.files().list(folder, &error)) {
    if (name.ends_with(kJournalEnding)) paths.push_back(folder + "/" + name);
  }
  return paths;
}

/// What a start of the program after a kill at this moment would offer: the files as they are, with
/// nobody's lock on them.
std::vector<JournalSession> offeredAfterKill(ShellFixture& shell) {
  const ovka::testing::TemporaryFolder other;
  for (const std::string& path : journals(shell))
    std::filesystem::copy(path, other.path(), std::filesystem::copy_options::overwrite_existing);
  struct Here final : Folders {
    explicit Here(std::string at) : path(std::move(at)) {}
    std::string resolve(std::string_view /*path*/) const override { return path; }
    std::string path;
  } const folders(other.path());
  int error = 0;
  return JournalCatalogue(shell.bench.files(), shell.bench.locks(), folders).sessions(&error);
}

bool reaches(ShellFixture& shell, RecordState state) {
  return shell.waitFor([&] { return shell.bench.recorder().state() == state; }) && shell.settle();
}

bool recordSome(ShellFixture& shell) {
  auto* record = shell.window.findChild<QPushButton*>("record");
  if (!shell.waitFor([&] { return record->isEnabled(); })) return false;
  record->click();
  return reaches(shell, RecordState::Recording) &&
         shell.waitFor([] { return buffer::ploop > 200; });
}

void drop(ShellFixture& shell, const QList<QUrl>& urls, bool taken) {
  QMimeData data;
  data.setUrls(urls);
  QDragEnterEvent enter(QPoint(50, 50), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
  enter.ignore();
  QApplication::sendEvent(&shell.window, &enter);
  CHECK(enter.isAccepted() == taken);
  if (!taken) return;
  QDropEvent event(QPointF(50, 50), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(&shell.window, &event);
}

/// A long recording without an amplifier.
void fill(ShellFixture& shell, std::int64_t points) {
  Engine& engine = *shell.bench.engine();
  REQUIRE(engine.store().initMalloc(static_cast<std::uint64_t>(points)));
  for (std::int64_t point = 0; point < points; ++point) {
    for (std::int32_t channel = 0; channel < buffer::kChannels; ++channel)
      engine.store().putIntToBuffer(channel, point, point * (channel + 1) % 100'000);
  }
  buffer::ploop = points;
  shell.bench.recorder().noteOpened(true);
}

/// The progress dialog once its Cancel can be pressed; nullptr: the work was done before.
QProgressDialog* progressOf(ShellFixture& shell) {
  QProgressDialog* found = nullptr;
  shell.waitFor([&] {
    found = shell.window.findChild<QProgressDialog*>();
    if (found != nullptr && !found->isVisible()) found = nullptr;
    const auto* button = found != nullptr ? found->findChild<QPushButton*>() : nullptr;
    return (button != nullptr && button->isEnabled()) || !shell.bench.desk().busy();
  });
  return shell.bench.desk().busy() ? found : nullptr;
}

}  // namespace

TEST_CASE("killed while only looking nothing is offered, killed while recording everything is") {
  ShellFixture shell(SourceChoice::Kind::Demo);
  REQUIRE(reaches(shell, RecordState::Live));
  REQUIRE(shell.waitFor([] { return buffer::ploop > 200; }));
  CHECK(journals(shell).empty());
  REQUIRE(recordSome(shell));
  REQUIRE(shell.waitFor([&] { return !offeredAfterKill(shell).empty(); }));
  const std::vector<JournalSession> offered = offeredAfterKill(shell);
  REQUIRE(offered.size() == 1);
  CHECK(offered[0].first == 0);
  CHECK(shell.waitFor([&] {
    const auto now = offeredAfterKill(shell);
    return now.size() == 1 && now[0].end > 200;
  }));
  shell.window.findChild<QPushButton*>("record")->click();
  REQUIRE(reaches(shell, RecordState::Review));
  CHECK(offeredAfterKill(shell).size() == 1);
  shell.window.findChild<QPushButton*>("live")->click();
  REQUIRE(shell.press("unsaved", "Discard"));
  REQUIRE(reaches(shell, RecordState::Live));
  REQUIRE(shell.waitFor([] { return buffer::ploop > 200; }));
  CHECK(journals(shell).empty());
}

TEST_CASE("what was just seen can be kept, also when it went round") {
  ShellFixture shell(SourceChoice::Kind::Demo);
  REQUIRE(reaches(shell, RecordState::Live));
  shell.bench.assign("maxploop=240");
  REQUIRE(shell.settle());
  REQUIRE(shell.waitFor([] { return buffer::ploop > 200; }));
  REQUIRE(shell.waitFor([] { return buffer::ploop > 30 && buffer::ploop < 200; }));
  QTest::qWait(50);
  shell.window.findChild<QAction*>("menuKeep")->trigger();
  REQUIRE(reaches(shell, RecordState::Review));
  Recorder& recorder = shell.bench.recorder();
  CHECK(shell.waitFor([&] { return recorder.end() == 240; }));
  CHECK(recorder.unsaved());
  const std::vector<JournalSession> offered = offeredAfterKill(shell);
  REQUIRE(offered.size() == 1);
  CHECK(offered[0].end == 240);
  CHECK(offered[0].missingPoints == 0);

  const QString path = QString::fromStdString(shell.folder.at("kept.ovkanote"));
  shell.window.documents().saveTo(path);
  REQUIRE(shell.settle());
  CHECK_FALSE(recorder.unsaved());
  shell.window.findChild<QPushButton*>("live")->click();
  REQUIRE(reaches(shell, RecordState::Live));
  CHECK(journals(shell).empty());
}

TEST_CASE("every way to another document asks about an unsaved recording") {
  ShellFixture shell(SourceChoice::Kind::Demo);
  REQUIRE(reaches(shell, RecordState::Live));
  REQUIRE(recordSome(shell));
  shell.window.findChild<QPushButton*>("record")->click();
  REQUIRE(reaches(shell, RecordState::Review));
  const QString path = QString::fromStdString(shell.folder.at("one.ovkanote"));
  shell.window.documents().saveTo(path);
  REQUIRE(shell.settle());
  shell.bench.engine()->annotations().add("unsaved");
  const std::int64_t end = shell.bench.recorder().end();
  const QUrl url = QUrl::fromLocalFile(path);
  MainWindow& window = shell.window;
  auto* recent = [&]() -> QMenu* {
    for (QMenu* menu : window.findChildren<QMenu*>())
      if (menu->title() == QLatin1String("Open &recent")) return menu;
    return nullptr;
  }();
  REQUIRE(recent != nullptr);
  const std::vector<std::function<void()>> ways{
      [&] { window.openFile(path); },  // as the command line and the dialog do
      [&] { drop(shell, {url}, true); },
      [&] {
        Q_EMIT recent->aboutToShow();
        recent->actions().front()->trigger();
      },
      [&] { window.documents().newDocument(); },
      [&] { window.performAction(QStringLiteral("setselectOpenAction:"), 0); },
      [&] { window.performAction(QStringLiteral("setPortONAction:"), 1); },
      [&] {
        SourceChoice capture;
        capture.kind = SourceChoice::Kind::Capture;
        capture.paths = {"/nowhere.cap"};
        window.useSource(capture);
      },
  };
  for (std::size_t i = 0; i < ways.size(); ++i) {
    CAPTURE(i);
    ways[i]();
    REQUIRE(shell.press("unsaved", "Cancel"));
    REQUIRE(shell.settle());
    CHECK(shell.bench.recorder().end() == end);
    CHECK(shell.bench.engine()->annotations().list().size() == 1);
  }
  drop(shell, {url, url}, false);
  drop(shell, {QUrl(QStringLiteral("https://example.org/a.ovkanote"))}, false);
  drop(shell, {url}, true);
  REQUIRE(shell.press("unsaved", "Discard"));
  REQUIRE(shell.settle());
  CHECK(shell.waitFor([&] { return shell.bench.engine()->annotations().list().empty(); }));
  CHECK(window.documents().path() == path);
}

TEST_CASE("a long save shows how far it is; Cancel leaves things alone, in an opening too") {
  ShellFixture shell(SourceChoice::Kind::None);
  shell.window.show();
  constexpr std::int64_t kPoints = 10'000'000;
  fill(shell, kPoints);
  const std::string path = shell.folder.at("long.ovkanote");
  shell.window.documents().saveTo(QString::fromStdString(path));
  QProgressDialog* dialog = progressOf(shell);
  if (dialog == nullptr) {
    MESSAGE("skipped: this machine saves faster than a dialog shows");
    return;
  }
  dialog->findChild<QPushButton*>()->click();
  REQUIRE(shell.settle());
  // Cancelled in time there is no file, not even a part of one.
  CHECK(std::filesystem::exists(path) != shell.bench.recorder().unsaved());
  CHECK(shell.bench.recorder().end() == kPoints);

  shell.window.documents().saveTo(QString::fromStdString(path));
  REQUIRE(shell.settle());
  CHECK_FALSE(shell.bench.recorder().unsaved());
  shell.bench.engine()->store().putIntToBuffer(1, 5, 4711);
  shell.window.documents().open(QString::fromStdString(path));
  shell.bench.progress().cancel = true;
  REQUIRE(shell.settle());
  // Cancelled in time or not, the recording is one of the two, and whole.
  const bool opened = shell.bench.engine()->store().storedValue(1, 5) != 4711;
  CHECK(shell.bench.recorder().end() == kPoints);
  CHECK(shell.bench.engine()->store().storedValue(1, kPoints - 1) ==
        static_cast<std::int32_t>((kPoints - 1) * 2 % 100'000));
  if (opened) CHECK(shell.bench.engine()->store().storedValue(1, 5) == 10);
}
