#include <QAction>
#include <QFileInfo>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>

#include "Banner.h"
#include "DocumentVariables.h"
#include "HelpWindow.h"
#include "Look.h"
#include "MainWindow.h"
#include "MusicWindow.h"
#include "SetupWindow.h"
#include "TransportRow.h"
#include "ViewDocks.h"

namespace ovka::desktop {

/// An entry of a menu; an empty text is a line.
struct MainWindow::MenuRow {
  const char* text;
  QKeySequence keys = {};
  std::function<void()> run = {};
  const char* name = "";  ///< object name
  const char* tip = "";
};

void MainWindow::addRows(QMenu& menu, const std::vector<MenuRow>& rows) {
  menu.setToolTipsVisible(true);
  for (const MenuRow& row : rows) {
    if (*row.text == '\0') {
      menu.addSeparator();
      continue;
    }
    QAction* action = menu.addAction(QString::fromUtf8(row.text));
    action->setObjectName(QLatin1String(row.name));
    action->setShortcut(row.keys);
    action->setToolTip(QString::fromUtf8(row.tip));
    connect(action, &QAction::triggered, this, row.run);
  }
}

void MainWindow::makeMenus() {
  QMenu* file = menuBar()->addMenu(QStringLiteral("&File"));
  addRows(*file,
          {{"&New", QKeySequence::New, [this] { documents_.newDocument(); }, "new"},
           {"&Open …", QKeySequence::Open, [this] { documents_.openWithDialog(); }, "open"}});
  QMenu* recent = file->addMenu(QStringLiteral("Open &recent"));
  connect(recent, &QMenu::aboutToShow, this, [this, recent] { fillRecent(*recent); });
  makeOpenMenu(*file->addMenu(QStringLiteral("Open in &part")));
  addRows(
      *file,
      {{""},
       {"&Save", QKeySequence::Save, [this] { documents_.save(); }, "save"},
       {"Save &as …", QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_S),
        [this] { documents_.saveAs(); }, "saveAs"},
       {"Save under the &date",
        {},
        [this] { performAction(QStringLiteral("saveDocumentwithDate:"), 0); },
        "saveDocumentwithDate:",
        "A new document whose name is the present time."},
       {"Save, then &empty the recording …",
        {},
        [this] { bench_.perform("setBufferZeroNewBrainNote:", 0, [this] { documents_.save(); }); },
        "setBufferZeroNewBrainNote:",
        "After saving, asks whether to clear all samples."},
       {""},
       {"&Quit", QKeySequence::Quit, [this] { close(); }, "quit"}});
  makeRecordMenu();
  makeMusicMenu();
  QMenu* views = menuBar()->addMenu(QStringLiteral("&Views"));
  views_->fillMenu(*views);
  makeSetupMenu();
  makeHelpMenu();
}

void MainWindow::makeOpenMenu(QMenu& menu) {
  const auto opens = [this](const char* selector) {
    return
        [this, selector] { bench_.perform(selector, 0, [this] { documents_.openWithDialog(); }); };
  };
  addRows(menu, {{"&Samples only …",
                  {},
                  opens("setOpenBrainDataOnlyAction:"),
                  "setOpenBrainDataOnlyAction:",
                  "Takes the samples and leaves the settings."},
                 {"Se&ttings only …",
                  {},
                  opens("setOpenPreferencesOnlyAction:"),
                  "setOpenPreferencesOnlyAction:",
                  "Takes the settings and leaves the samples."},
                 {"Settings, and switch the &port on …",
                  {},
                  opens("setOpenPreferencesOnlyAndPortAction:"),
                  "setOpenPreferencesOnlyAndPortAction:",
                  "Takes the settings, then opens the input port."},
                 {"And &play …",
                  {},
                  opens("setOpenPortRecordingAction:"),
                  "setOpenPortRecordingAction:",
                  "Opens the recording and plays it at once."}});
}

void MainWindow::fillRecent(QMenu& menu) {
  menu.clear();
  const QStringList paths = documents_.recent();
  for (const QString& path : paths) {
    QAction* action =
        menu.addAction(QFileInfo(path).fileName(), this, [this, path] { documents_.open(path); });
    action->setToolTip(path);
    action->setEnabled(QFileInfo::exists(path));
  }
  if (paths.isEmpty()) menu.addAction(QStringLiteral("None yet"))->setEnabled(false);
  menu.addSeparator();
  menu.addAction(QStringLiteral("Clear the list"), this, [this] { documents_.clearRecent(); })
      ->setEnabled(!paths.isEmpty());
}

void MainWindow::makeRecordMenu() {
  QMenu* menu = menuBar()->addMenu(QStringLiteral("&Record"));
  addRows(*menu, {{"&Record or stop", QKeySequence(Qt::CTRL | Qt::Key_R),
                   [this] { toggleRecord(); }, "menuRecord"},
                  {"&Pause, resume or play", QKeySequence(Qt::Key_Space), [this] { togglePause(); },
                   "menuPause"},
                  {"&Loop", QKeySequence(Qt::CTRL | Qt::Key_L),
                   [this] { bench_.recorder().setLoop(!bench_.recorder().loop()); }, "menuLoop"},
                  {"&Keep what was just seen", QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_R),
                   [this] { keepSeen(); }, "menuKeep",
                   "Makes a recording of the living signal, as far back as the memory reaches."},
                  {"Back to the li&ving signal", QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_L),
                   [this] { goLive(); }, "menuLive"},
                  {""},
                  {"&Note at this moment …", QKeySequence(Qt::CTRL | Qt::Key_T),
                   [this] { addNote(); }, "menuNote"}});
}

void MainWindow::makeMusicMenu() {
  QMenu* menu = menuBar()->addMenu(QStringLiteral("&Music"));
  playMusic_ = menu->addAction(QStringLiteral("&Play my brain"), this, [this] { toggleMusic(); });
  playMusic_->setObjectName(QStringLiteral("menuMusic"));
  playMusic_->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_M));
  playMusic_->setCheckable(true);
  playMusic_->setToolTip(
      QStringLiteral("Lets the MIDI set-ups play; with none of your own, those that come with the "
                     "program, on the synthesizer."));
  menu->addSeparator();
  for (std::size_t i = 0; i < kMusicPages.size(); ++i) {
    QAction* action = menu->addAction(QString::fromUtf8(kMusicPages[i]), this, [this, i] {
      musicWindow_->showPage(static_cast<MusicPage>(i));
    });
    if (i == 0) action->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_M));
  }
  addRows(*menu, {{""},
                  {"Pani&c", QKeySequence(Qt::CTRL | Qt::Key_Period), [this] { panic(); },
                   "menuPanic", "Silences every sounding note at once."}});
}

void MainWindow::makeSetupMenu() {
  QMenu* menu = menuBar()->addMenu(QStringLiteral("&Set-up"));
  for (std::size_t i = 0; i < kSetupPages; ++i) {
    const auto page = static_cast<SetupPage>(i);
    const std::string_view title = pageTitle(page).title;
    QAction* action =
        menu->addAction(QString::fromUtf8(title.data(), static_cast<qsizetype>(title.size())), this,
                        [this, page] { setup_->showPage(page); });
    if (i == 0) action->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Comma));
  }
}

void MainWindow::makeHelpMenu() {
  QMenu* menu = menuBar()->addMenu(QStringLiteral("&Help"));
  addRows(*menu, {{"&Help", QKeySequence::HelpContents,
                   [this] {
                     auto* help = new HelpWindow(this);
                     help->setAttribute(Qt::WA_DeleteOnClose);
                     help->show();
                   },
                   "help"},
                  {"&About OVKA",
                   {},
                   [this] {
                     QMessageBox::about(
                         this, QStringLiteral("About OVKA"),
                         QStringLiteral("<h3>OVKA %1</h3><p>Brain waves, seen, recorded and "
                                        "played.</p><p>No medical device: what it shows is for "
                                        "music and curiosity, not for health.</p>")
                             .arg(QStringLiteral(OVKA_VERSION)));
                   },
                   "about"}});
}

}  // namespace ovka::desktop
