#include <QComboBox>
#include <QDockWidget>
#include <QMenu>
#include <QMenuBar>
#include <QScreen>
#include <QToolButton>
#include <doctest/doctest.h>
#include <functional>
#include <vector>

#include "DisplayRows.h"
#include "ShellFixture.h"
#include "ViewDocks.h"

using namespace ovka;
using namespace ovka::desktop;
using ovka::testing::ShellFixture;
using K = ViewKind;

namespace {

struct Views {
  explicit Views(ShellFixture& fixture) : shell(fixture), docks(fixture.window.views()) {
    shell.bench.feed().start();
    shell.window.resize(1400, 880);
    shell.window.show();
  }
  QToolButton& button(K kind, const char* text) {
    for (QToolButton* each : docks.dock(kind).titleBarWidget()->findChildren<QToolButton*>()) {
      if (each->text() == QLatin1String(text)) return *each;
    }
    FAIL("no such button");
    std::abort();
  }
  QComboBox& list(K kind, const char* name) {
    for (QComboBox* each : docks.dock(kind).titleBarWidget()->findChildren<QComboBox*>()) {
      if (each->accessibleName() == QLatin1String(name)) return *each;
    }
    FAIL("no such list");
    std::abort();
  }
  void choose(K kind, const char* name, const char* text) {
    QComboBox& box = list(kind, name);
    const int index = box.findText(QString::fromUtf8(text));
    REQUIRE(index >= 0);
    box.setCurrentIndex(index);
    Q_EMIT box.activated(index);
  }
  /// The entry of the menu bar's submenu of a view.
  QAction& entry(K kind, const char* submenu, const char* text) {
    auto* choices = shell.window.menuBar()->findChild<QMenu*>(
        QStringLiteral("choices%1").arg(static_cast<int>(kind)));
    REQUIRE(choices != nullptr);
    Q_EMIT choices->aboutToShow();
    QList<QAction*> actions = choices->actions();
    for (QAction* action : choices->actions()) {
      if (action->menu() != nullptr && action->text() == QLatin1String(submenu))
        actions = action->menu()->actions();
    }
    for (QAction* action : actions) {
      if (action->text() == QString::fromUtf8(text)) return *action;
    }
    FAIL("no such entry: " << text);
    std::abort();
  }
  bool noted() {
    return shell.waitFor(
        [&] { return display::keptLayout() == docks.layout().toBase64().toStdString(); });
  }

  ShellFixture& shell;
  ViewDocks& docks;
};

QString saved(ShellFixture& shell, const char* name) {
  const QString path = QString::fromStdString(shell.folder.at(name));
  shell.window.documents().saveTo(path);
  REQUIRE(shell.settle());
  return path;
}

}  // namespace

TEST_CASE("what is chosen in the views comes back with a document: controls, docks, places") {
  ShellFixture shell(SourceChoice::Kind::None);
  Views views(shell);
  ViewDocks& docks = views.docks;
  REQUIRE(views.noted());
  const QString plain = saved(shell, "plain.ovkanote");

  views.button(K::RawWave, "B").click();
  views.choose(K::RawWave, "Gain", "× 5");
  views.choose(K::Spectrum, "Last frequency", "to 130 Hz");
  views.choose(K::RawWave, "Time", "15 s");
  views.button(K::BarGraph, "Freeze").click();
  views.entry(K::Waterfall, "Colours", "Sea").trigger();
  views.entry(K::Spectrum, "", "Peak hold").trigger();
  views.entry(K::Spectrum3D, "", "Coherence of pairs").trigger();
  views.entry(K::Spectrum3D, "Coherence pairs", "A-D").trigger();
  views.entry(K::Spectrum3D, "Distance", "× 2").trigger();
  views.entry(K::Newave, "", "To the front").trigger();
  display::channelColorX[1] = 0x204060;
  docks.dock(K::Waterfall).close();
  docks.dock(K::BarGraph).setFloating(true);
  docks.dock(K::BarGraph).setGeometry(1500, 60, 640, 420);
  QTest::qWait(50);
  REQUIRE(views.noted());
  const QRect place = docks.dock(K::BarGraph).geometry();
  std::array<ViewChoice, display::kViewKinds> chosen{};
  for (std::size_t i = 0; i < chosen.size(); ++i)
    chosen[i] = docks.view(static_cast<K>(i)).choice();
  CHECK(chosen[0].channels == 0xD);
  CHECK(chosen[0].gain == 5.0F);
  CHECK(chosen[static_cast<std::size_t>(K::Spectrum3D)].mode == 1);
  const QString path = saved(shell, "changed.ovkanote");

  shell.window.documents().open(plain);
  REQUIRE(shell.settle());
  REQUIRE(shell.waitFor([&] { return !docks.dock(K::BarGraph).isFloating(); }));
  REQUIRE(shell.waitFor([&] { return docks.view(K::RawWave).choice().gain == 1.0F; }));
  CHECK_FALSE(docks.dock(K::Waterfall).isHidden());
  CHECK(display::distanceX == 1.0F);
  CHECK(views.button(K::RawWave, "B").isChecked());

  shell.window.documents().open(path);
  REQUIRE(shell.settle());
  REQUIRE(shell.waitFor([&] { return docks.dock(K::BarGraph).isFloating(); }));
  REQUIRE(views.noted());
  for (std::size_t i = 0; i < chosen.size(); ++i) {
    CAPTURE(i);
    CHECK(docks.view(static_cast<K>(i)).choice() == chosen[i]);
  }
  CHECK(docks.dock(K::Waterfall).isHidden());
  CHECK(docks.dock(K::BarGraph).geometry() == place);
  CHECK_FALSE(docks.dock(K::Newave).visibleRegion().isEmpty());  // in front of the raw wave
  CHECK(docks.dock(K::RawWave).visibleRegion().isEmpty());
  CHECK(display::channelColorX[1] == 0x204060);
  CHECK(display::distanceX == 2.0F);
  CHECK((display::pairsX & 4) == 0);
  CHECK_FALSE(views.button(K::RawWave, "B").isChecked());
  CHECK(views.button(K::BarGraph, "Freeze").isChecked());
}

TEST_CASE("another source keeps what the views show, and so does another run") {
  {
    ShellFixture shell(SourceChoice::Kind::None);
    Views views(shell);
    views.choose(K::RawWave, "Gain", "× 5");
    display::displayGainX[0] = 2.0F;
    SourceChoice demo;
    demo.kind = SourceChoice::Kind::Demo;
    shell.window.useSource(demo);
    REQUIRE(shell.settle());
    CHECK(views.docks.view(K::RawWave).choice().gain == 5.0F);
    CHECK(display::keptChoice(K::RawWave).gain == 5.0F);
    CHECK(display::displayGainX[0] == 2.0F);
    shell.window.close();
  }
  ShellFixture shell(SourceChoice::Kind::None, false);
  Views views(shell);
  CHECK(shell.waitFor([&] { return views.docks.view(K::RawWave).choice().gain == 5.0F; }));
  CHECK(display::displayGainX[0] == 2.0F);
}

TEST_CASE("a view goes to the second screen and comes back") {
  ShellFixture shell(SourceChoice::Kind::None);
  Views views(shell);
  const QList<QScreen*> screens = QGuiApplication::screens();
  if (screens.size() < 2) {
    MESSAGE("skipped: this platform plug-in makes no second screen");
    return;
  }
  REQUIRE(views.noted());
  views.docks.showFullScreen(K::Spectrum, 1);
  QTest::qWait(50);
  // A setting that has nothing to do with windows leaves it there.
  shell.bench.assign("view::gain[1]=2");
  REQUIRE(shell.waitFor([&] { return views.docks.view(K::Spectrum).choice().gain == 2.0F; }));
  QTest::qWait(50);
  QWidget& view = views.docks.view(K::Spectrum);
  CHECK(view.window() != &shell.window);
  CHECK(view.window()->screen() == screens[1]);
  CHECK(view.window()->geometry() == screens[1]->geometry());
  QTest::keyClick(&view, Qt::Key_Escape);
  CHECK(shell.waitFor([&] { return view.window() == &shell.window; }));
}

TEST_CASE("a view in somebody's hand is put down before anything else arranges the views") {
  ShellFixture shell(SourceChoice::Kind::None);
  Views views(shell);
  REQUIRE(views.noted());
  const QByteArray layout = views.docks.layout();
  QDockWidget& dock = views.docks.dock(K::RawWave);
  const std::vector<std::function<void()>> ways{
      [&] { CHECK(views.docks.restoreLayout(layout)); },
      [&] { views.docks.arrangeDefault(); },
      [&] { views.docks.showFullScreen(K::RawWave); },
      [&] { dock.toggleViewAction()->trigger(); },
  };
  for (std::size_t i = 0; i < ways.size(); ++i) {
    CAPTURE(i);
    views.docks.arrangeDefault();
    QWidget* title = dock.titleBarWidget();
    QTest::mousePress(title, Qt::LeftButton, {}, {5, 5});
    QTest::mouseMove(title, {300, 200});
    REQUIRE(QWidget::mouseGrabber() == &dock);
    ways[i]();
    CHECK(QWidget::mouseGrabber() == nullptr);
    QTest::mouseMove(title, {350, 260});
    QTest::mouseRelease(title, Qt::LeftButton, {}, {350, 260});
    QTest::qWait(20);
    CHECK(QWidget::mouseGrabber() == nullptr);
  }
  // So is a border between two views.
  for (std::size_t i = 0; i < 2; ++i) {
    CAPTURE(i);
    views.docks.arrangeDefault();
    QTest::qWait(20);
    const int width = dock.width();
    const QPoint border(dock.geometry().right() + 2, dock.geometry().center().y());
    QTest::mousePress(&views.docks, Qt::LeftButton, {}, border);
    QTest::mouseMove(&views.docks, border - QPoint(60, 0));
    REQUIRE(shell.waitFor([&] { return dock.width() == width - 60; }));
    ways[i]();
    QTest::qWait(50);
    REQUIRE(views.noted());
    const QByteArray arranged = views.docks.layout();
    QTest::mouseMove(&views.docks, border - QPoint(150, 0));
    QTest::qWait(50);
    CHECK(views.docks.layout() == arranged);
    QTest::mouseRelease(&views.docks, Qt::LeftButton, {}, border);
  }
  // What a document brings waits until it is put down.
  views.docks.arrangeDefault();
  QTest::mousePress(dock.titleBarWidget(), Qt::LeftButton, {}, {5, 5});
  QTest::mouseMove(dock.titleBarWidget(), {300, 200});
  display::window(K::Newave).open = 1;
  display::tellViews();
  QTest::qWait(300);
  CHECK(QWidget::mouseGrabber() == &dock);
  CHECK(views.docks.dock(K::Newave).isHidden());
  QTest::mouseRelease(dock.titleBarWidget(), Qt::LeftButton, {}, {300, 200});
  CHECK(shell.waitFor([&] { return !views.docks.dock(K::Newave).isHidden(); }));
}
