#pragma once

#include <QApplication>
#include <QElapsedTimer>
#include <QMessageBox>
#include <QPushButton>
#include <QSettings>
#include <QTest>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <string>

#include "LinuxFiles.h"
#include "MainWindow.h"
#include "Print.h"
#include "TemporaryFolder.h"

namespace ovka::testing {

/// A Qt application without a screen, or on the display of OVKA_TEST_PLATFORM ("xcb"), with a home
/// of its own; made once for the whole program.
inline void needApplication() {
  static const TemporaryFolder home;
  static int argc = 1;
  static char name[] = "test_desktop";
  static char* argv[] = {name, nullptr};
  static const bool prepared = [] {
    // Two screens side by side.
    const std::string screens = home.at("screens.json");
    std::ofstream(screens) << R"({"screens": [
        {"name": "one", "x": 0, "y": 0, "width": 1440, "height": 900,
         "logicalDpi": 96, "logicalBaseDpi": 96, "dpr": 1},
        {"name": "two", "x": 1440, "y": 0, "width": 1024, "height": 768,
         "logicalDpi": 96, "logicalBaseDpi": 96, "dpr": 1}]})";
    const std::string offscreen = "offscreen:configfile=" + screens;
    const char* platform = std::getenv("OVKA_TEST_PLATFORM");
    setenv("QT_QPA_PLATFORM", platform != nullptr ? platform : offscreen.c_str(), 1);
    setenv("XDG_CONFIG_HOME", home.path().c_str(), 1);
    setenv("OVKA_HOME", home.path().c_str(), 1);
    setPrintSink([](std::string_view) {});
    return true;
  }();
  static_cast<void>(prepared);
  // Never destroyed: the toolkit's own statics may be gone before this one.
  static auto* const application = new QApplication(argc, argv);
  static_cast<void>(application);
  QCoreApplication::setOrganizationName("OVKA");
  QCoreApplication::setApplicationName("ovka-desktop-test");
}

/// The main window at work on a source.
struct ShellFixture {
  /// `fresh`: nothing is known of an earlier run. `music` outlives it.
  explicit ShellFixture(desktop::SourceChoice::Kind kind, bool fresh = true,
                        desktop::MusicMachine* music = nullptr)
      : machine(music) {
    if (fresh) QSettings().clear();
    desktop::SourceChoice choice;
    choice.kind = kind;
    bench.openSource(choice, {});
    settle();
  }

  /// Handles events until `met`; false after a long time.
  bool waitFor(const std::function<bool()>& met) {
    QElapsedTimer timer;
    timer.start();
    while (!met()) {
      if (timer.elapsed() > 30'000) return false;
      QTest::qWait(10);
    }
    return true;
  }
  /// Until the desk thread has nothing left to do.
  bool settle() {
    return waitFor([this] { return !bench.desk().busy(); });
  }
  /// The message box that is open, by its name; nullptr: none.
  QMessageBox* box(const char* name) {
    for (QWidget* widget : QApplication::topLevelWidgets()) {
      auto* found = qobject_cast<QMessageBox*>(widget);
      if (found != nullptr && found->isVisible() && found->objectName() == QLatin1String(name))
        return found;
    }
    return nullptr;
  }
  /// Presses a button of it by its text; false when there is none.
  bool press(const char* name, const char* text) {
    if (!waitFor([&] { return box(name) != nullptr; })) return false;
    for (QAbstractButton* button : box(name)->buttons()) {
      if (button->text() != QLatin1String(text)) continue;
      button->click();
      QTest::qWait(20);
      return true;
    }
    return false;
  }

  struct Application {
    Application() { needApplication(); }
  } application;
  TemporaryFolder folder;
  LinuxFolders folders;
  desktop::MusicMachine* machine;
  desktop::Workbench bench{folders, machine};
  desktop::MainWindow window{bench};
};

}  // namespace ovka::testing
