#pragma once

#include <QMainWindow>
#include <QString>
#include <vector>

#include "DocumentFace.h"
#include "MusicFace.h"
#include "Workbench.h"

class QAction;
class QLineEdit;
class QMenu;
class QTimer;

namespace ovka::desktop {

class Banner;
class ScrubBar;
class MusicWindow;
class SetupWindow;
class StatusStrip;
class TransportRow;
class ViewDocks;

/// What a start of the program asks for.
struct StartChoice {
  SourceChoice source;  ///< None: the one used last, else the demo
  QString document;     ///< to be opened; empty: none
  bool play = false;    ///< music begins at once
};

/// The main window: one look tells what is acquired, recorded and heard. The GUI thread.
class MainWindow final : public QMainWindow {
  Q_OBJECT

 public:
  explicit MainWindow(Workbench& bench, QWidget* parent = nullptr);
  ~MainWindow() override;

  /// Begins to work: opens the source, then the document.
  void start(const StartChoice& choice);
  /// Another source, after asking for what is unsaved.
  void useSource(const SourceChoice& choice);
  /// A document or a capture, by what the file's name says.
  void openFile(const QString& path);
  /// A window action by its selector, with what belongs around it: questions before, the recorder
  /// after.
  void performAction(const QString& selector, int sender);
  void panic();
  /// The program ends without a question; a journal keeps what is unsaved.
  void closeUnasked();

  [[nodiscard]] Workbench& bench() { return bench_; }
  [[nodiscard]] DocumentFace& documents() { return documents_; }
  [[nodiscard]] MusicFace& music() { return music_; }
  [[nodiscard]] MusicWindow& musicWindow() { return *musicWindow_; }
  [[nodiscard]] SetupWindow& setup() { return *setup_; }
  [[nodiscard]] Banner& banner() { return *banner_; }
  [[nodiscard]] TransportRow& transport() { return *transport_; }
  [[nodiscard]] ViewDocks& views() { return *views_; }
  /// What the timer does 30 times a second.
  void tick();

 protected:
  bool event(QEvent* event) override;
  void closeEvent(QCloseEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  struct MenuRow;
  void build();
  void connectParts();
  // MainWindowMenus.cpp
  void makeMenus();
  void addRows(QMenu& menu, const std::vector<MenuRow>& rows);
  void fillRecent(QMenu& menu);
  void makeRecordMenu();
  void makeOpenMenu(QMenu& menu);
  void makeSetupMenu();
  void makeMusicMenu();
  void makeHelpMenu();
  // MainWindowSource.cpp
  void connectSource();
  void chooseCapture();
  void rememberSource(const SourceChoice& choice) const;
  void switchPort(const QString& selector);
  void showSourceProblem(const SourceChoice& choice, const QString& problem);
  // MainWindowMusic.cpp
  void connectMusic();
  void toggleMusic();
  void refreshMusic();
  // MainWindowWatch.cpp
  void watch();
  void watchEnd();
  void watchLine();
  void watchCapture();
  void watchJournal();
  void showRequests();
  void offerRecovery();

  void toggleRecord();
  void togglePause();
  void goLive();
  void keepSeen();
  void addNote();
  void applyLook();
  void refreshTitle();
  void tell(const QString& text, const QString& detail, bool problem);
  void restoreWindow();
  void keepWindow() const;

  Workbench& bench_;
  DocumentFace documents_;
  MusicFace music_;
  TransportRow* transport_ = nullptr;
  StatusStrip* strip_ = nullptr;
  Banner* banner_ = nullptr;
  ViewDocks* views_ = nullptr;
  ScrubBar* scrub_ = nullptr;
  QLineEdit* note_ = nullptr;
  SetupWindow* setup_ = nullptr;
  MusicWindow* musicWindow_ = nullptr;
  QAction* playMusic_ = nullptr;
  QTimer* timer_ = nullptr;
  unsigned ticks_ = 0;
  bool closing_ = false;
  bool lineLost_ = false;
  bool captureEnded_ = false;  ///< and said so
};

}  // namespace ovka::desktop
