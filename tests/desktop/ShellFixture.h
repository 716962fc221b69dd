#pragma once

#include <QApplication>
#include <QElapsedTimer>
#include <QMessageBox>
#include <QPushButton>
#include <QSettings>
#include <QTest>
#include <cstdlib>
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
    const char* platform = std::getenv("OVKA_TEST_PLATFORM");
    setenv("QT_QPA_PLATFORM", platform != nullptr ? platform : "offscreen", 1);
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
  explicit ShellFixture(desktop::SourceChoice::Kind kind) {
    QSettings().clear();
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
  desktop::Workbench bench{folders};
  desktop::MainWindow window{bench};
};

}  // namespace ovka::testing
